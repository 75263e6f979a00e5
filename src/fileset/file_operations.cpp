#include "fileset/file_operations.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include "platform/drives.h"
#include "platform/file_identity.h"
#include "platform/files.h"
#include "platform/folders.h"

namespace ventrix {

namespace {

using platform::FolderEntry;

bool IsFolderEntry(const FolderEntry& entry) {
    return (entry.attributes & platform::kAttributeDirectory) != 0;
}
bool IsLink(const FolderEntry& entry) {
    return (entry.attributes & platform::kAttributeLink) != 0;
}

bool HasOneOf(const std::string& name, const FileList& suffixes) {
    return std::any_of(suffixes.begin(), suffixes.end(),
                       [&name](const std::string& suffix) { return EndsWith(name, suffix); });
}

/// The folders from the one where a walk began down to the one that it is in.
using OpenFolders = std::vector<std::optional<platform::FileIdentity>>;

void Collect(const Path& folder, const FileList& suffixes, OpenFolders& open, FileList& files) {
    const auto identity = platform::IdentityOf(platform::ToNative(folder));
    // A link to a folder that encloses it would be followed without end.
    if (identity && std::ranges::find(open, identity) != open.end()) {
        return;
    }
    open.push_back(identity);
    for (const FolderEntry& entry : platform::ListFolder(folder)) {
        Path path = folder + '\\' + entry.name;
        if (IsFolderEntry(entry)) {
            Collect(path, suffixes, open, files);
        } else if (HasOneOf(entry.name, suffixes)) {
            files.push_back(std::move(path));
        }
    }
    open.pop_back();
}

/// The copy of a read-only source has the read-only bit too, but later steps have to rewrite it.
void MakeWritable(const Path& path) {
    const auto attributes = platform::AttributesOf(path);
    if (attributes && (*attributes & platform::kAttributeReadOnly) != 0) {
        platform::SetAttributes(path, *attributes & ~platform::kAttributeReadOnly);
    }
}

void ClearSubfolder(const Path& subfolder, bool isLink, bool keepFiles) {
    // The target of a link is outside of the folder and must not be emptied. Clearing removes the link
    // itself; pruning keeps it, as it keeps files.
    if (isLink && keepFiles) {
        return;
    }
    if (!isLink) {
        ClearFolder(subfolder, keepFiles);
    }
    platform::RemoveEmptyFolder(subfolder);
}

bool LiesIn(const Path& path, const Path& folder) {
    return platform::LiesIn(platform::ToNative(path), platform::ToNative(folder));
}

/// True for an existing file that is not a link: it lies where its folder lies.
bool IsFileProper(const Path& path) {
    const auto attributes = platform::AttributesOf(path);
    return attributes && (*attributes & (platform::kAttributeLink | platform::kAttributeDirectory)) == 0;
}

}  // namespace

bool FileReadable(const Path& path) {
    return platform::OpensForReading(path);
}

// Many files share a folder, so that the answer for a folder is found once.
FileList FilesIn(FileList files, const Path& folder) {
    std::map<Path, bool> known;
    files.remove_if([&](const Path& file) {
        if (!IsFileProper(file)) {
            return !LiesIn(file, folder);
        }
        const auto [answer, isNew] = known.try_emplace(ParentFolder(file), false);
        if (isNew) {
            answer->second = LiesIn(answer->first, folder);
        }
        return !answer->second;
    });
    return files;
}

bool IsFolder(const Path& path) {
    const auto attributes = platform::AttributesOf(path);
    return attributes && (*attributes & platform::kAttributeDirectory) != 0;
}

bool EnsureFolder(const Path& folder) {
    if (IsFolder(folder)) {
        return true;
    }
    const Path parent = ParentFolder(folder);
    // A drive, a server or a bare name has no parent: such a folder exists or cannot be created here.
    if (parent.empty()) {
        return false;
    }
    if (!IsFolder(parent) && !EnsureFolder(parent)) {
        return false;
    }
    const auto outcome = platform::MakeFolder(folder);
    return outcome == platform::kErrorNone || outcome == platform::kErrorAlreadyExists;
}

void DeleteFileAt(const Path& path) {
    platform::RemoveFile(path);
}

bool CopyFileInto(const Path& source, const Path& target) {
    if (!EnsureFolder(ParentFolder(target))) {
        return false;
    }
    if (platform::CopyFileOver(source, target) != platform::kErrorNone) {
        return false;
    }
    MakeWritable(target);
    return true;
}

void MoveFileInto(const Path& source, const Path& target) {
    DeleteFileAt(target);
    // The target is already deleted, so if the copy failed, the source is the only copy left.
    if (CopyFileInto(source, target)) {
        DeleteFileAt(source);
    }
}

FileList CollectFiles(const Path& folder, const FileList& suffixes) {
    FileList files;
    OpenFolders open;
    Collect(folder, suffixes, open, files);
    return files;
}

void ClearFolder(const Path& folder, bool keepFiles) {
    // Without the backslash, appending a name would give the path of a neighbour of the folder.
    if (!EndsWith(folder, R"(\)")) {
        return;
    }
    for (const FolderEntry& entry : platform::ListFolder(folder)) {
        const Path path = folder + entry.name;
        if (IsFolderEntry(entry)) {
            ClearSubfolder(path + '\\', IsLink(entry), keepFiles);
        } else if (!keepFiles) {
            platform::RemoveFile(path);
        }
    }
}

void AppendList(FileList& target, const FileList& source) {
    target.insert(target.end(), source.begin(), source.end());
}

}  // namespace ventrix
