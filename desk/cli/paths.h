// The paths of a command line: made absolute, told to the module, compared by where they lead. Paths are
// native and UTF-8 unless they are called otherwise. Links stay as they are written in all that is shown.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ventrix::desk {

/// The path made absolute, "." and ".." taken out. Empty stays empty.
std::string AbsolutePath(const std::string& path);

/// The same in system notation. Throws Stop where no request could hold it.
std::string SystemPath(const std::string& path);

/// Where a path leads, links followed as far as it exists.
std::filesystem::path RealPath(const std::filesystem::path& path);

/// Of two real paths.
bool IsBelowOrEqual(const std::filesystem::path& path, const std::filesystem::path& folder);

/// Throws Stop if the file that this option names is missing. Accepts an empty path.
void RequireFile(const char* option, const std::string& file);

/// As RequireFile, for a file that must be executable.
void RequireProgram(const char* option, const std::string& file);

/// Throws Stop if the output file that this option names is one of the inputs, which the run would
/// overwrite.
void RequireNoInput(const char* option, const std::string& file, const std::vector<std::string>& inputs);

/// Throws Stop if the log is a folder or one of the inputs.
void RequireLog(const std::string& log, const std::vector<std::string>& inputs);

}  // namespace ventrix::desk
