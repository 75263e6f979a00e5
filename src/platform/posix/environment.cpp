#include "platform/environment.h"

#include <cstdlib>

namespace ventrix::platform {

std::optional<std::string> EnvironmentValue(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

void SetEnvironmentValue(const std::string& name, const std::string& value) {
    ::setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace ventrix::platform
