#include <csignal>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/interruption.h"
#include "desk/cli/options.h"
#include "desk/cli/request_text.h"
#include "desk/cli/session.h"

namespace {

using namespace ventrix::desk;

int RunVerb(const Options& options, const Screen& screen) {
    switch (options.verb) {
        case Verb::Publish:
            return Publish(options, screen);
        case Verb::Validate:
            return Validate(options, screen);
        case Verb::Request:
            return Request(options, screen);
    }
    return ExitUsage;
}

int Fail(const Screen& screen, int status, const std::string& text) {
    screen.Error(text);
    if (screen.Json()) {
        std::cout << nlohmann::json{{"error", text}, {"exitStatus", status}}.dump(
                         -1, ' ', false, nlohmann::json::error_handler_t::replace)
                  << '\n';
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that goes away, as `| head` does, ends the output and not the run.
    std::signal(SIGPIPE, SIG_IGN);
    WatchInterruptions();
    Options options;
    int status = ExitDone;
    if (!ReadOptions(argc, argv, options, status)) {
        return status;
    }
    const Screen screen(options.common);
    try {
        return RunVerb(options, screen);
    } catch (const Stop& stop) {
        return Fail(screen, stop.status, stop.text);
    } catch (const RequestProblem& problem) {
        return Fail(screen, ExitUsage, problem.text);
    } catch (const std::exception& error) {
        return Fail(screen, ExitNoModule, error.what());
    }
}
