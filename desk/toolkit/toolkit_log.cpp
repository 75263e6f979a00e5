#include "desk/toolkit/toolkit_log.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>

#include "desk/toolkit/toolkit_filter.h"

namespace ventrix::desk {
namespace {

constexpr std::string_view kWhitespace = " \t\r";

std::string Trimmed(const std::string& line) {
    const std::size_t begin = line.find_first_not_of(kWhitespace);
    return begin == std::string::npos ? std::string()
                                      : line.substr(begin, line.find_last_not_of(kWhitespace) + 1 - begin);
}

/// True if the line holds a message number of the toolkit with this severity, such as DOTJ013E.
bool HoldsNumber(const std::string& line, char severity) {
    for (std::size_t at = line.find("DOT"); at != std::string::npos; at = line.find("DOT", at + 1)) {
        const std::string_view number = std::string_view(line).substr(at, 8);
        if (number.size() == 8 && std::isdigit(static_cast<unsigned char>(number[4])) != 0 &&
            number[7] == severity) {
            return true;
        }
    }
    return false;
}

bool Holds(const std::string& line, std::string_view word) {
    return line.find(word) != std::string::npos;
}

bool IsFatal(const std::string& line) {
    return Holds(line, "[FATAL]") || HoldsNumber(line, 'F') || Holds(line, "OutOfMemoryError");
}

bool IsError(const std::string& line) {
    const bool error = IsFatal(line) || Holds(line, "[ERROR]") || HoldsNumber(line, 'E') ||
                       Holds(line, "Failed to ") || line.starts_with("Error:");
    return error && !ShowsFilterWasRead(line);
}

/// Neither a frame of a Java stack trace nor the time that a build took.
bool Describes(const std::string& line) {
    return !line.starts_with("at ") && !line.starts_with("... ") && !line.starts_with("Total time") &&
           !line.starts_with("BUILD FAILED");
}

}  // namespace

std::string WithoutColors(const std::string& output) {
    std::string plain;
    for (std::size_t i = 0; i < output.size(); ++i) {
        if (output[i] == '\x1b' && i + 1 < output.size() && output[i + 1] == '[') {
            i = std::min(output.find_first_not_of("0123456789;", i + 2), output.size());
        } else {
            plain += output[i];
        }
    }
    return plain;
}

std::vector<std::string> LogLines(const std::string& output) {
    std::vector<std::string> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        line = Trimmed(line);
        if (!line.empty()) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

std::vector<std::string> ToolkitErrors(const std::vector<std::string>& lines) {
    std::vector<std::string> errors;
    std::ranges::copy_if(lines, std::back_inserter(errors), IsError);
    return errors;
}

std::string FailureIn(const std::vector<std::string>& lines) {
    std::string fatal, afterFailure, error, last;
    bool failed = false;
    for (const std::string& line : lines) {
        failed = failed || line.starts_with("BUILD FAILED");
        if (!Describes(line)) {
            continue;
        }
        last = line;
        fatal = IsFatal(line) ? line : fatal;
        afterFailure = failed ? line : afterFailure;
        error = IsError(line) ? line : error;
    }
    for (const std::string& line : {fatal, afterFailure, error, last}) {
        if (!line.empty()) {
            return line;
        }
    }
    return "it printed nothing";
}

}  // namespace ventrix::desk
