#include "platform/process.h"

#include <array>
#include <utility>

#include "platform/environment.h"
#include "platform/win32/system_calls.h"

namespace ventrix::platform {
namespace {

HANDLE SystemHandle(std::int64_t id) {
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(id));
}

}  // namespace

std::string FindInPath(const std::string& name) {
    const std::wstring folders = Wide(EnvironmentValue("PATH").value_or(""));
    const std::wstring wideName = Wide(name);
    constexpr std::array<const wchar_t*, 4> kSuffixes = {L".com", L".exe", L".bat", L".cmd"};
    for (const wchar_t* suffix : kSuffixes) {
        const std::wstring found = TextFromCall([&](wchar_t* buffer, DWORD size) {
            return ::SearchPathW(folders.c_str(), wideName.c_str(), suffix, size, buffer, nullptr);
        });
        if (!found.empty()) {
            return NativeFromCall(found);
        }
    }
    return {};
}

// The host's contract fixes this call to its last argument: no application name, no inherited handles, the
// window hidden.
ErrorCode StartProcess(std::string_view commandLine, ProcessHandle& process) {
    process = {};
    std::wstring command = Wide(commandLine);
    if (command.find_first_not_of(L" \t") == std::wstring::npos) {
        return kErrorInvalidParameter;
    }
    ::STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESHOWWINDOW;
    start.wShowWindow = SW_HIDE;
    ::PROCESS_INFORMATION started = {};
    if (::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                         &started) == 0) {
        return LastErrorCode();
    }
    ::CloseHandle(started.hThread);
    process.id = reinterpret_cast<std::intptr_t>(started.hProcess);
    return kErrorNone;
}

int WaitForProcess(ProcessHandle& process) {
    const Handle ended(SystemHandle(std::exchange(process.id, 0)));
    ::DWORD exitCode = 0;
    if (!ended.IsOpen() || ::WaitForSingleObject(ended.Get(), INFINITE) != WAIT_OBJECT_0 ||
        ::GetExitCodeProcess(ended.Get(), &exitCode) == 0) {
        return -1;
    }
    return static_cast<int>(exitCode);
}

}  // namespace ventrix::platform
