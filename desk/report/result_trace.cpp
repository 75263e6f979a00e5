#include "desk/report/result_trace.h"

#include "desk/report/marker_pieces.h"
#include "desk/report/page_walk.h"
#include "desk/xml/lenient_load.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

/// A file that is not XML shows marker text as it is written there, or escaped as in XML.
int FindGroup(const MarkerPiece& piece, const StringTable& strings) {
    const int group = strings.Find(GroupKey(piece.kind, piece.content));
    return group != kUnknownString ? group : strings.Find(GroupKey(piece.kind, ElementXml(piece.content)));
}

/// The groups of a file whose text is not decoded.
void ReadBytes(const ResultFile& file, const StringTable& strings, ResultTrace& trace) {
    std::string content;
    if (platform::ReadWholeFile(file.copy.utf8, content) != platform::kErrorNone) {
        return;
    }
    const int page = static_cast<int>(trace.pages.size()) - 1;
    for (const MarkerPiece& piece : SplitAtGroups(content)) {
        if (piece.kind == PieceKind::kPlain) {
            continue;
        }
        const int group = FindGroup(piece, strings);
        if (!file.isPage || group == kUnknownString) {
            trace.copies.push_back({group, page, "file", GroupKey(piece.kind, piece.content), {}});
            continue;
        }
        Arrival arrival{.group = group,
                        .context = kUnknownString,
                        .page = page,
                        .element = {},
                        .anchor = {},
                        .problem = NotApplied::kNotDecoded,
                        .unapplied = {}};
        const std::size_t entries =
            piece.kind == PieceKind::kAttributes ? EntriesOf(piece.content).size() : 1;
        for (std::size_t i = 0; i < entries; ++i) {
            arrival.unapplied.push_back(static_cast<int>(i));
        }
        trace.arrivals.push_back(std::move(arrival));
    }
}

}  // namespace

ResultTrace TraceResult(const std::vector<ResultFile>& files, const Preservation& preservation,
                        const StringTable& strings) {
    ResultTrace trace;
    for (const ResultFile& file : files) {
        trace.pages.push_back(file.name);
        if (file.decoded) {
            const LenientDocument loaded = LoadLeniently(file.copy);
            if (loaded.document != nullptr && loaded.wellFormed) {
                PageWalk(preservation.tagsAttribute, strings, trace)
                    .Run(*xmlDocGetRootElement(loaded.document.get()));
                continue;
            }
        }
        ReadBytes(file, strings, trace);
    }
    return trace;
}

}  // namespace ventrix::desk
