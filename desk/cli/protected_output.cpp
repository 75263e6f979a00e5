#include "desk/cli/protected_output.h"

#include <algorithm>
#include <iterator>

#include "desk/cli/exit_status.h"

namespace ventrix::desk {

ProtectedOutput::ProtectedOutput(const OutputOrder& order, RunReport& report, const Screen& screen)
    : report_(report), screen_(screen) {
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
    const OutputReport end = keeper_->Commit();
    Report(end);
    if (end.error.empty()) {
        return status;
    }
    report_.error = end.error;
    screen_.Error(end.error);
    return kExitOutputRefused;
}

void ProtectedOutput::RollBack() {
    const platform::InterruptionPause pause;
    const OutputReport end = keeper_->RollBack();
    Report(end);
    if (!end.error.empty()) {
        screen_.Error(end.error);
    }
}

void ProtectedOutput::Warn(const std::string& code, const NativePath& file, const std::string& text) {
    desk::Warn(report_, screen_, {file, 0, code, text});
}

void ProtectedOutput::Report(const OutputReport& end) {
    for (const KeptEntry& entry : end.kept) {
        const std::string kept = "; it is kept as " + FromFilesystem(entry.kept).utf8;
        Warn(
            "kept", FromFilesystem(entry.wanted),
            (entry.edited ? "was edited since the last run" : "is not from a run, and a page has this name") +
                kept);
    }
    for (const std::string& finding : end.findings) {
        Warn("output", {}, finding);
    }
    if (!end.failedFolder.empty()) {
        screen_.Note("the output folder is as it was before; the files of this run are in " +
                     FromFilesystem(end.failedFolder).utf8);
    }
}

std::vector<std::filesystem::path> InputPaths(const std::vector<NativePath>& inputs) {
    std::vector<std::filesystem::path> paths;
    std::ranges::transform(inputs, std::back_inserter(paths), ToFilesystem);
    return paths;
}

}  // namespace ventrix::desk
