// Keeps the output folder of one run: moves an earlier result and foreign files aside before the run, and
// afterwards moves the foreign files into the new result or restores the folder as it was. A run that is
// killed is settled by the next one (run_journal.h). Paths are native.
//
//     std::string refusal;
//     const auto keeper = TakeOutput(order, refusal);  // null: nothing has changed, `refusal` says why
//     ... the run writes into keeper->Folder(), which is empty ...
//     const OutputReport report = succeeded ? keeper->Commit() : keeper->RollBack();
//
// There is no protection against a crash of the machine: the pages of a new result are not forced to the
// disk.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/output/run_journal.h"
#include "platform/file_lock.h"

namespace ventrix::desk {

/// What a run requires of its output folder.
struct OutputOrder {
    std::filesystem::path folder;               ///< Absolute. Need not exist, nor do the folders above it.
    std::vector<std::filesystem::path> inputs;  ///< What the run reads; none may lie in the folder.
    bool force = false;                         ///< Accepts a folder with files but no result.
    std::string request;                        ///< For the manifest, as is the version.
    std::string version;
};

class OutputKeeper {
  public:
    /// Rolls back a run that was neither committed nor rolled back, and reports nothing.
    ~OutputKeeper();
    OutputKeeper(const OutputKeeper&) = delete;
    OutputKeeper& operator=(const OutputKeeper&) = delete;

    /// The folder to write into, links resolved.
    const std::filesystem::path& Folder() const { return places_.output; }

    /// Lines to show before the run: what happened to an earlier run that was killed, and a warning if the
    /// folder cannot be moved aside and loses its earlier result should this run fail.
    const std::vector<std::string>& Notes() const { return notes_; }

    /// For a run with exit status 0 or 1: what the folder holds now is the result, and foreign files come
    /// back. With an `error` the result could not be recorded, and the run is rolled back. Findings do not
    /// undo it.
    OutputReport Commit();

    /// For any other outcome: everything is as it was before; what the run made is at `failedFolder`. With an
    /// `error` the earlier result is still aside, and the error says where.
    OutputReport RollBack();

  private:
    friend std::unique_ptr<OutputKeeper> TakeOutput(const OutputOrder& order, std::string& refusal);
    explicit OutputKeeper(const OutputOrder& order);

    std::string Begin();
    std::string Enter();
    std::string MakeParents();
    std::string LockRunFolder();
    std::string SettleEarlierRun();
    std::string TakeFolder();
    std::string MoveAside();
    std::string MakeFresh();
    std::string UseInPlace(const std::string& notMovable);
    OutputReport EndInPlace(bool succeeded);
    void Leave(OutputReport& report);

    OutputOrder order_;
    RunPlaces places_;
    Journal journal_;
    std::vector<std::string> notes_;
    std::optional<platform::FileLock> lock_;        ///< On the run folder; none where that cannot be made.
    std::optional<platform::FileLock> folderLock_;  ///< On the output folder, while it is used in place.
    bool inPlace_ = false;
    bool open_ = false;  ///< Begun, and neither committed nor rolled back.
};

/// Checks, locks and empties the output folder, which exists afterwards. Null if it is refused, which leaves
/// it as it is; `refusal` is then the rest of a sentence that begins with the folder's name. An unfinished
/// earlier run is settled in both cases.
std::unique_ptr<OutputKeeper> TakeOutput(const OutputOrder& order, std::string& refusal);

}  // namespace ventrix::desk
