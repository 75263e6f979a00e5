// The run folder: while a run writes into an output folder OUT, the folder `.OUT.ventrix-run` beside it holds
// the lock, the journal, and what OUT held before. From the journal and from what exists, the state of a run
// can be determined at any moment, and the next run settles it after this one was killed. Paths are native.
//
//   journal        earlier  OUT              what happened                    what settling does
//   -------------  -------  ---------------  -------------------------------  ------------------------------
//   none           no       any              nothing was moved                nothing
//   none           yes      any              not made by a run                refuses, names the run folder
//   unreadable     any      any              the journal was damaged          refuses, names the run folder
//   prepared       no       any              nothing was moved                restores OUT's permissions
//   prepared       yes      none             OUT was moved aside              moves earlier back
//   running        yes      none             the new OUT was not there yet,   moves earlier back
//                                            or OUT is at OUT.failed already
//   running        any      the new one      the run went on                  moves OUT to OUT.failed, or
//                                                                             deletes it if it has no file;
//                                                                             then moves earlier back
//   running        no       another or none  everything was moved back, or    nothing
//                                            OUT did not exist before
//   not committed  yes      another, empty   the user created a folder        deletes it, moves earlier back
//   not committed  yes      another, with    the user created a folder        refuses, names the run folder
//                           entries
//   committed      yes      any folder       foreign files were being put     continues, then deletes what
//                                            back                             the manifest lists
//   committed      yes      none             the user deleted the result      moves earlier back
//   committed      no       any              everything was put back          nothing
//
// Each step moves or deletes one entry, so if settling is killed, the same table applies to the next attempt.
// The journal goes last, then the lock and the run folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "desk/output/foreign_files.h"

namespace ventrix::desk {

/// The paths of one run.
struct RunPlaces {
    std::filesystem::path output;   ///< Real and absolute.
    std::filesystem::path folder;   ///< The run folder.
    std::filesystem::path lock;     ///< The file that the run has locked while it lives.
    std::filesystem::path journal;  ///< Written durably.
    std::filesystem::path earlier;  ///< What the output folder was.
    std::filesystem::path fresh;    ///< The new output folder before it gets its name.
};

RunPlaces PlacesOf(const std::filesystem::path& output);

enum class RunState { kPrepared, kRunning, kCommitted };

struct Journal {
    RunState state = RunState::kPrepared;
    bool existed = false;                                        ///< There was an output folder before.
    std::filesystem::perms mode = std::filesystem::perms::none;  ///< Of that folder.
    std::uint64_t earlierFile = 0;                               ///< Its FileIdentity::file.
    std::uint64_t madeFile = 0;  ///< That of the new output folder, from `kRunning` on.
    int madeParents = 0;         ///< How many folders above the output folder were made for it.
    std::string request;
    std::string version;
};

/// Nothing if there is no journal or it cannot be read.
std::optional<Journal> ReadJournal(const RunPlaces& places);

/// Writes the journal durably. On failure the earlier one is as it was.
std::error_code WriteJournal(const RunPlaces& places, const Journal& journal);

/// The outcome of settling an unfinished run.
struct Settlement {
    std::string refusal;    ///< Why it could not be settled, for a message; nothing may be written then.
    bool undone = false;    ///< The output folder is as it was before the run.
    bool finished = false;  ///< The run's result stays; the foreign files are back in it.
    int madeParents = 0;    ///< Folders that the run made above the output folder; the caller removes them.
    OutputReport report;
};

/// Settles what the run folder holds, by the table above. The caller has locked it. A folder OUT.failed is
/// replaced only if it holds nothing but what an earlier failed run made, and none of the `inputs`; else the
/// name gets a number. Where entries cannot be put back or deleted, the journal stays and `refusal` is set.
Settlement SettleRun(const RunPlaces& places, const std::vector<std::filesystem::path>& inputs);

/// Removes the run folder with its lock and journal. An error if something else is in it, or the file system
/// refuses; the next run into the same output folder tries again.
std::error_code RemoveRunFolder(const RunPlaces& places);

}  // namespace ventrix::desk
