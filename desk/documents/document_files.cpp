#include "desk/documents/document_files.h"

#include <filesystem>
#include <set>
#include <unordered_set>
#include <utility>

#include "desk/documents/references.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/reference_path.h"
#include "platform/drives.h"

namespace ventrix::desk {
namespace {

/// A document whose references are being gone through.
struct Level {
    std::string folder;
    std::vector<Reference> references;
    std::size_t next = 0;
};

struct Walk {
    DocumentFiles result;
    std::vector<Level> levels;  ///< From the document down to where the walk stands.
    std::unordered_set<std::string> listed;
    std::unordered_set<std::string> gone;  ///< Paths that were followed, so that no file is opened twice.
    std::unordered_set<std::string> remarked;
    std::set<std::pair<std::uint64_t, std::uint64_t>>
        followed;  ///< By identity: links can give a file endless names.
};

const char* KeyOf(const Reference& reference) {
    return reference.graphic ? "graphicsType" : "documentType";
}

void Remark(Walk& walk, const std::string& what, const std::string& reason) {
    if (walk.remarked.insert(what).second) {
        walk.result.remarks.push_back({what, reason});
    }
}

void Follow(Walk& walk, const std::string& path) {
    LenientDocument loaded = LoadLeniently(path);
    if (loaded.document == nullptr || !walk.followed.insert(loaded.identity).second) {
        return;
    }
    walk.levels.push_back({FolderOf(path), ReferencesOf(loaded.document.get())});
}

void VisitFile(Walk& walk, const Reference& reference, const std::string& path) {
    if (reference.outside || (reference.optional && !std::filesystem::is_regular_file(path))) {
        return;
    }
    const auto systemPath = platform::ToSystem(path);
    if (!systemPath.has_value()) {
        Remark(walk, reference.text, "no drive reaches " + path);
        return;
    }
    if (walk.listed.insert(path).second) {
        walk.result.files.push_back({KeyOf(reference), *systemPath});
    }
    if (reference.follow && walk.gone.insert(path).second) {
        Follow(walk, path);
    }
}

void Visit(Walk& walk, const Reference& reference, const std::string& folder) {
    const ReferenceTarget target = TargetOf(reference.text, folder);
    if (!target.remark.empty() && !reference.outside && !reference.optional) {
        Remark(walk, reference.text, target.remark);
    } else if (!target.url.empty() && walk.listed.insert(target.url).second) {
        walk.result.files.push_back({KeyOf(reference), target.url});
    } else if (!target.path.empty()) {
        VisitFile(walk, reference, target.path);
    }
}

void VisitAll(Walk& walk) {
    while (!walk.levels.empty()) {
        Level& level = walk.levels.back();
        if (level.next == level.references.size()) {
            walk.levels.pop_back();
            continue;
        }
        const Reference reference = std::move(level.references[level.next++]);
        const std::string folder = level.folder;
        Visit(walk, reference, folder);
    }
}

}  // namespace

DocumentFiles ListDocumentFiles(const std::string& nativePath) {
    Walk walk;
    std::error_code error;
    const std::string path = NormalPath(std::filesystem::absolute(nativePath, error).string());
    const auto systemPath = platform::ToSystem(path);
    walk.result.reason = WhyUnnameable(path);
    if (walk.result.reason.empty() && !systemPath.has_value()) {
        walk.result.reason = "no drive reaches the file";
    }
    if (!walk.result.reason.empty()) {
        return walk.result;
    }
    LenientDocument loaded = LoadLeniently(path);
    walk.result.reason = loaded.reason;
    if (!loaded.wellFormed) {
        return walk.result;
    }
    walk.result.readable = true;
    walk.result.dita = IsDita(loaded.document.get());
    walk.result.files.push_back({"documentType", *systemPath});
    walk.listed.insert(path);
    walk.gone.insert(path);
    walk.followed.insert(loaded.identity);
    walk.levels.push_back({FolderOf(path), ReferencesOf(loaded.document.get())});
    loaded.document.reset();
    VisitAll(walk);
    return walk.result;
}

}  // namespace ventrix::desk
