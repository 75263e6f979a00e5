#include "desk/documents/document_files.h"

#include <filesystem>
#include <set>
#include <unordered_set>
#include <utility>

#include "desk/documents/references.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/reference_path.h"

namespace ventrix::desk {
namespace {

/// A document whose references are being visited.
struct Level {
    NativePath folder;
    std::vector<Reference> references;
    std::size_t next = 0;
};

/// The state of a depth-first walk. The levels are an explicit stack, so that a long chain of files does not
/// exhaust the call stack. Two sets end the walk: `opened`, so that no path is parsed twice, and `followed`,
/// because links to folders can give one file any number of paths.
struct Walk {
    DocumentFiles result;
    std::vector<Level> levels;  ///< From the document down to the one being visited.
    std::set<NativePath> listed;
    std::unordered_set<std::string> listedUrls;
    std::set<NativePath> opened;
    std::unordered_set<std::string> remarked;
    std::set<std::pair<std::uint64_t, std::uint64_t>> followed;  ///< Identities.
};

const char* KeyOf(const Reference& reference) {
    return reference.graphic ? "graphicsType" : "documentType";
}

void Remark(Walk& walk, const std::string& what, const std::string& reason) {
    if (walk.remarked.insert(what).second) {
        walk.result.remarks.push_back({what, reason});
    }
}

void Follow(Walk& walk, const NativePath& path) {
    LenientDocument loaded = LoadLeniently(path);
    std::error_code error;
    if (loaded.identity == decltype(loaded.identity)() &&
        std::filesystem::is_regular_file(ToFilesystem(path), error)) {
        Remark(walk, path.utf8, loaded.reason);
    }
    if (loaded.document == nullptr || !walk.followed.insert(loaded.identity).second) {
        return;
    }
    walk.levels.push_back({FolderOf(path), ReferencesOf(loaded.document.get())});
}

void VisitFile(Walk& walk, const Reference& reference, const NativePath& path) {
    if (reference.outside || (reference.optional && !std::filesystem::is_regular_file(ToFilesystem(path)))) {
        return;
    }
    if (!ToSystem(path)) {
        Remark(walk, reference.text, path.utf8 + " is not on a mapped drive; map one with --drive");
        return;
    }
    if (walk.listed.insert(path).second) {
        walk.result.files.push_back({.key = KeyOf(reference), .path = path, .url = {}});
    }
    if (reference.follow && walk.opened.insert(path).second) {
        Follow(walk, path);
    }
}

void Visit(Walk& walk, const Reference& reference, const NativePath& folder) {
    const ReferenceTarget target = TargetOf(reference.text, folder);
    if (!target.remark.empty() && !reference.outside && !reference.optional) {
        Remark(walk, reference.text, target.remark);
    } else if (!target.url.empty() && walk.listedUrls.insert(target.url).second) {
        walk.result.files.push_back({.key = KeyOf(reference), .path = {}, .url = target.url});
    } else if (!target.path.Empty()) {
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
        // Visit may add a level, which invalidates `level`.
        const Reference reference = std::move(level.references[level.next++]);
        const NativePath folder = level.folder;
        Visit(walk, reference, folder);
    }
}

}  // namespace

DocumentFiles ListDocumentFiles(const NativePath& document) {
    Walk walk;
    std::error_code error;
    const NativePath path =
        NormalPath(FromFilesystem(std::filesystem::absolute(ToFilesystem(document), error)));
    walk.result.reason = WhyUnnameable(path);
    if (walk.result.reason.empty() && !ToSystem(path)) {
        walk.result.reason = "the file is not on a mapped drive; map one with --drive";
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
    walk.result.files.push_back({.key = "documentType", .path = path, .url = {}});
    walk.listed.insert(path);
    walk.opened.insert(path);
    walk.followed.insert(loaded.identity);
    walk.levels.push_back({FolderOf(path), ReferencesOf(loaded.document.get())});
    loaded.document.reset();
    VisitAll(walk);
    return walk.result;
}

}  // namespace ventrix::desk
