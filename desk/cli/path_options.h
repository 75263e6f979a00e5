// What the paths of a command line have to be. Each check throws Stop with a message that names the option.
#pragma once

#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// The path, made absolute, in system notation. Throws Stop if no request can hold it.
SystemPath RequireSystemPath(const NativePath& path);

/// Throws Stop if the file that this option names is missing; an empty path passes.
void RequireFile(const char* option, const NativePath& file);

/// The same for a file that must be executable.
void RequireProgram(const char* option, const NativePath& file);

/// Throws Stop if the file, named by this option, is one of the inputs: a run would write into its source.
void RequireNoInput(const char* option, const NativePath& file, const std::vector<NativePath>& inputs);

/// Throws Stop for a log that is a folder or one of the inputs.
void RequireLog(const NativePath& log, const std::vector<NativePath>& inputs);

}  // namespace ventrix::desk
