#include <csignal>
#include <exception>
#include <iostream>

#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/options.h"
#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"
#include "platform/child_process.h"
#include "platform/interruption.h"

namespace {

using namespace ventrix::desk;

int RunCommand(const Options& options, const Screen& screen, RunReport& report) {
    switch (options.command) {
        case Command::kPublish:
            return Publish(options, screen, report);
        case Command::kValidate:
            return Validate(options, screen, report);
        case Command::kRequest:
            return Request(options, screen, report);
    }
    return kExitUsage;
}

void ReportFailure(const CommonOptions& options, int status, const std::string& text, RunReport& report) {
    Screen(options).Error(text);
    report.exitStatus = status;
    report.error = text;
}

int Run(int argc, char** argv) {
    Options options;
    RunReport report;
    try {
        if (!ReadOptions(argc, argv, options)) {
            return kExitDone;
        }
        report.exitStatus = RunCommand(options, Screen(options.common), report);
    } catch (const Stop& stop) {
        ReportFailure(options.common, stop.status, stop.text, report);
    } catch (const std::exception& error) {
        ReportFailure(options.common, kExitNoModule, error.what(), report);
    }
    if (options.common.json) {
        PrintReport(report);
    }
    return report.exitStatus;
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
