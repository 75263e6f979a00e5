#include "desk/report/loss_report.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <numeric>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "desk/report/marker_pieces.h"
#include "desk/report/matching.h"

namespace ventrix::desk {
namespace {

struct Reason {
    const char* word;
    const char* sentence;
};

constexpr int kAnyFile = -2;  ///< No file and no unknown file.

constexpr Reason kAbsent{"absent", "its marker text is not in the result"};
constexpr Reason kCopied{"only-copied",
                         "its marker text is only in places that are not decoded, such as attribute values"};
constexpr Reason kChanged{"changed", "the transformation changed the letters of its marker text"};

constexpr Reason kUncarriedReasons[] = {
    {"no-text", "the element has no text that could carry it"},
    {"overridden", "each text in the element has the value of a nearer element"},
    {"stands-alone", "the element is not in running text, so it was left to the transformation"},
    {"in-element", "it belongs to the text of a preserved element, where it is not applied"},
    {"not-encoded", "the text is in a part of the file that is not encoded"},
};

constexpr Reason kUnappliedReasons[] = {
    {"", ""},
    {"joined", "its text was joined with another, whose value the HTML element has"},
    {"misplaced", "text came before its marker text, or the HTML element that it is for is not around it"},
    {"broken", "the XML of the element is not well-formed by itself"},
    {"not-decoded", "its page was not decoded"},
};

template <typename Item>
const Item& At(const std::vector<Item>& items, int index) {
    return items[static_cast<std::size_t>(index)];
}

std::string Lowered(const std::string& text) {
    std::string lowered = text;
    std::ranges::transform(lowered, lowered.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lowered;
}

bool IsApplied(const Arrival& arrival, int entry) {
    return std::ranges::find(arrival.unapplied, entry) == arrival.unapplied.end();
}

/// Whether anything of the group was applied.
bool IsApplied(const Arrival& arrival, const Carrier& carrier) {
    return std::ranges::any_of(carrier.items,
                               [&](const CarriedItem& carried) { return IsApplied(arrival, carried.entry); });
}

/// Places of the sources by what they carry. Those in the file that a page was made from are more likely.
template <typename Key>
class PlacesByFile {
  public:
    void Add(const Key& key, const SourcePlace& place) {
        places_[{key, place.file}].Add(place);
        places_[{key, kAnyFile}].Add(place);
    }

    Candidates Of(const Key& key, int file) {
        const auto near = places_.find({key, file});
        return near == places_.end() ? places_[{key, kAnyFile}] : near->second;
    }

  private:
    std::map<std::pair<Key, int>, Candidates> places_;
};

class ReportMaker {
  public:
    ReportMaker(LossReport& report, const ResultTrace& result, const StringTable& strings)
        : report_(report), sources_(report.sources), result_(result), strings_(strings) {
        for (const MarkerCopy& copy : result.copies) {
            copiedGroups_.insert(copy.group);
        }
        for (const MarkerCopy& change : result.changed) {
            changedKeys_.insert(Lowered(change.key));
        }
    }

    void AddUncarried() {
        for (const UncarriedPlace& place : sources_.uncarried) {
            ItemCount& count = CountOf(place.item);
            ++count.places;
            LostPlace lost{place.item,
                           place.value,
                           1,
                           kUncarriedReasons[static_cast<std::size_t>(place.reason)].word,
                           {}};
            lost.candidates.Add(place.place);
            report_.lost.push_back(std::move(lost));
        }
    }

    void Add(const Match& match) {
        if (!match.repeatsOnly) {
            AddCounts(match);
        }
        AddRepeats(match);
    }

    void AddCopies(const std::vector<int>& sourceOfPage) {
        PlacesByFile<int> places;
        for (const Carrier& carrier : sources_.carriers) {
            if (copiedGroups_.contains(carrier.group)) {
                places.Add(carrier.group, carrier.place);
            }
        }
        for (const MarkerCopy& copy : result_.copies) {
            report_.copied.push_back(
                {SpotOf(copy), Shown(copy), places.Of(copy.group, At(sourceOfPage, copy.page))});
        }
    }

    /// Groups in other case may be one of those of the sources.
    void AddChanges(const std::vector<int>& sourceOfPage) {
        PlacesByFile<std::string> places;
        for (const Carrier& carrier : sources_.carriers) {
            if (IsChanged(carrier.group)) {
                places.Add(Lowered(strings_[carrier.group]), carrier.place);
            }
        }
        for (const MarkerCopy& change : result_.changed) {
            report_.changed.push_back({SpotOf(change), Shown(change),
                                       places.Of(Lowered(change.key), At(sourceOfPage, change.page))});
        }
    }

  private:
    using ItemAndEntry = std::pair<int, int>;

    ItemCount& CountOf(int item) { return report_.items[static_cast<std::size_t>(item)]; }
    const Carrier& CarrierAt(int index) const { return At(sources_.carriers, index); }
    const Arrival& ArrivalAt(int index) const { return At(result_.arrivals, index); }

    void AddCounts(const Match& match) {
        // Equal groups mostly carry the same items, but the source path of a title and of another element
        // are two.
        std::map<ItemAndEntry, std::vector<int>> carriersOf;
        for (const int carrier : match.carriers) {
            for (const CarriedItem& carried : CarrierAt(carrier).items) {
                carriersOf[{carried.item, carried.entry}].push_back(carrier);
            }
        }
        for (auto& [key, carriers] : carriersOf) {
            AddCount(match, key, std::move(carriers));
        }
    }

    /// A carrier that has an item several times, as an element with elements of its name in it, is in the
    /// list as often.
    void AddCount(const Match& match, ItemAndEntry key, std::vector<int> carriers) {
        const auto [item, entry] = key;
        const std::size_t places = carriers.size();
        carriers.erase(std::unique(carriers.begin(), carriers.end()), carriers.end());
        const std::size_t perCarrier = places / carriers.size();
        const auto applied = static_cast<std::size_t>(std::ranges::count_if(
            match.arrivals, [&, entry = entry](int index) { return IsApplied(ArrivalAt(index), entry); }));
        const std::size_t arrived = std::min(applied, carriers.size());
        CountOf(item).places += places;
        CountOf(item).arrived += arrived * perCarrier;
        if (arrived == carriers.size()) {
            return;
        }
        LostPlace lost{item,
                       ValueOf(CarrierAt(carriers.front()), item, entry),
                       perCarrier,
                       ReasonFor(match, carriers, entry),
                       {}};
        AddLost(std::move(lost), carriers, arrived);
    }

    /// If none of the carriers arrived, each of them is known.
    void AddLost(LostPlace lost, const std::vector<int>& carriers, std::size_t arrived) {
        if (arrived > 0) {
            lost.count *= carriers.size() - arrived;
            for (const int carrier : carriers) {
                lost.candidates.Add(CarrierAt(carrier).place);
            }
            report_.lost.push_back(std::move(lost));
            return;
        }
        for (const int carrier : carriers) {
            lost.candidates = {};
            lost.candidates.Add(CarrierAt(carrier).place);
            report_.lost.push_back(lost);
        }
    }

    std::string ReasonFor(const Match& match, const std::vector<int>& carriers, int entry) const {
        const auto unapplied = std::ranges::find_if(
            match.arrivals, [&](int index) { return !IsApplied(ArrivalAt(index), entry); });
        if (unapplied != match.arrivals.end()) {
            return kUnappliedReasons[static_cast<std::size_t>(ArrivalAt(*unapplied).problem)].word;
        }
        const int group = CarrierAt(carriers.front()).group;
        if (match.arrivals.empty() && copiedGroups_.contains(group)) {
            return kCopied.word;
        }
        return IsChanged(group) ? kChanged.word : kAbsent.word;
    }

    bool IsChanged(int group) const {
        return !changedKeys_.empty() && changedKeys_.contains(Lowered(strings_[group]));
    }

    std::string ValueOf(const Carrier& carrier, int item, int entry) const {
        const std::string_view content = std::string_view(strings_[carrier.group]).substr(1);
        switch (report_.items[static_cast<std::size_t>(item)].item.kind) {
            case ItemKind::kElement:
                return Shortened(ElementXml(content));
            case ItemKind::kScopedAttribute:
                return std::string(FieldsOf(content).value);
            default:
                break;
        }
        if (strings_[carrier.group].front() == 'E') {
            return Shortened(ElementXml(content));
        }
        const std::vector<MarkerEntry> entries = EntriesOf(content);
        return std::string(entries[static_cast<std::size_t>(entry)].value);
    }

    void AddRepeats(const Match& match) {
        const Carrier& first = CarrierAt(match.carriers.front());
        RepeatedPlace repeated;
        for (const int index : match.arrivals) {
            if (const Arrival& arrival = ArrivalAt(index); IsApplied(arrival, first)) {
                repeated.spots.push_back({arrival.page, '<' + arrival.element + '>', arrival.anchor});
            }
        }
        const std::size_t expected = match.repeatsOnly ? 0 : match.carriers.size();
        if (repeated.spots.size() <= expected) {
            return;
        }
        for (const int carrier : match.carriers) {
            repeated.candidates.Add(CarrierAt(carrier).place);
        }
        report_.repeated.push_back(std::move(repeated));
    }

    static ResultSpot SpotOf(const MarkerCopy& copy) { return {copy.page, copy.where, copy.anchor}; }

    static std::string Shown(const MarkerCopy& copy) {
        return Shortened(copy.key.front() == 'E' ? ElementXml(copy.key.substr(1)) : copy.key.substr(1));
    }

    LossReport& report_;
    const SourceTrace& sources_;
    const ResultTrace& result_;
    const StringTable& strings_;
    std::unordered_set<int> copiedGroups_;
    std::unordered_set<std::string> changedKeys_;  ///< In lower case.
};

/// The files of the pages, by page, and the pages of the files.
std::vector<int> SourcesOfPages(const std::vector<std::pair<NativePath, NativePath>>& pages,
                                LossReport& report) {
    std::map<NativePath, int> indices;
    for (const NativePath& file : report.sources.files) {
        indices.emplace(file, static_cast<int>(indices.size()));
    }
    report.pageOfFile.resize(report.sources.files.size());
    std::vector<int> sources;
    for (const auto& [page, source] : pages) {
        report.pages.push_back(page);
        const auto known = indices.find(source);
        sources.push_back(known == indices.end() ? kUnknownString : known->second);
        if (known != indices.end()) {
            NativePath& first = report.pageOfFile[static_cast<std::size_t>(known->second)];
            first = first.Empty() ? page : first;
        }
    }
    return sources;
}

auto OrderOf(const LostPlace& lost) {
    const SourcePlace& place = *lost.candidates.first.front();
    return std::tuple(lost.item, place.file, place.line);
}

}  // namespace

void Candidates::Add(const SourcePlace& place) {
    ++count;
    if (first.size() < kMostCandidates) {
        first.push_back(&place);
    }
}

std::size_t PlacesOf(const LossReport& report) {
    return std::accumulate(report.items.begin(), report.items.end(), std::size_t{0},
                           [](std::size_t sum, const ItemCount& count) { return sum + count.places; });
}

std::size_t LostOf(const LossReport& report) {
    return std::accumulate(
        report.items.begin(), report.items.end(), std::size_t{0},
        [](std::size_t sum, const ItemCount& count) { return sum + count.places - count.arrived; });
}

LossReport MakeLossReport(SourceTrace sources, const ResultTrace& result, const StringTable& strings,
                          const PreservedItems& items,
                          const std::vector<std::pair<NativePath, NativePath>>& pages) {
    LossReport report;
    report.sources = std::move(sources);
    for (const PreservedItem& item : items.All()) {
        report.items.push_back({item, 0, 0});
    }
    const std::vector<int> sourceOfPage = SourcesOfPages(pages, report);
    ReportMaker maker(report, result, strings);
    maker.AddUncarried();
    for (const Match& match : MatchGroups(report.sources, result, sourceOfPage)) {
        maker.Add(match);
    }
    maker.AddCopies(sourceOfPage);
    maker.AddChanges(sourceOfPage);
    std::ranges::stable_sort(report.lost,
                             [](const LostPlace& a, const LostPlace& b) { return OrderOf(a) < OrderOf(b); });
    return report;
}

std::string DescribeReason(const std::string& reason) {
    for (const Reason& known : {kAbsent, kCopied, kChanged}) {
        if (reason == known.word) {
            return known.sentence;
        }
    }
    for (const Reason& known : kUncarriedReasons) {
        if (reason == known.word) {
            return known.sentence;
        }
    }
    for (const Reason& known : kUnappliedReasons) {
        if (reason == known.word) {
            return known.sentence;
        }
    }
    return {};
}

}  // namespace ventrix::desk
