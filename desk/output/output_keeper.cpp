#include "desk/output/output_keeper.h"

#include <utility>

#include "desk/output/entries.h"
#include "desk/output/output_checks.h"
#include "platform/file_identity.h"
#include "platform/native_files.h"
#include "platform/path_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr int kLockAttempts = 1000;
constexpr const char* kBusy = "is being written by another run; wait until it ends, or choose another folder";

std::string CannotBe(const char* what, const std::string& reason) {
    return std::string("cannot be ") + what + ": " + reason;
}

Manifest ListedResult(const fs::path& folder, const Journal& run, std::vector<std::string>& findings) {
    Manifest manifest;
    manifest.mark = kResultMark;
    manifest.request = run.request;
    manifest.version = run.version;
    ListFiles(folder, manifest, findings);
    return manifest;
}

std::vector<std::string> NotesOf(const fs::path& output, const Settlement& settlement) {
    std::vector<std::string> notes;
    if (settlement.finished) {
        notes.push_back("an earlier run published into " + platform::Utf8FromPath(output) +
                        " but did not put all other files back; they have been put back now");
    }
    if (settlement.undone) {
        notes.push_back(platform::Utf8FromPath(output) +
                        " was restored to its state before an earlier run that did not finish" +
                        (settlement.report.failedFolder.empty()
                             ? ""
                             : "; the files of that run are in " +
                                   platform::Utf8FromPath(settlement.report.failedFolder)));
    }
    for (const KeptEntry& entry : settlement.report.kept) {
        notes.push_back(platform::Utf8FromPath(entry.wanted) + " is kept as " +
                        platform::Utf8FromPath(entry.kept));
    }
    for (const std::string& finding : settlement.report.findings) {
        notes.push_back(finding);
    }
    return notes;
}

}  // namespace

OutputKeeper::OutputKeeper(const OutputOrder& order)
    : order_(order), places_(PlacesOf(RealOutput(order.folder))) {
    journal_.request = order.request;
    journal_.version = order.version;
}

OutputKeeper::~OutputKeeper() {
    if (!open_) {
        return;
    }
    try {
        RollBack();
    } catch (const std::exception&) {
        // Out of memory. The journal stays, and the next run rolls back.
        open_ = false;
    }
}

std::string OutputKeeper::Begin() {
    std::string refusal = WhyNeverAllowed(places_.output, order_.inputs);
    if (!refusal.empty()) {
        return refusal;
    }
    refusal = Enter();
    if (refusal.empty()) {
        refusal = TakeFolder();
    }
    open_ = refusal.empty();
    if (!open_) {
        OutputReport ignored;
        Leave(ignored);
    }
    return refusal;
}

/// Locks the run folder and settles what it holds. A folder whose parent cannot be written has none.
std::string OutputKeeper::Enter() {
    std::string refusal = MakeParents();
    const bool canHaveRunFolder = platform::IsWritableFolder(places_.output.parent_path());
    if (!refusal.empty() || (!canHaveRunFolder && Exists(places_.output))) {
        return refusal;
    }
    refusal = LockRunFolder();
    return refusal.empty() ? SettleEarlierRun() : refusal;
}

std::string OutputKeeper::MakeParents() {
    std::vector<fs::path> missing;
    for (fs::path parent = places_.output.parent_path(); !Exists(parent); parent = parent.parent_path()) {
        missing.push_back(parent);
    }
    std::error_code error;
    while (!missing.empty() && !error) {
        journal_.madeParents += fs::create_directory(missing.back(), error) ? 1 : 0;
        missing.pop_back();
    }
    return error ? CannotBe("created", error.message()) : std::string();
}

std::string OutputKeeper::LockRunFolder() {
    std::error_code error;
    for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
        if (fs::create_directory(places_.folder, error)) {
            fs::permissions(places_.folder, fs::perms::owner_all, error);
        }
        if (error) {
            return CannotBe(Exists(places_.output) ? "set aside" : "created",
                            platform::Utf8FromPath(places_.folder) + ": " + error.message());
        }
        platform::LockAttempt locking = platform::LockFile(places_.lock);
        if (locking.busy) {
            return kBusy;
        }
        if (locking.lock) {
            lock_ = std::move(locking.lock);
            return {};
        }
        error = locking.error;
        // Another run has just ended and removed the folder.
        if (error != std::errc::no_such_file_or_directory) {
            break;
        }
    }
    return CannotBe("locked", platform::Utf8FromPath(places_.lock) + ": " + error.message());
}

std::string OutputKeeper::SettleEarlierRun() {
    const Settlement settlement = SettleRun(places_, order_.inputs);
    if (!settlement.refusal.empty()) {
        lock_.reset();
        return settlement.refusal;
    }
    notes_ = NotesOf(places_.output, settlement);
    journal_.madeParents += settlement.madeParents;
    // The folder that has been put back did not exist when the path was checked.
    return settlement.undone ? WhyNeverAllowed(places_.output, order_.inputs) : std::string();
}

std::string OutputKeeper::TakeFolder() {
    if (!Exists(places_.output)) {
        return MoveAside();
    }
    const Manifest manifest = ReadManifest(places_.output, kResultMark);
    if (std::string refusal = WhyNotOurs(places_.output, manifest, order_.force); !refusal.empty()) {
        return refusal;
    }
    const std::string notMovable = WhyNotMovable(places_.output);
    return notMovable.empty() ? MoveAside() : UseInPlace(notMovable);
}

std::string OutputKeeper::MoveAside() {
    const auto identity = platform::IdentityOf(places_.output);
    journal_.existed = identity.has_value();
    journal_.earlierFile = identity ? identity->file : 0;
    journal_.mode = ModeOf(places_.output);
    if (const std::error_code error = WriteJournal(places_, journal_)) {
        return CannotBe("set aside", platform::Utf8FromPath(places_.journal) + ": " + error.message());
    }
    if (journal_.existed) {
        MakeWritable(places_.output);
        if (const std::error_code error = platform::RenameToFree(places_.output, places_.earlier)) {
            SetMode(places_.output, journal_.mode);
            return UseInPlace("cannot be moved aside (" + error.message() + ")");
        }
    }
    std::string refusal = MakeFresh();
    if (!refusal.empty()) {
        const Settlement settlement = SettleRun(places_, order_.inputs);
        if (!settlement.refusal.empty()) {
            lock_.reset();
            return settlement.refusal;
        }
    }
    return refusal;
}

/// The new folder gets its name only after the journal knows its identity.
std::string OutputKeeper::MakeFresh() {
    std::error_code error;
    fs::create_directory(places_.fresh, error);
    const auto identity = platform::IdentityOf(places_.fresh);
    if (error || !identity) {
        return CannotBe("created", error.message());
    }
    if (journal_.existed) {
        platform::CopyOwner(places_.earlier, places_.fresh);
        SetMode(places_.fresh, journal_.mode | fs::perms::owner_all);
    }
    journal_.madeFile = identity->file;
    journal_.state = RunState::kRunning;
    error = WriteJournal(places_, journal_);
    if (!error) {
        error = platform::RenameToFree(places_.fresh, places_.output);
    }
    return error ? CannotBe("created", error.message()) : std::string();
}

std::string OutputKeeper::UseInPlace(const std::string& notMovable) {
    const Manifest manifest = ReadManifest(places_.output, kResultMark);
    if (std::string refusal = WhyNotUsableInPlace(places_.output, manifest, notMovable); !refusal.empty()) {
        return refusal;
    }
    platform::LockAttempt locking = platform::LockFolder(places_.output);
    if (locking.busy) {
        return kBusy;
    }
    folderLock_ = std::move(locking.lock);
    if (!folderLock_) {
        notes_.push_back(platform::Utf8FromPath(places_.output) + " cannot be locked (" +
                         locking.error.message() + "); do not start a second run into it");
    }
    std::error_code ignored;
    fs::remove(places_.journal, ignored);
    std::vector<std::string> findings;
    DeleteOwn(places_.output, manifest, findings);
    if (!findings.empty()) {
        return "holds an earlier result that cannot be deleted: " + findings.front();
    }
    if (manifest.readable) {
        notes_.push_back(platform::Utf8FromPath(places_.output) + " " + notMovable +
                         ", so the earlier result cannot be set aside: if this run fails, it is lost");
    }
    inPlace_ = true;
    return {};
}

OutputReport OutputKeeper::Commit() {
    if (inPlace_) {
        return EndInPlace(true);
    }
    OutputReport listing;
    const Manifest manifest = ListedResult(places_.output, journal_, listing.findings);
    std::error_code error = WriteManifest(places_.output, manifest);
    if (!error) {
        journal_.state = RunState::kCommitted;
        error = WriteJournal(places_, journal_);
    }
    if (error) {
        OutputReport report = RollBack();
        report.error = "the result cannot be recorded: " + error.message() +
                       (report.error.empty() ? "" : "; " + report.error);
        return report;
    }
    open_ = false;
    Settlement settlement = SettleRun(places_, order_.inputs);
    OutputReport report = std::move(settlement.report);
    report.findings.insert(report.findings.begin(), listing.findings.begin(), listing.findings.end());
    if (settlement.refusal.empty()) {
        Leave(report);
    } else {
        report.findings.push_back(platform::Utf8FromPath(places_.output) + " " + settlement.refusal);
        lock_.reset();
    }
    return report;
}

OutputReport OutputKeeper::RollBack() {
    open_ = false;
    if (inPlace_) {
        return EndInPlace(false);
    }
    Settlement settlement = SettleRun(places_, order_.inputs);
    if (settlement.refusal.empty()) {
        Leave(settlement.report);
    } else {
        settlement.report.error = platform::Utf8FromPath(places_.output) + " " + settlement.refusal;
        lock_.reset();
    }
    return settlement.report;
}

/// Nothing was moved aside. The files of a failed run stay where they are and get a manifest, so that the
/// next run may delete them.
OutputReport OutputKeeper::EndInPlace(bool succeeded) {
    open_ = false;
    OutputReport report;
    if (!succeeded) {
        RemoveEmptyFolders(places_.output);
    }
    const Manifest manifest = ListedResult(places_.output, journal_, report.findings);
    if (succeeded || !manifest.files.empty()) {
        const std::error_code error = WriteManifest(places_.output, manifest);
        report.error = error ? "the result cannot be recorded: " + error.message() : std::string();
        report.failedFolder = succeeded && !error ? fs::path() : places_.output;
    }
    folderLock_.reset();
    Leave(report);
    return report;
}

/// Removes what was created beside the output folder and the folders that were created above it, if they are
/// empty, and releases the lock.
void OutputKeeper::Leave(OutputReport& report) {
    if (lock_) {
        std::error_code error = RemoveRunFolder(places_);
        lock_.reset();
        if (error) {
            // Windows keeps the name of the lock, and so the folder, until the lock is released.
            fs::remove(places_.folder, error);
        }
        if (error) {
            report.findings.push_back(platform::Utf8FromPath(places_.folder) + " cannot be removed: " +
                                      error.message() + "; the next run tries again");
        }
    }
    std::error_code error;
    fs::path parent = places_.output.parent_path();
    for (int made = 0; made < journal_.madeParents && !error; ++made) {
        fs::remove(parent, error);
        parent = parent.parent_path();
    }
}

std::unique_ptr<OutputKeeper> TakeOutput(const OutputOrder& order, std::string& refusal) {
    std::unique_ptr<OutputKeeper> keeper(new OutputKeeper(order));
    refusal = keeper->Begin();
    if (!refusal.empty()) {
        return nullptr;
    }
    return keeper;
}

}  // namespace ventrix::desk
