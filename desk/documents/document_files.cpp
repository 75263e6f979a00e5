#include "desk/documents/document_files.h"

#include <filesystem>
#include <map>
#include <set>
#include <unordered_set>
#include <utility>

#include "desk/documents/document_area.h"
#include "desk/documents/dtd_files.h"
#include "desk/documents/references.h"
#include "desk/xml/file_access.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/limits.h"
#include "desk/xml/reference_path.h"
#include "platform/files.h"
#include "platform/native_files.h"

namespace ventrix::desk {
namespace {

/// A document whose references are being visited.
struct Level {
    NativePath file;
    std::vector<Reference> references;
    std::size_t next = 0;
};

/// A file whose content becomes text of the document.
struct ConfinedFile {
    NativePath path;
    NativePath referrer;
    int line = 0;
};

/// The state of a depth-first walk. The levels are an explicit stack, so that a long chain of files does not
/// exhaust the call stack. Two sets end the walk: `opened`, so that no path is parsed twice, and `followed`,
/// because links to folders can give one file any number of paths.
struct Walk {
    DocumentFiles result;
    std::vector<Level> levels;                 ///< From the document down to the one being visited.
    std::map<NativePath, std::size_t> listed;  ///< The index of each in the result.
    std::unordered_set<std::string> listedUrls;
    std::set<NativePath> opened;
    std::unordered_set<std::string> remarked;
    std::set<std::pair<std::uint64_t, std::uint64_t>> followed;  ///< Identities.
    std::vector<NativePath> neighbours;                          ///< What defines the document's area.
    std::vector<ConfinedFile> confined;
};

const char* KeyOf(const Reference& reference) {
    return reference.graphic ? kGraphicKey : kDocumentKey;
}

void Remark(Walk& walk, const ListingRemark& remark) {
    if (walk.remarked.insert(remark.what).second) {
        walk.result.remarks.push_back(remark);
    }
}

void List(Walk& walk, const Reference& reference, const NativePath& path, const NativePath& referrer) {
    const auto [known, isNew] = walk.listed.emplace(path, walk.result.files.size());
    const bool entity = reference.confined && !reference.opaque;
    if (isNew) {
        walk.result.files.push_back({.key = KeyOf(reference),
                                     .path = path,
                                     .url = {},
                                     .referrer = referrer,
                                     .line = reference.line,
                                     .opaque = reference.opaque,
                                     .dtd = reference.dtd,
                                     .entity = entity});
    } else {
        DocumentFile& file = walk.result.files[known->second];
        file.opaque = file.opaque && reference.opaque;
        file.entity = file.entity || entity;
    }
}

void Collect(Walk& walk, const NativePath& path, const LenientDocument& loaded) {
    for (const UndeclaredPrefix& use : loaded.undeclaredPrefixes) {
        walk.result.prefixes.push_back({path, use});
    }
    CollectNames(loaded.document.get(), walk.result.names);
}

void Follow(Walk& walk, const NativePath& path) {
    LenientDocument loaded = LoadLeniently(path);
    std::error_code error;
    if (loaded.identity == decltype(loaded.identity)() &&
        std::filesystem::is_regular_file(ToFilesystem(path), error) &&
        platform::OpensForReading(path.utf8)) {  // Otherwise it is reported as missing.
        Remark(walk, {path, 0, path.utf8, loaded.reason});
    }
    if (loaded.beyondLimits && walk.result.reason.empty()) {
        walk.result.reason = path.utf8 + ": " + loaded.reason;
    }
    if (loaded.document == nullptr || !walk.followed.insert(loaded.identity).second) {
        return;
    }
    Collect(walk, path, loaded);
    walk.levels.push_back({path, ReferencesOf(loaded.document.get())});
}

/// A part of a DTD that cannot be read is reported by whoever needs the DTD.
void FollowDtd(Walk& walk, const NativePath& path) {
    std::string content;
    if (!platform::ReadRegularFile(ToFilesystem(path), kMaxFileBytes, content)) {
        walk.levels.push_back({path, ReferencesOfDtd(content)});
    }
}

void VisitFile(Walk& walk, const Reference& reference, const NativePath& path, const NativePath& referrer) {
    std::error_code error;
    if (reference.outside ||
        (reference.optional && !std::filesystem::is_regular_file(ToFilesystem(path), error))) {
        return;
    }
    if (reference.confined) {
        walk.confined.push_back({path, referrer, reference.line});
    } else if (reference.relative && (reference.follow || reference.graphic)) {
        walk.neighbours.push_back(path);
    }
    if (!ToSystem(path)) {
        Remark(walk, {referrer, reference.line, reference.text,
                      path.utf8 + " is not on a mapped drive; map one with --drive"});
        return;
    }
    List(walk, reference, path, referrer);
    if (reference.dtd && walk.opened.insert(path).second) {
        FollowDtd(walk, path);
    } else if (reference.follow && walk.opened.insert(path).second) {
        Follow(walk, path);
    }
}

void Visit(Walk& walk, const Reference& reference, const NativePath& referrer) {
    const ReferenceTarget target = TargetOf(reference.text, FolderOf(referrer));
    if (!target.remark.empty() && !reference.outside && !reference.optional) {
        Remark(walk, {referrer, reference.line, reference.text, target.remark});
    } else if (!target.url.empty() && walk.listedUrls.insert(target.url).second) {
        walk.result.files.push_back({.key = KeyOf(reference), .path = {}, .url = target.url});
    } else if (!target.path.Empty()) {
        VisitFile(walk, reference, target.path, referrer);
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
        const NativePath referrer = level.file;
        Visit(walk, reference, referrer);
    }
}

/// Why the text must not come from there; empty if it may.
std::string WhyOutside(const ConfinedFile& confined, const NativePath& document,
                       const std::vector<NativePath>& readable) {
    const bool beside = RealPath(FolderOf(RealPath(confined.path))) == RealPath(FolderOf(document));
    if (beside || LiesInOneOf(confined.path, readable)) {
        return {};
    }
    return confined.referrer.utf8 +
           (confined.line > 0 ? ", line " + std::to_string(confined.line) : std::string()) + ": " +
           OutsideRefusal(confined.path);
}

void Confine(Walk& walk, const NativePath& document, const std::vector<NativePath>& allowRead) {
    DocumentFiles& result = walk.result;
    result.readable = allowRead;
    if (const NativePath area = AreaOf(document, walk.neighbours); !area.Empty()) {
        result.readable.push_back(area);
    }
    for (const ConfinedFile& confined : walk.confined) {
        if (result.reason.empty()) {
            result.reason = WhyOutside(confined, document, result.readable);
        }
    }
    result.refused = !result.reason.empty();
}

std::string WhyMisread(const NativePath& path) {
    if (std::string why = WhyUnnameable(path); !why.empty()) {
        return why;
    }
    if (path.utf8.find(':', FolderOf(path).utf8.size()) != std::string::npos) {
        return "the name contains a colon, which the module would read as the end of a drive; rename the "
               "file";
    }
    return ToSystem(path) ? std::string() : "the file is not on a mapped drive; map one with --drive";
}

}  // namespace

DocumentFiles ListDocumentFiles(const NativePath& document, const std::vector<NativePath>& allowRead) {
    Walk walk;
    std::error_code error;
    const NativePath path =
        NormalPath(FromFilesystem(std::filesystem::absolute(ToFilesystem(document), error)));
    walk.result.reason = WhyMisread(path);
    if (!walk.result.reason.empty()) {
        return walk.result;
    }
    LenientDocument loaded = LoadLeniently(path);
    walk.result.reason = loaded.reason;
    if (!loaded.wellFormed) {
        return walk.result;
    }
    walk.result.dita = IsDita(loaded.document.get());
    Collect(walk, path, loaded);
    walk.result.files.push_back({.key = kDocumentKey, .path = path, .url = {}});
    walk.listed.emplace(path, 0);
    walk.opened.insert(path);
    walk.followed.insert(loaded.identity);
    walk.levels.push_back({path, ReferencesOf(loaded.document.get())});
    loaded.document.reset();
    VisitAll(walk);
    Confine(walk, path, allowRead);
    return walk.result;
}

std::vector<NativePath> LocalFiles(const DocumentFiles& files) {
    std::vector<NativePath> local;
    for (const DocumentFile& file : files.files) {
        if (!file.path.Empty()) {
            local.push_back(file.path);
        }
    }
    return local;
}

}  // namespace ventrix::desk
