#include <algorithm>
#include <exception>
#include <functional>
#include <iostream>

#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/findings_format.h"
#include "desk/cli/options.h"
#include "desk/cli/project_runs.h"
#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"
#include "platform/child_process.h"
#include "platform/drives.h"
#include "platform/interruption.h"
#include "platform/native_roots.h"
#include "platform/standard_streams.h"

namespace {

namespace platform = ventrix::platform;
using namespace ventrix::desk;

int RunCommand(const Options& options, const Screen& screen, RunReport& report) {
    switch (options.command) {
        case Command::kPublish:
            return Publish(options, screen, report);
        case Command::kValidate:
            return Validate(options, screen, report);
        case Command::kRequest:
            return Request(options, screen, report);
        case Command::kInit:
            return Init(options, screen);
    }
    return kExitUsage;
}

void ReportFailure(const CommonOptions& options, int status, const std::string& text, RunReport& report) {
    Screen(options).Error(text);
    report.exitStatus = status;
    report.error = text;
}

/// Calls the action and reports what it throws.
void Guard(const Options& options, RunReport& report, const std::function<void()>& action) {
    try {
        action();
    } catch (const Stop& stop) {
        ReportFailure(options.common, stop.status, WithOrigin(stop.text, options), report);
    } catch (const std::exception& error) {
        ReportFailure(options.common, kExitNoModule, error.what(), report);
    }
}

RunReport RunOne(const Options& options) {
    // The drives of one deliverable do not apply to the next.
    const std::string drives = platform::FormatDrives(platform::ProcessDrives());
    const Screen screen(options.common);
    RunReport report;
    report.deliverable = options.deliverable;
    if (!options.deliverable.empty()) {
        screen.Heading(options.deliverable);
    }
    Guard(options, report, [&] { report.exitStatus = RunCommand(options, screen, report); });
    if (!platform::SystemHasDrives()) {
        platform::SetProcessDrives(platform::ParseDrives(drives));
    }
    if (options.common.json) {
        PrintReport(report);
    }
    return report;
}

/// The worst exit status of the runs.
int RunAll(const std::vector<Options>& runs) {
    int worst = kExitDone;
    std::vector<RunReport> reports;
    for (const Options& run : runs) {
        reports.push_back(RunOne(run));
        worst = std::max(worst, reports.back().exitStatus);
    }
    const Options& first = runs.front();
    if (first.common.format != "text") {
        std::cout << FormatFindings(first.common.format, reports);
    }
    if (first.command == Command::kPublish && runs.size() > 1 && !first.publish.dryRun) {
        const auto published = std::ranges::count_if(
            reports, [](const RunReport& report) { return report.exitStatus <= kExitFindings; });
        Screen(first.common)
            .Heading(std::to_string(published) + " of " + std::to_string(runs.size()) +
                     " deliverables published");
    }
    return worst;
}

int Run(const std::vector<std::string>& words) {
    Options options;
    RunReport report;
    RunPlan plan;
    Guard(options, report, [&] {
        if (ReadOptions(words, options)) {
            plan = PlanRuns(words, options);
        }
    });
    if (report.exitStatus != kExitDone) {
        if (options.common.json) {
            PrintReport(report);
        }
        return report.exitStatus;
    }
    if (plan.runs.empty()) {
        return kExitDone;
    }
    for (const std::string& note : plan.notes) {
        Screen(plan.runs.front().common).Note(note);
    }
    return RunAll(plan.runs);
}

/// A closed pipe is not an error, since a reader such as `head` stops when it has read enough. Any other
/// write error means that output was lost.
int Finish(int status) {
    std::cout.flush();
    if (std::cout || platform::WroteToClosedPipe()) {
        return status;
    }
    std::cerr << "error: the result could not be written to standard output\n";
    return status == kExitDone ? kExitFindings : status;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> words = platform::ProgramArguments(argc, argv);
    words.erase(words.begin(), words.begin() + std::min<std::ptrdiff_t>(std::ssize(words), 1));
    platform::SurviveClosedPipes();
    platform::HandleInterruptions();
    const int status = Run(words);
    // A script may have left a program running that would still write.
    platform::EndStartedPrograms();
    const int finished = Finish(status);
    platform::StopHandlingInterruptions();
    return finished;
}
