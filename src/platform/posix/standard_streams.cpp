#include "platform/standard_streams.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>

namespace ventrix::platform {
namespace {

volatile std::sig_atomic_t readerGone = 0;

extern "C" void RecordReaderGone(int) {
    readerGone = 1;
}

}  // namespace

std::vector<std::string> ProgramArguments(int count, char** arguments) {
    return {arguments, arguments + count};
}

bool IsErrorTerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

std::int64_t OutputToPass() {
    return 0;
}

void UseOutput(std::int64_t /*process*/, std::int64_t /*output*/) {}

void SurviveClosedPipes() {
    std::signal(SIGPIPE, RecordReaderGone);
}

bool WroteToClosedPipe() {
    return readerGone == 1;
}

StandardOutputRedirection::StandardOutputRedirection() {
    std::cout.flush();
    kept_ = ::dup(STDOUT_FILENO);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

StandardOutputRedirection::~StandardOutputRedirection() {
    std::fflush(stdout);
    if (kept_ >= 0) {
        ::dup2(kept_, STDOUT_FILENO);
        ::close(kept_);
    }
}

}  // namespace ventrix::platform
