#include "pipeline/reference_scan.h"

#include "bridge/host/operations.h"
#include "bridge/host/values.h"
#include "fileset/file_operations.h"

namespace ventrix {

ReferenceCache referenceCache;

namespace {

std::string TextOf(const Q_Value& value) {
    return value.text != nullptr ? value.text : "";
}

/// The values of a file, or null for a value of another form. A file is a nested list of at least three
/// values: key, path and the host's flag for unsaved changes.
const Q_Value* FieldsOfFile(const Q_Value& value) {
    if (value.tag != kListTag || value.list == nullptr || value.list->items == nullptr ||
        value.list->count <= 2) {
        return nullptr;
    }
    const Q_Value* fields = value.list->items;
    return fields[0].tag == kTextTag && fields[1].tag == kTextTag ? fields : nullptr;
}

ReferenceKind KindOf(const Path& path, const Q_Value& unsaved) {
    if (!FileReadable(path)) {
        return ReferenceKind::kBroken;
    }
    return unsaved.tag == kIntegerTag && unsaved.number != 0 ? ReferenceKind::kUnsaved
                                                             : ReferenceKind::kValid;
}

std::int32_t BitOf(ReferenceKind kind) {
    switch (kind) {
        case ReferenceKind::kBroken:
            return kValidateBroken;
        case ReferenceKind::kUnsaved:
            return kValidateUnsaved;
        default:
            return 0;
    }
}

std::int32_t AddReference(const Q_Value& value, std::list<ReferenceEntry>& list) {
    const Q_Value* fields = FieldsOfFile(value);
    if (fields == nullptr) {
        return 0;
    }
    Path path = TextOf(fields[1]);
    if (IsHttpUrl(path)) {
        return 0;
    }
    const ReferenceKind kind = KindOf(path, fields[2]);
    list.push_back({TextOf(fields[0]), kind, std::move(path)});
    return BitOf(kind);
}

}  // namespace

ReferencePaths CachedPaths() {
    ReferencePaths paths;
    for (const ReferenceEntry& entry : referenceCache.list) {
        (entry.key == "graphicsType" ? paths.graphics : paths.documents).push_back(entry.path);
    }
    return paths;
}

std::int32_t ScanReferences(std::uint32_t documentId, std::list<ReferenceEntry>& list) {
    Q_ValueList files = Q_ApiListDocumentFiles(documentId, 16, 0);
    std::int32_t found = 0;
    for (std::uint32_t i = 0; files.items != nullptr && i < files.count; ++i) {
        found |= AddReference(files.items[i], list);
    }
    Q_ApiFreeValueList(&files);
    return found;
}

std::int32_t RenewReferences(std::uint32_t documentId) {
    // The host may deliver another request during the scan. That request must not see a half-filled cache or
    // add its files to this list.
    std::list<ReferenceEntry> list;
    const std::int32_t found = ScanReferences(documentId, list);
    referenceCache.list = std::move(list);
    referenceCache.documentId = documentId;
    return found;
}

void Refresh(std::uint32_t documentId) {
    if (documentId != referenceCache.documentId) {
        RenewReferences(documentId);
    }
}

}  // namespace ventrix
