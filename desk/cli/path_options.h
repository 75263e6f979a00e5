// Checks the paths in the options of the command line. Each check throws Stop with a message that names the
// option.
#pragma once

#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Returns the path, made absolute, in system notation. Throws Stop if a request cannot express it.
SystemPath RequireSystemPath(const NativePath& path);

/// Throws Stop if the file that this option names is missing. Accepts an empty path.
void RequireFile(const char* option, const NativePath& file);

/// The files that this option names, made absolute. Throws Stop if one is missing.
std::vector<NativePath> RequiredFiles(const char* option, const std::vector<std::string>& files);

/// Throws Stop if a file cannot be used as a DITAVAL filter.
void RequireFilters(const std::vector<NativePath>& filters);

/// As RequireFile, for a file that must be executable.
void RequireProgram(const char* option, const NativePath& file);

/// Throws Stop if the output file that this option names is one of the inputs, which the run would
/// overwrite.
void RequireNoInput(const char* option, const NativePath& file, const std::vector<NativePath>& inputs);

/// True for the null device, which as a log means that no log is wanted.
bool IsNullDevice(const NativePath& path);

/// Throws Stop if the log is a folder, a pipe, a device, or one of the inputs, directly or through a symbolic
/// or hard link. Accepts a missing file and the null device.
void RequireLog(const NativePath& log, const std::vector<NativePath>& inputs);

}  // namespace ventrix::desk
