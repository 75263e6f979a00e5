// Environment variables of the process. Names and values are byte strings; paths in values are in native
// notation.
#pragma once

#include <optional>
#include <string>

namespace ventrix::platform {

/// Nothing if the variable is not set; the empty string if it is set to that.
std::optional<std::string> EnvironmentValue(const std::string& name);

/// Sets a variable for this process and its child processes. An empty name or one with "=" is ignored.
void SetEnvironmentValue(const std::string& name, const std::string& value);

}  // namespace ventrix::platform
