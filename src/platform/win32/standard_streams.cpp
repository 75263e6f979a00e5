#include "platform/standard_streams.h"

#include <cstdio>
#include <iostream>

#include "platform/win32/system_calls.h"

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

namespace ventrix::platform {

std::vector<std::string> ProgramArguments(int count, char** arguments) {
    ::SetConsoleOutputCP(CP_UTF8);
    // Without this, a line feed would become CR LF, and output would differ between the platforms.
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
    int wideCount = 0;
    wchar_t** wide = ::CommandLineToArgvW(::GetCommandLineW(), &wideCount);
    if (wide == nullptr) {
        return {arguments, arguments + count};
    }
    std::vector<std::string> texts;
    for (int i = 0; i < wideCount; ++i) {
        texts.push_back(Narrow(wide[i]));
    }
    ::LocalFree(wide);
    return texts;
}

bool IsErrorTerminal() {
    const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
    ::DWORD mode = 0;
    return ::GetConsoleMode(error, &mode) != 0 &&
           ::SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

std::int64_t OutputToPass() {
    return reinterpret_cast<std::intptr_t>(::GetStdHandle(STD_ERROR_HANDLE));
}

void UseOutput(std::int64_t process, std::int64_t output) {
    const Handle owner(::OpenProcess(PROCESS_DUP_HANDLE, FALSE, static_cast<DWORD>(process)));
    HANDLE copy = nullptr;
    if (output == 0 || !owner.IsOpen() ||
        ::DuplicateHandle(owner.Get(), reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(output)),
                          ::GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS) == 0) {
        return;
    }
    if (::_fileno(stdout) < 0) {
        // Without an output of its own, the process has no file that another could take the place of.
        std::freopen("NUL", "wb", stdout);
    }
    const int file = ::_open_osfhandle(reinterpret_cast<std::intptr_t>(copy), _O_BINARY);
    ::_dup2(file, ::_fileno(stdout));
    ::_close(file);
}

void SurviveClosedPipes() {}

bool WroteToClosedPipe() {
    return ::GetLastError() == ERROR_NO_DATA || ::GetLastError() == ERROR_BROKEN_PIPE;
}

StandardOutputRedirection::StandardOutputRedirection() {
    std::cout.flush();
    kept_ = ::_dup(::_fileno(stdout));
    ::_dup2(::_fileno(stderr), ::_fileno(stdout));
}

StandardOutputRedirection::~StandardOutputRedirection() {
    std::fflush(stdout);
    if (kept_ >= 0) {
        ::_dup2(kept_, ::_fileno(stdout));
        ::_close(kept_);
    }
}

}  // namespace ventrix::platform
