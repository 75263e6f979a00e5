#include "desk/report/result_trace.h"

#include <algorithm>

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

void SetUndecoded(Arrival& arrival, const StringTable& strings) {
    const std::string& key = strings[arrival.group];
    const std::size_t entries = key.front() == 'A' ? EntriesOf(std::string_view(key).substr(1)).size() : 1;
    arrival.problem = NotApplied::kNotDecoded;
    arrival.unapplied.clear();
    for (std::size_t i = 0; i < entries; ++i) {
        arrival.unapplied.push_back(static_cast<int>(i));
    }
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
        Arrival arrival;
        arrival.group = group;
        arrival.page = page;
        SetUndecoded(arrival, strings);
        trace.arrivals.push_back(std::move(arrival));
    }
}

}  // namespace

ResultTrace TraceResult(const std::vector<ResultFile>& files, const Preservation& preservation,
                        const StringTable& strings) {
    ResultTrace trace;
    WellFormedElements wellFormed;
    for (const ResultFile& file : files) {
        trace.pages.push_back(file.name);
        if (file.decoded) {
            const LenientDocument loaded = LoadLeniently(file.copy);
            if (loaded.document != nullptr && loaded.wellFormed) {
                PageWalk(preservation.tagsAttribute, strings, wellFormed, trace)
                    .Run(*xmlDocGetRootElement(loaded.document.get()));
                continue;
            }
        }
        ReadBytes(file, strings, trace);
    }
    return trace;
}

void MarkUndecoded(const NativePath& name, const StringTable& strings, ResultTrace& trace) {
    const auto page = std::ranges::find(trace.pages, name);
    const auto index = static_cast<int>(page - trace.pages.begin());
    for (Arrival& arrival : trace.arrivals) {
        if (arrival.page == index) {
            SetUndecoded(arrival, strings);
        }
    }
}

}  // namespace ventrix::desk
