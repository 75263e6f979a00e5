#include "desk/checks/package_checks.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string_view>

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

/// The drive or server of a path in system notation, which decides whether a graphic is packaged. Empty for a
/// path that is on no mapped drive.
std::string DriveOf(const NativePath& path) {
    const std::string system = ToSystem(path).value_or(SystemPath{}).utf8;
    const std::size_t start = system.starts_with("\\\\") ? 2 : 0;
    return system.substr(0, std::min(system.find('\\', start), system.size()));
}

bool IsFile(const NativePath& path) {
    std::error_code error;
    return fs::is_regular_file(ToFilesystem(path), error);
}

bool IsPage(const std::string& name) {
    return name.ends_with(".html") || name.ends_with(".htm");
}

std::map<std::string, PackageFile> ByName(const std::vector<PackageFile>& files) {
    std::map<std::string, PackageFile> byName;
    for (const PackageFile& file : files) {
        byName.emplace(file.name, file);
    }
    return byName;
}

/// The path below the folder, with "/"; the path itself if it is elsewhere.
std::string NameBelow(const NativePath& path, const std::string& folder) {
    return path.utf8.starts_with(folder) ? path.utf8.substr(folder.size()) : path.utf8;
}

std::string WithSlash(const NativePath& folder) {
    return folder.utf8.ends_with('/') ? folder.utf8 : folder.utf8 + '/';
}

}  // namespace

PackageLayout PackageLayoutOf(const DocumentFiles& files, const NativePath& document) {
    PackageLayout layout;
    const std::string drive = DriveOf(document);
    for (const DocumentFile& file : files.files) {
        if (!file.path.Empty() && (file.key != kGraphicKey || DriveOf(file.path) == drive)) {
            layout.commonFolder =
                CommonFolder(layout.sources.empty() ? file.path : layout.commonFolder, file.path);
            layout.sources.push_back(file.path);
        }
    }
    return layout;
}

std::vector<NativePath> UncopiedSources(const PackageLayout& layout,
                                        const std::vector<PackageFile>& package) {
    const std::map<std::string, PackageFile> copies = ByName(package);
    std::vector<NativePath> uncopied = layout.sources;
    std::erase_if(uncopied, [&](const NativePath& source) {
        return copies.contains(NameBelow(source, layout.commonFolder.utf8)) || !IsFile(source);
    });
    return uncopied;
}

std::vector<NativePath> UnsavedCopies(const std::vector<NativePath>& encoded, const NativePath& output,
                                      const std::vector<PackageFile>& copied,
                                      const std::vector<PackageFile>& transformed) {
    const std::map<std::string, PackageFile> before = ByName(copied);
    const std::map<std::string, PackageFile> after = ByName(transformed);
    std::vector<NativePath> unsaved = encoded;
    std::erase_if(unsaved, [&](const NativePath& copy) {
        const std::string name = NameBelow(copy, WithSlash(output));
        const auto first = before.find(name);
        const auto second = after.find(name);
        if (first == before.end() || second == after.end()) {
            return true;
        }
        return first->second != second->second && second->second.size > 0;
    });
    return unsaved;
}

std::vector<NativePath> UnplacedGraphics(const DocumentFiles& files, const NativePath& document,
                                         const NativePath& resultFolder) {
    const fs::path folder = ToFilesystem(FolderOf(document));
    std::vector<NativePath> unplaced;
    for (const DocumentFile& file : files.files) {
        if (file.key != kGraphicKey || file.path.Empty() || DriveOf(file.path) != DriveOf(document)) {
            continue;
        }
        const fs::path place =
            ToFilesystem(resultFolder) / ToFilesystem(file.path).lexically_relative(folder);
        if (IsFile(file.path) && !IsFile(FromFilesystem(place))) {
            unplaced.push_back(file.path);
        }
    }
    return unplaced;
}

std::vector<NativePath> MisplacedPages(const NativePath& output, const NativePath& resultFolder,
                                       const std::vector<PackageFile>& package) {
    std::set<std::string> packaged;
    for (const PackageFile& file : package) {
        packaged.insert(file.name);
    }
    std::vector<NativePath> misplaced;
    for (const PackageFile& file : ListPackage(output.utf8)) {
        const NativePath path{WithSlash(output) + file.name};
        if (IsPage(file.name) && !packaged.contains(file.name) &&
            !IsBelowOrEqual(RealPath(path), RealPath(resultFolder))) {
            misplaced.push_back(path);
        }
    }
    return misplaced;
}

bool IsXmlCopy(const std::string& name) {
    return name.ends_with(".dita") || name.ends_with(".ditamap") || name.ends_with(".xml");
}

std::vector<NativePath> XmlFiles(const NativePath& output, const std::vector<PackageFile>& package) {
    std::vector<NativePath> files;
    for (const PackageFile& file : package) {
        if (IsXmlCopy(file.name)) {
            files.push_back({WithSlash(output) + file.name});
        }
    }
    return files;
}

std::vector<NativePath> Existing(std::vector<NativePath> paths) {
    std::erase_if(paths, [](const NativePath& path) { return !IsFile(path); });
    return paths;
}

std::vector<NativePath> AbsentFolders(const DocumentFiles& files) {
    std::set<fs::path> absent;
    std::error_code error;
    for (const DocumentFile& file : files.files) {
        fs::path folder = ToFilesystem(file.path).parent_path();
        while (!folder.empty() && !fs::exists(folder, error) && absent.insert(folder).second) {
            folder = folder.parent_path();
        }
    }
    // A folder sorts before those in it.
    std::vector<NativePath> deepestFirst;
    for (auto folder = absent.rbegin(); folder != absent.rend(); ++folder) {
        deepestFirst.push_back(FromFilesystem(*folder));
    }
    return deepestFirst;
}

void RemoveIfEmpty(const std::vector<NativePath>& folders) {
    std::error_code ignored;
    for (const NativePath& folder : folders) {
        const fs::path path = ToFilesystem(folder);
        if (fs::is_directory(fs::symlink_status(path, ignored)) && fs::is_empty(path, ignored)) {
            fs::remove(path, ignored);
        }
    }
}

}  // namespace ventrix::desk
