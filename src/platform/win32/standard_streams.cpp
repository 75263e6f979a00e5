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
