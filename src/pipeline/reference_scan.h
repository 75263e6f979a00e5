// The files that a document refers to, as the host lists them, each with the result of one file-system test.
// The list of the last document is kept for the life of the module, so that packaging works on what a
// Validate reported. Strings are UTF-8, paths in system notation.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "bridge/contract/request.h"
#include "fileset/path_classification.h"

namespace ventrix {

/// State of a referenced file at the time of the scan.
enum class ReferenceKind : std::int32_t {
    kValid = 1,    ///< Can be read, and the host has no unsaved changes of it.
    kBroken = 2,   ///< Cannot be opened for reading.
    kUnsaved = 3,  ///< Can be read, but the host has unsaved changes of it.
};

struct ReferenceEntry {
    std::string key;  ///< The host's word for the type of the file.
    ReferenceKind kind;
    Path path;  ///< As the host names it.
};

/// The references of one document, in the host's order.
struct ReferenceCache {
    std::uint32_t documentId = 0;  ///< 0 until the first scan; no document has this id.
    std::list<ReferenceEntry> list;
};

/// The one cache of the process.
extern ReferenceCache referenceCache;

/// The paths of the cache, of every kind, in its order. The key "graphicsType" marks a graphic, every other
/// key a document.
struct ReferencePaths {
    FileList documents;
    FileList graphics;
};
ReferencePaths CachedPaths();

/// Asks the host and appends its files to the list; web addresses and values of another shape are left out.
/// Returns the sum of kValidateBroken and kValidateUnsaved that applies. A host that gives no answer adds
/// nothing.
std::int32_t ScanReferences(std::uint32_t documentId, std::list<ReferenceEntry>& list);

/// Renews the cache for this document whatever it holds. Returns what ScanReferences does.
std::int32_t RenewReferences(std::uint32_t documentId);

/// RenewReferences, but only if the cache belongs to another document.
void Refresh(std::uint32_t documentId);

}  // namespace ventrix
