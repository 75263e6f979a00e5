// Environment variables of the process. Names and values are byte strings, values in the machine's own
// notation.
#pragma once

#include <optional>
#include <string>

namespace ventrix::platform {

/// Nothing if the variable is not set; an empty text if it is set to nothing.
std::optional<std::string> EnvironmentValue(const std::string& name);

/// Sets a variable for this process and what it starts. An empty name or one with "=" is ignored.
void SetEnvironmentValue(const std::string& name, const std::string& value);

void RemoveEnvironmentValue(const std::string& name);

}  // namespace ventrix::platform
