#include "desk/output/foreign_files.h"

#include "desk/output/entries.h"
#include "platform/native_files.h"
#include "platform/path_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

std::optional<fs::path> FirstForeignBelow(const fs::path& folder, const fs::path& below,
                                          const Manifest& manifest) {
    std::error_code error;
    const std::vector<fs::path> names = NamesIn(folder / below, error);
    if (error) {
        return below;
    }
    for (const fs::path& name : names) {
        const fs::path path = below / name;
        if (!IsUnmodified(manifest, folder, path)) {
            return path;
        }
        if (ListsFolder(manifest, path)) {
            if (auto found = FirstForeignBelow(folder, path, manifest)) {
                return found;
            }
        }
    }
    return std::nullopt;
}

/// A folder of the earlier result on the way down, and the folder that its foreign entries go to. That is
/// made when the first entry needs it.
struct Level {
    const Level* above = nullptr;
    fs::path source;
    fs::path target;
    fs::perms sourceMode = fs::perms::none;  ///< Before it was made writable.
};

std::error_code MakeTarget(const Level& level) {
    if (IsFolder(level.target)) {
        return {};
    }
    if (level.above != nullptr) {
        if (const std::error_code error = MakeTarget(*level.above)) {
            return error;
        }
    }
    std::error_code error;
    fs::create_directory(level.target, error);
    return error;
}

/// What all steps of putting foreign entries back share.
struct Restoration {
    const fs::path& earlier;
    const Manifest& manifest;
    OutputReport& report;
};

void NoteStays(const Restoration& restoration, const fs::path& entry, const std::error_code& error) {
    restoration.report.findings.push_back(platform::Utf8FromPath(entry) +
                                          " cannot be put back into the output folder: " + error.message());
}

void MoveEntry(const Restoration& restoration, const Level& level, const fs::path& name, bool edited) {
    const fs::path source = level.source / name;
    std::error_code error = MakeTarget(level);
    if (!error && !edited) {
        error = platform::RenameToFree(source, level.target / name);
    }
    const bool needsOtherName = edited ? !error : error == std::errc::file_exists;
    if (needsOtherName) {
        const fs::path kept = MoveToFreeName(source, level.target, platform::Utf8FromPath(name),
                                             edited ? ".edited" : ".kept", error);
        if (!error) {
            restoration.report.kept.push_back({level.target / name, kept, edited});
        }
    }
    if (error) {
        NoteStays(restoration, source, error);
    }
}

/// A folder that contains nothing of a run is moved in one step and keeps all its attributes.
bool MoveWhole(const Level& level) {
    if (MakeTarget(*level.above)) {
        return false;
    }
    MakeWritable(level.source);
    if (platform::RenameToFree(level.source, level.target)) {
        return false;
    }
    SetMode(level.target, level.sourceMode);
    return true;
}

bool HoldsForeign(const Restoration& restoration, const fs::path& folder) {
    std::error_code error;
    for (const fs::path& name : NamesIn(folder, error)) {
        const fs::path entry = folder / name;
        const fs::path listed = entry.lexically_relative(restoration.earlier);
        if (!IsUnmodified(restoration.manifest, restoration.earlier, listed) ||
            (IsFolder(entry) && HoldsForeign(restoration, entry))) {
            return true;
        }
    }
    return static_cast<bool>(error);
}

/// The result has a file with the folder's name: the folder's foreign entries go to a folder beside it.
void GiveOtherTarget(const Restoration& restoration, Level& level) {
    const fs::path wanted = level.target;
    const fs::path neighbours = level.source.parent_path();
    fs::path name = wanted.filename();
    for (int number = 1; Exists(wanted.parent_path() / name) || Exists(neighbours / name); ++number) {
        name =
            platform::PathFromUtf8(NumberedName(platform::Utf8FromPath(wanted.filename()), ".kept", number));
    }
    level.target = wanted.parent_path() / name;
    restoration.report.kept.push_back({wanted, level.target, false});
}

void RestoreFolder(const Restoration& restoration, const Level& level);

void RestoreSubfolder(const Restoration& restoration, const Level& level, const fs::path& name,
                      bool isListed) {
    Level below{&level, level.source / name, level.target / name, ModeOf(level.source / name)};
    if (!isListed && MoveWhole(below)) {
        return;
    }
    MakeWritable(below.source);
    const bool nameIsTaken = Exists(below.target) && !IsFolder(below.target);
    if (nameIsTaken && HoldsForeign(restoration, below.source)) {
        GiveOtherTarget(restoration, below);
    }
    RestoreFolder(restoration, below);
    if (!isListed) {
        std::error_code ignored;
        fs::remove(below.source, ignored);
    }
}

void RestoreEntry(const Restoration& restoration, const Level& level, const fs::path& name) {
    const fs::path source = level.source / name;
    const fs::path listed = source.lexically_relative(restoration.earlier);
    if (IsFolder(source)) {
        RestoreSubfolder(restoration, level, name, ListsFolder(restoration.manifest, listed));
    } else if (!IsUnmodified(restoration.manifest, restoration.earlier, listed)) {
        MoveEntry(restoration, level, name, ListsFile(restoration.manifest, listed));
    }
}

void RestoreFolder(const Restoration& restoration, const Level& level) {
    const fs::perms mode = IsFolder(level.target) ? ModeOf(level.target) : level.sourceMode;
    MakeWritable(level.source);
    MakeWritable(level.target);
    std::error_code error;
    const std::vector<fs::path> names = NamesIn(level.source, error);
    if (error) {
        NoteStays(restoration, level.source, error);
    }
    for (const fs::path& name : names) {
        RestoreEntry(restoration, level, name);
    }
    // From here on a read-only folder accepts no more entries.
    SetMode(level.target, mode);
}

void DeleteOwnBelow(const fs::path& folder, const fs::path& below, const Manifest& manifest,
                    std::vector<std::string>& findings) {
    MakeWritable(folder / below);
    std::error_code error;
    for (const fs::path& name : NamesIn(folder / below, findings)) {
        const fs::path path = below / name;
        const fs::path entry = folder / path;
        if (ListsFolder(manifest, path) && IsFolder(entry)) {
            DeleteOwnBelow(folder, path, manifest, findings);
            fs::remove(entry, error);
        } else if (path != manifest.mark && !IsFolder(entry) && IsUnmodified(manifest, folder, path)) {
            fs::remove(entry, error);
            if (error) {
                findings.push_back(platform::Utf8FromPath(entry) + " cannot be deleted: " + error.message());
            }
        }
    }
}

}  // namespace

std::optional<fs::path> FirstForeign(const fs::path& folder, const Manifest& manifest) {
    return FirstForeignBelow(folder, {}, manifest);
}

void RestoreForeign(const fs::path& earlier, const fs::path& result, const Manifest& manifest,
                    OutputReport& report) {
    RestoreFolder({earlier, manifest, report}, {nullptr, earlier, result, ModeOf(earlier)});
}

void DeleteOwn(const fs::path& folder, const Manifest& manifest, std::vector<std::string>& findings) {
    const std::size_t before = findings.size();
    DeleteOwnBelow(folder, {}, manifest, findings);
    // The manifest is deleted last: as long as a file of the run is left, it must be recognised as one.
    if (findings.size() == before && IsUnmodified(manifest, folder, manifest.mark)) {
        std::error_code error;
        fs::remove(folder / manifest.mark, error);
        if (error) {
            findings.push_back(platform::Utf8FromPath(folder / manifest.mark) +
                               " cannot be deleted: " + error.message());
        }
    }
}

}  // namespace ventrix::desk
