// What the output of a DITA Open Toolkit says about its run. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

namespace ventrix::desk {

/// The output without the escape sequences that colour it on a terminal.
std::string WithoutColors(const std::string& output);

/// The lines of plain output, without spaces around them. Empty lines are left out.
std::vector<std::string> LogLines(const std::string& output);

/// The lines in which the toolkit reports an error. A toolkit that ends with success may have skipped topics
/// all the same.
std::vector<std::string> ToolkitErrors(const std::vector<std::string>& lines);

/// The line that describes why a run failed: the last fatal message, else what follows "BUILD FAILED", else
/// the last error, else the last line. Never empty.
std::string FailureIn(const std::vector<std::string>& lines);

}  // namespace ventrix::desk
