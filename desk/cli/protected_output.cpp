#include "desk/cli/protected_output.h"

#include <algorithm>

#include "desk/cli/exit_status.h"

namespace ventrix::desk {

ProtectedOutput::ProtectedOutput(const OutputOrder& order, const Screen& screen) : screen_(screen) {
    const platform::InterruptionPause pause;
    std::string refusal;
    keeper_ = TakeOutput(order, refusal);
    if (keeper_ == nullptr) {
        throw Stop{kExitOutputRefused, FromFilesystem(order.folder).utf8 + " " + refusal};
    }
    cleanUp_.emplace([this] { RollBack(); });
    for (const std::string& note : keeper_->Notes()) {
        screen_.Warning(note);
    }
}

int ProtectedOutput::Settle(int status) {
    if (status != kExitDone && status != kExitFindings) {
        RollBack();
        return status;
    }
    const platform::InterruptionPause pause;
    cleanUp_.reset();
    return Report(keeper_->Commit(), status);
}

void ProtectedOutput::RollBack() {
    const platform::InterruptionPause pause;
    const OutputReport report = keeper_->RollBack();
    if (!report.error.empty()) {
        screen_.Error(report.error);
    }
    for (const std::string& finding : report.findings) {
        screen_.Warning(finding);
    }
    if (!report.failedFolder.empty()) {
        screen_.Note("the output folder is as it was before; the files of this run are in " +
                     FromFilesystem(report.failedFolder).utf8);
    }
}

int ProtectedOutput::Report(const OutputReport& report, int status) const {
    for (const KeptEntry& entry : report.kept) {
        const std::string wanted = FromFilesystem(entry.wanted).utf8;
        const std::string kept = FromFilesystem(entry.kept).utf8;
        screen_.Warning(entry.edited ? wanted + " was edited since the last run; it is kept as " + kept
                                     : wanted + " is not from a run; it is kept as " + kept);
    }
    for (const std::string& finding : report.findings) {
        screen_.Warning(finding);
    }
    if (!report.error.empty()) {
        screen_.Error(report.error);
        return kExitOutputRefused;
    }
    const bool clean = report.findings.empty() && report.kept.empty();
    return clean ? status : std::max<int>(status, kExitFindings);
}

std::vector<std::filesystem::path> InputPaths(const std::vector<NativePath>& inputs) {
    std::vector<std::filesystem::path> paths;
    std::ranges::transform(inputs, std::back_inserter(paths), ToFilesystem);
    return paths;
}

}  // namespace ventrix::desk
