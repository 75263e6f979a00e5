// The host's answer to "which files does this document refer to", as the pipeline's own list, with one
// file-system test for each file. The list of the last document is kept for the life of the module, so that
// packaging works on what a Validate reported.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "bridge/contract/request.h"
#include "fileset/path_classification.h"

namespace ventrix {

/// State of a referenced file at the time of the scan.
enum class ReferenceKind : std::int32_t {
    kValid = 1,    ///< Can be read, and the host has no changes of its own.
    kBroken = 2,   ///< Can't be opened for reading.
    kUnsaved = 3,  ///< Can be read, but the host holds unsaved changes.
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

/// The paths of the cache, whatever their kind, in its order. The key "graphicsType" tells a graphic; every
/// other key means a document.
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

/// Renews the cache only if it belongs to another document.
void Refresh(std::uint32_t documentId);

}  // namespace ventrix
