#include <csignal>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/json_output.h"
#include "desk/cli/options.h"
#include "desk/cli/session.h"
#include "platform/child_process.h"
#include "platform/interruption.h"

namespace {

using namespace ventrix::desk;

int RunVerb(const Options& options, const Screen& screen) {
    switch (options.verb) {
        case Verb::kPublish:
            return Publish(options, screen);
        case Verb::kValidate:
            return Validate(options, screen);
        case Verb::kRequest:
            return Request(options, screen);
    }
    return kExitUsage;
}

int Fail(const Screen& screen, int status, const std::string& text) {
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
        return RunVerb(options, screen.emplace(options.common));
    } catch (const Stop& stop) {
        return Fail(screen.emplace(options.common), stop.status, stop.text);
    } catch (const std::exception& error) {
        return Fail(screen.emplace(options.common), kExitNoModule, error.what());
    }
}

volatile std::sig_atomic_t readerGone = 0;

extern "C" void NoteReaderGone(int) {
    readerGone = 1;
}

/// A reader that went away, as `| head` does, has what it wanted; on a full disk the result is lost.
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
    std::signal(SIGPIPE, NoteReaderGone);
    ventrix::platform::HandleInterruptions();
    const int status = Run(argc, argv);
    // A script may have left something running that would still write.
    ventrix::platform::EndStartedPrograms();
    const int finished = Finish(status);
    ventrix::platform::StopHandlingInterruptions();
    return finished;
}
