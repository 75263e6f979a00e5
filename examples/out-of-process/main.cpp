// Starts a host, lets the word counter connect to it, and prints the answers and the console output.
//   word_counter [--server NAME] [--busy MILLISECONDS] TEXT...
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "bridge/contract/host_interfaces.h"
#include "platform/wide_text.h"
#include "running_host.h"

namespace {

using Steady = std::chrono::steady_clock;

struct Options {
    std::string server;
    int busyMilliseconds = 0;
    std::vector<std::string> texts;
};

Options ReadOptions(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool hasValue = i + 1 < arguments.size();
        if (arguments[i] == "--server" && hasValue) {
            options.server = arguments[++i];
        } else if (arguments[i] == "--busy" && hasValue) {
            options.busyMilliseconds = std::atoi(arguments[++i].c_str());
        } else {
            options.texts.push_back(arguments[i]);
        }
    }
    return options;
}

ventrix::example::RunningHostSettings HostSettings(const Options& options) {
    ventrix::example::RunningHostSettings settings;
    settings.classId = ventrix::kHostClassId;
    settings.server = ventrix::platform::WideFromUtf8(options.server);
    settings.busy = [end = Steady::now() + std::chrono::milliseconds(options.busyMilliseconds)] {
        return Steady::now() < end;
    };
    settings.clientName = "Word counter";
    for (const std::string& text : options.texts) {
        settings.commands.push_back("Count " + text);
    }
    return settings;
}

void PrintAnswer(const ventrix::example::Answer& answer) {
    const bool complete = answer && answer->size() == 2;
    std::printf("answer: %s\n", complete ? std::get<std::string>(answer->back()).c_str() : "none");
}

int Run(const Options& options) {
    ventrix::example::RunningHost host(HostSettings(options));
    if (host.Serve(options.server) != 0) {
        std::fputs(
            "word_counter: no running host was found; if the environment variable QLGUID is set, unset it\n",
            stderr);
        return 1;
    }
    std::printf("connected as: %s\n", host.Host().RegisteredName().c_str());
    for (const ventrix::example::Answer& answer : host.Answers()) {
        PrintAnswer(answer);
    }
    std::printf("console: %s", host.Console().c_str());
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    const Options options = ReadOptions({arguments + 1, arguments + count});
    if (options.texts.empty()) {
        std::fputs("usage: word_counter [--server NAME] [--busy MILLISECONDS] TEXT...\n", stderr);
        return 2;
    }
    try {
        return Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "word_counter: %s\n", error.what());
        return 1;
    }
}
