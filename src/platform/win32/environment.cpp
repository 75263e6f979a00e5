#include "platform/environment.h"

#include "platform/win32/system_calls.h"

namespace ventrix::platform {

std::optional<std::string> EnvironmentValue(const std::string& name) {
    const std::wstring wide = Wide(name);
    ::SetLastError(ERROR_SUCCESS);
    const std::wstring value = TextFromCall(
        [&](wchar_t* buffer, DWORD size) { return ::GetEnvironmentVariableW(wide.c_str(), buffer, size); });
    // Both a missing and an empty variable have the length 0.
    const bool isMissing = value.empty() && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND;
    return isMissing ? std::nullopt : std::optional(Narrow(value));
}

void SetEnvironmentValue(const std::string& name, const std::string& value) {
    if (!name.empty() && name.find('=') == std::string::npos) {
        ::SetEnvironmentVariableW(Wide(name).c_str(), Wide(value).c_str());
    }
}

}  // namespace ventrix::platform
