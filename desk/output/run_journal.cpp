#include "desk/output/run_journal.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "desk/output/entries.h"
#include "platform/file_identity.h"
#include "platform/native_files.h"
#include "platform/path_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr int kSchema = 1;
constexpr const char* kStateNames[] = {"prepared", "running", "committed"};
constexpr int kFailedFolders = 1000;

nlohmann::json AsJson(const Journal& journal) {
    return {{"schema", kSchema},
            {"state", kStateNames[static_cast<int>(journal.state)]},
            {"existed", journal.existed},
            {"mode", static_cast<int>(journal.mode)},
            {"earlierFile", journal.earlierFile},
            {"madeFile", journal.madeFile},
            {"madeParents", journal.madeParents},
            {"request", journal.request},
            {"version", journal.version}};
}

/// Throws the JSON library's exceptions for anything that is not a journal.
std::optional<Journal> FromJson(const nlohmann::json& json) {
    const auto* state = std::ranges::find(kStateNames, json.at("state").get<std::string>());
    if (json.at("schema").get<int>() != kSchema || state == std::end(kStateNames)) {
        return std::nullopt;
    }
    Journal journal;
    journal.state = static_cast<RunState>(state - std::begin(kStateNames));
    journal.existed = json.at("existed").get<bool>();
    journal.mode = static_cast<fs::perms>(json.at("mode").get<int>()) & fs::perms::mask;
    journal.earlierFile = json.at("earlierFile").get<std::uint64_t>();
    journal.madeFile = json.at("madeFile").get<std::uint64_t>();
    journal.madeParents = json.at("madeParents").get<int>();
    journal.request = json.at("request").get<std::string>();
    journal.version = json.at("version").get<std::string>();
    return journal;
}

bool IsFolderWithFile(const fs::path& folder, std::uint64_t file) {
    const auto identity = platform::IdentityOf(folder);
    return IsFolder(folder) && identity && identity->file == file;
}

/// An entry that cannot be examined may contain what the user needs, so it counts as existing.
bool MayExist(const fs::path& path) {
    std::error_code error;
    return platform::StatusOfEntry(path, error).has_value() || error;
}

bool HoldsInput(const fs::path& folder, const std::vector<fs::path>& inputs) {
    return std::ranges::any_of(inputs,
                               [&](const fs::path& input) { return platform::LiesIn(input, folder); });
}

/// Frees the name if an earlier failed run created everything in the folder. False if that would delete
/// something of the user's.
bool ClearFailedFolder(const fs::path& folder, const std::vector<fs::path>& inputs) {
    if (!Exists(folder)) {
        return true;
    }
    const Manifest manifest = IsFolder(folder) ? ReadManifest(folder, kFailedMark) : Manifest();
    if (!manifest.readable || FirstForeign(folder, manifest) || HoldsInput(folder, inputs)) {
        return false;
    }
    std::vector<std::string> findings;
    std::error_code error;
    DeleteOwn(folder, manifest, findings);
    return fs::remove(folder, error);
}

fs::path FreeFailedFolder(const RunPlaces& places, const std::vector<fs::path>& inputs) {
    const std::string name = platform::Utf8FromPath(places.output.filename());
    fs::path folder;
    for (int number = 1; number < kFailedFolders; ++number) {
        folder = places.output.parent_path() / platform::PathFromUtf8(NumberedName(name, ".failed", number));
        if (ClearFailedFolder(folder, inputs)) {
            break;
        }
    }
    return folder;
}

/// Moves the failed run's output folder out of the way. On an error it stays.
std::error_code SetFailedAside(const RunPlaces& places, const Journal& journal,
                               const std::vector<fs::path>& inputs, OutputReport& report) {
    std::error_code error;
    MakeWritable(places.output);
    RemoveEmptyFolders(places.output);
    if (fs::remove(places.output, error)) {
        return {};
    }
    Manifest manifest;
    manifest.mark = kFailedMark;
    manifest.request = journal.request;
    manifest.version = journal.version;
    std::vector<std::string> unlisted;
    ListFiles(places.output, manifest, unlisted);
    // On a full disk the folder gets no manifest; the next failed run then leaves it alone.
    WriteManifest(places.output, manifest);
    const fs::path failed = FreeFailedFolder(places, inputs);
    error = platform::RenameToFree(places.output, failed);
    if (!error) {
        report.failedFolder = failed;
    }
    return error;
}

std::string WhyNotUndone(const RunPlaces& places, const std::error_code& error) {
    const bool isTaken = error == std::errc::file_exists;
    return "cannot be restored to its state before a run that did not finish: " +
           (isTaken ? "something else has its name" : error.message()) + "; its earlier contents are in " +
           platform::Utf8FromPath(places.earlier) + ": move them where you want them, then delete " +
           platform::Utf8FromPath(places.folder);
}

/// Moves the earlier output folder back. The place is free.
std::error_code PutEarlierBack(const RunPlaces& places, const Journal& journal) {
    MakeWritable(places.earlier);
    if (const std::error_code error = platform::RenameToFree(places.earlier, places.output)) {
        return error;
    }
    SetMode(places.output, journal.mode);
    return {};
}

Settlement Undo(const RunPlaces& places, const Journal& journal, const std::vector<fs::path>& inputs) {
    Settlement settlement;
    std::error_code error;
    fs::remove(places.fresh, error);
    if (journal.state == RunState::kRunning && IsFolderWithFile(places.output, journal.madeFile)) {
        error = SetFailedAside(places, journal, inputs, settlement.report);
        if (error) {
            settlement.refusal = WhyNotUndone(places, error);
            return settlement;
        }
        settlement.undone = true;
    }
    if (!MayExist(places.earlier)) {
        if (journal.existed && IsFolderWithFile(places.output, journal.earlierFile)) {
            SetMode(places.output, journal.mode);
        }
        return settlement;
    }
    if (IsFolder(places.output)) {
        fs::remove(places.output, error);
    }
    error = PutEarlierBack(places, journal);
    if (error) {
        settlement.refusal = WhyNotUndone(places, error);
    }
    settlement.undone = !error;
    return settlement;
}

Settlement FinishCommit(const RunPlaces& places, const Journal& journal) {
    Settlement settlement;
    const Manifest manifest = ReadManifest(places.earlier, kResultMark);
    RestoreForeign(places.earlier, places.output, manifest, settlement.report);
    DeleteOwn(places.earlier, manifest, settlement.report.findings);
    std::error_code error;
    fs::remove(places.earlier, error);
    if (error) {
        settlement.refusal =
            "still has parts of an earlier result in " + platform::Utf8FromPath(places.earlier) +
            ", which could be neither put back nor deleted: move or delete them, then delete " +
            platform::Utf8FromPath(places.folder);
        return settlement;
    }
    if (journal.existed) {
        SetMode(places.output, journal.mode);
    }
    settlement.finished = true;
    return settlement;
}

/// A run that was killed while it wrote the journal left the new one under its temporary name.
void RemoveHalfWritten(const fs::path& runFolder) {
    std::error_code ignored;
    for (const fs::path& name : NamesIn(runFolder, ignored)) {
        if (platform::Utf8FromPath(name).starts_with(".ventrix-")) {
            fs::remove(runFolder / name, ignored);
        }
    }
}

}  // namespace

RunPlaces PlacesOf(const fs::path& output) {
    const std::string name = "." + platform::Utf8FromPath(output.filename()) + ".ventrix-run";
    const fs::path folder = output.parent_path() / platform::PathFromUtf8(name);
    return {output, folder, folder / "lock", folder / "journal.json", folder / "earlier", folder / "new"};
}

std::optional<Journal> ReadJournal(const RunPlaces& places) {
    const auto status = platform::StatusOfEntry(places.journal);
    if (!status || status->kind != platform::EntryKind::kFile) {
        return std::nullopt;
    }
    std::ifstream stream(places.journal, std::ios::binary);
    try {
        return FromJson(nlohmann::json::parse(stream));
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    } catch (const std::ios_base::failure&) {
        return std::nullopt;
    }
}

std::error_code WriteJournal(const RunPlaces& places, const Journal& journal) {
    return platform::WriteDurably(
        places.journal, AsJson(journal).dump(1, ' ', false, nlohmann::json::error_handler_t::replace));
}

Settlement SettleRun(const RunPlaces& places, const std::vector<fs::path>& inputs) {
    const auto journal = ReadJournal(places);
    Settlement settlement;
    if (!journal) {
        if (MayExist(places.journal) || MayExist(places.earlier)) {
            settlement.refusal =
                "has a run folder without a readable journal: " + platform::Utf8FromPath(places.folder) +
                "; move what you need out of it, then delete it";
        }
        return settlement;
    }
    if (journal->state == RunState::kCommitted && IsFolder(places.output)) {
        if (MayExist(places.earlier)) {
            settlement = FinishCommit(places, *journal);
        }
    } else {
        settlement = Undo(places, *journal, inputs);
    }
    if (settlement.refusal.empty()) {
        settlement.madeParents = journal->madeParents;
        std::error_code ignored;
        fs::remove(places.journal, ignored);
    }
    return settlement;
}

std::error_code RemoveRunFolder(const RunPlaces& places) {
    std::error_code error;
    RemoveHalfWritten(places.folder);
    fs::remove(places.journal, error);
    fs::remove(places.fresh, error);
    fs::remove(places.lock, error);
    fs::remove(places.folder, error);
    return error;
}

}  // namespace ventrix::desk
