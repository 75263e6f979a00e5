#ifdef _WIN32

#include <fstream>
#include <system_error>

#include "platform/win32/system_calls.h"
#include "support/child.h"

#include <io.h>

namespace ventrix::test {
namespace {

using platform::Handle;
using platform::Wide;

constexpr ::UINT kKilled = 1009;

/// Beside other work, Wine fails now and then to start a program, with this error.
constexpr ::DWORD kChanceFailure = ERROR_INTERNAL_ERROR;
constexpr int kStartAttempts = 3;

constexpr ::DWORD kEndMilliseconds = 1000;

Handle OpenInheritable(const std::wstring& path, ::DWORD access, ::DWORD disposition) {
    ::SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    return Handle(::CreateFileW(path.c_str(), access, platform::kShareAll, &inheritable, disposition,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

::BOOL WINAPI IgnoreEvent(::DWORD /*kind*/) {
    return TRUE;
}

std::wstring Quoted(const std::string& argument) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : Wide(argument)) {
        if (c == L'"') {
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

}  // namespace

std::vector<Ending> Interruptions() {
    return {Ending::kInterrupt};
}

int StatusAfter(Ending ending) {
    return ending == Ending::kKill ? int{kKilled} : 130;
}

Child::Child(const ChildStart& start) {
    std::wstring line = Quoted(start.program);
    for (const std::string& argument : start.arguments) {
        line += L' ' + Quoted(argument);
    }
    const Handle input = OpenInheritable(L"NUL", GENERIC_READ, OPEN_EXISTING);
    const Handle out = OpenInheritable(Wide(start.out), GENERIC_WRITE, CREATE_ALWAYS);
    const Handle error = OpenInheritable(Wide(start.error), GENERIC_WRITE, CREATE_ALWAYS);
    ::STARTUPINFOW info = {};
    info.cb = sizeof info;
    info.dwFlags = STARTF_USESTDHANDLES;
    info.hStdInput = input.Get();
    info.hStdOutput = out.Get();
    info.hStdError = error.Get();
    ::PROCESS_INFORMATION started = {};
    ::DWORD failure = kChanceFailure;
    for (int attempt = 0; attempt < kStartAttempts && failure == kChanceFailure; ++attempt) {
        const bool isStarted =
            ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                             Wide(start.folder).c_str(), &info, &started) != 0;
        failure = isStarted ? ERROR_SUCCESS : ::GetLastError();
    }
    if (failure != ERROR_SUCCESS) {
        throw std::system_error(static_cast<int>(failure), std::system_category(), start.program);
    }
    ::CloseHandle(started.hThread);
    process_ = reinterpret_cast<std::intptr_t>(started.hProcess);
    number_ = started.dwProcessId;
}

Child::~Child() {
    if (process_ != -1) {
        End(Ending::kKill);
        ::CloseHandle(reinterpret_cast<HANDLE>(process_));
    }
}

void Child::End(Ending ending) const {
    if (ending == Ending::kKill) {
        ::TerminateProcess(reinterpret_cast<HANDLE>(process_), kKilled);
        return;
    }
    // The event goes to every process of the console, so this one leaves its own for a moment.
    ::FreeConsole();
    const bool isSent = ::AttachConsole(number_) != 0 && ::SetConsoleCtrlHandler(IgnoreEvent, TRUE) != 0 &&
                        ::GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
    const ::DWORD error = ::GetLastError();
    ::FreeConsole();
    // A program that is just ending may have no console any more.
    if (!isSent &&
        ::WaitForSingleObject(reinterpret_cast<HANDLE>(process_), kEndMilliseconds) == WAIT_TIMEOUT) {
        throw std::system_error(static_cast<int>(error), std::system_category(), "Ctrl-C");
    }
}

int Child::Await(std::chrono::seconds limit) {
    const auto process = reinterpret_cast<HANDLE>(process_);
    const auto milliseconds = static_cast<DWORD>(std::chrono::milliseconds(limit).count());
    if (::WaitForSingleObject(process, milliseconds) != WAIT_OBJECT_0) {
        return -1;
    }
    ::DWORD status = 0;
    ::GetExitCodeProcess(process, &status);
    ::CloseHandle(process);
    process_ = -1;
    return static_cast<int>(status);
}

void KillStarted(const platform::ProcessHandle& process) {
    ::TerminateProcess(reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(process.id)), kKilled);
}

std::int64_t PassedOutput(int file) {
    return ::_get_osfhandle(file);
}

bool IsRunning(const std::string& numberFile) {
    ::DWORD number = 0;
    std::ifstream(numberFile) >> number;
    const Handle process(::OpenProcess(SYNCHRONIZE, FALSE, number));
    return process.IsOpen() && ::WaitForSingleObject(process.Get(), 0) == WAIT_TIMEOUT;
}

}  // namespace ventrix::test

#endif
