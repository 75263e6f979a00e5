// The loss report of a publish: how many places of what was to be preserved the sources have, how many
// arrived in the result, and which did not. Strings are UTF-8, paths absolute.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "desk/report/preservation.h"
#include "desk/report/trace.h"

namespace ventrix::desk {

struct ItemCount {
    PreservedItem item;
    std::size_t places = 0;
    std::size_t arrived = 0;
};

/// Places of the sources. If there are several, their groups are equal, and the report cannot say which it
/// is.
struct Candidates {
    std::size_t count = 0;
    std::vector<const SourcePlace*> first;  ///< At most kMostCandidates.

    void Add(const SourcePlace& place);
};

inline constexpr std::size_t kMostCandidates = 20;

struct LostPlace {
    int item = 0;           ///< Index in LossReport::items.
    std::string value;      ///< Of the attribute; of an element its XML, shortened.
    std::size_t count = 1;  ///< How many of the candidates did not arrive.
    std::string reason;     ///< A word, listed in docs/json.md.
    Candidates candidates;
};

/// Where marker text is in the result.
struct ResultSpot {
    int page = 0;  ///< Index in LossReport::pages.
    std::string where;
    std::string anchor;  ///< May be empty.
};

struct RepeatedPlace {
    Candidates candidates;
    std::vector<ResultSpot> spots;
};

struct CopiedPlace {
    ResultSpot spot;
    std::string shown;      ///< What was copied, shortened.
    Candidates candidates;  ///< Empty if the marker text is none of the sources', in any case.
};

struct LossReport {
    LossReport() = default;
    LossReport(LossReport&&) = default;
    LossReport& operator=(LossReport&&) = default;
    LossReport(const LossReport&) = delete;
    LossReport& operator=(const LossReport&) = delete;

    std::string notCounted;  ///< Why nothing could be counted, one line; empty if everything was.
    NativePath document, resultFolder;
    std::string toolkit;                 ///< What transformed the document.
    std::vector<NativePath> pages;       ///< The files of the result, in no order that matters.
    std::vector<NativePath> pageOfFile;  ///< By file: the page that was made from it; may be empty.
    std::vector<ItemCount> items;
    std::vector<LostPlace> lost;  ///< By item, then in the order of the sources.
    std::vector<RepeatedPlace>
        repeated;                      ///< Those with one candidate have all spots, others the further ones.
    std::vector<CopiedPlace> copied;   ///< To attribute values and other places that are not decoded.
    std::vector<CopiedPlace> changed;  ///< Marker text in pages that no source has as it is.
    SourceTrace sources;               ///< Owns the places.
};

/// Sums over the items.
std::size_t PlacesOf(const LossReport& report);
std::size_t LostOf(const LossReport& report);

/// Both traces have used the table of strings. `pages` has for each page of the result its place after the
/// run, and the source that it was made from, which may be empty.
LossReport MakeLossReport(SourceTrace sources, const ResultTrace& result, const StringTable& strings,
                          const PreservedItems& items,
                          const std::vector<std::pair<NativePath, NativePath>>& pages);

/// Why a place did not arrive: a sentence for the word of a LostPlace.
std::string DescribeReason(const std::string& reason);

}  // namespace ventrix::desk
