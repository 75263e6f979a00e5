#include <csignal>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/options.h"
#include "desk/cli/screen.h"
#include "platform/child_process.h"
#include "platform/interruption.h"

namespace {

using namespace ventrix::desk;

int RunCommand(const Options& options, const Screen& screen) {
    switch (options.command) {
        case Command::kPublish:
            return Publish(options, screen);
        case Command::kValidate:
            return Validate(options, screen);
        case Command::kRequest:
            return Request(options, screen);
    }
    return kExitUsage;
}

int ReportFailure(const Screen& screen, int status, const std::string& text) {
    screen.Error(text);
    if (screen.Json()) {
        PrintObject({{"error", text}, {"exitStatus", status}});
    }
    return status;
}

int Run(int argc, char** argv) {
    Options options;
    std::optional<Screen> screen;
    try {
        if (!ReadOptions(argc, argv, options)) {
            return kExitDone;
        }
        return RunCommand(options, screen.emplace(options.common));
    } catch (const Stop& stop) {
        return ReportFailure(screen.emplace(options.common), stop.status, stop.text);
    } catch (const std::exception& error) {
        return ReportFailure(screen.emplace(options.common), kExitNoModule, error.what());
    }
}

volatile std::sig_atomic_t readerGone = 0;

extern "C" void RecordReaderGone(int) {
    readerGone = 1;
}

/// A closed pipe is not an error, since a reader such as `head` stops when it has read enough. Any other
/// write error means that output was lost.
int Finish(int status) {
    std::cout.flush();
    if (std::cout || readerGone == 1) {
        return status;
    }
    std::cerr << "error: the result could not be written to standard output\n";
    return status == kExitDone ? kExitFindings : status;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, RecordReaderGone);
    ventrix::platform::HandleInterruptions();
    const int status = Run(argc, argv);
    // A script may have left a program running that would still write.
    ventrix::platform::EndStartedPrograms();
    const int finished = Finish(status);
    ventrix::platform::StopHandlingInterruptions();
    return finished;
}
