#include "platform/program.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "platform/drives.h"
#include "platform/module.h"
#include "platform/win32/system_calls.h"

namespace ventrix::platform {

std::string ProgramFile() {
    return ToNative(ModuleFileName(nullptr));
}

bool IsExecutable(const std::string& file) {
    const std::wstring suffix = std::filesystem::path(Wide(file)).extension().wstring();
    constexpr std::array<const wchar_t*, 4> kSuffixes = {L".exe", L".cmd", L".bat", L".com"};
    return std::ranges::any_of(kSuffixes,
                               [&](const wchar_t* known) { return ::lstrcmpiW(suffix.c_str(), known) == 0; });
}

std::string HowToMakeExecutable() {
    return "use a program (.exe) or a script for the command interpreter (.cmd, .bat)";
}

}  // namespace ventrix::platform
