#include "desk/documents/document_area.h"

#include <algorithm>

#include "platform/home_folders.h"

namespace ventrix::desk {
namespace {

/// Service accounts have homes such as /bin or /nonexistent, which make no difference here.
bool ContainsHomeFolder(const NativePath& folder) {
    return std::ranges::any_of(platform::HomeFolders(), [&](const std::filesystem::path& home) {
        return IsBelowOrEqual(RealPath(FromFilesystem(home)), folder);
    });
}

bool IsRoot(const NativePath& folder) {
    return ToFilesystem(folder).relative_path().empty();
}

bool IsTopLevel(const NativePath& folder) {
    return !IsRoot(folder) && IsRoot(FromFilesystem(ToFilesystem(folder).parent_path()));
}

}  // namespace

NativePath AreaOf(const NativePath& document, const std::vector<NativePath>& files) {
    NativePath common = FolderOf(document);
    for (const NativePath& file : files) {
        common = CommonFolder(common, file);
    }
    NativePath folder = RealPath(NormalPath(common));
    if (!IsRoot(folder) && !IsTopLevel(folder) && !ContainsHomeFolder(folder)) {
        return folder;
    }
    const NativePath own = RealPath(NormalPath(FolderOf(document)));
    return IsRoot(own) || ContainsHomeFolder(own) ? NativePath{} : own;
}

}  // namespace ventrix::desk
