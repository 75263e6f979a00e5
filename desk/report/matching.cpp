#include "desk/report/matching.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

namespace ventrix::desk {
namespace {

/// A key by which carriers and arrivals are compared; kUnknownString is equal to none.
constexpr int kEveryKey = 0;

/// Matches the groups of one content.
class GroupMatching {
  public:
    GroupMatching(const SourceTrace& sources, const ResultTrace& result, const std::vector<int>& sourceOfPage,
                  const std::vector<int>& carriers)
        : sources_(sources), result_(result), sourceOfPage_(sourceOfPage) {
        std::map<std::pair<int, int>, std::size_t> known;
        for (const int carrier : carriers) {
            const auto [place, isNew] =
                known.try_emplace({FileOf(carrier), WordsOf(carrier)}, matches_.size());
            if (isNew) {
                matches_.emplace_back();
            }
            matches_[place->second].carriers.push_back(carrier);
        }
        alike_ = std::move(known);
    }

    /// From the strictest comparison to the weakest. What is left after a comparison goes to the next.
    std::vector<Match> Run(const std::vector<int>& arrivals) {
        TakeAlike(arrivals);
        const auto words = [this](int carrier) { return WordsOf(carrier); };
        Compare(
            words, [this](int arrival) { return At(result_.arrivals, arrival).context; }, true);
        const auto file = [this](int carrier) { return FileOf(carrier); };
        Compare(
            file, [this](int arrival) { return SourceOf(arrival); }, false);
        const auto every = [](int) { return kEveryKey; };
        Compare(every, every, true);
        return std::move(matches_);
    }

  private:
    using KeyOf = std::function<int(int)>;

    template <typename Item>
    static const Item& At(const std::vector<Item>& items, int index) {
        return items[static_cast<std::size_t>(index)];
    }
    int FileOf(int carrier) const { return At(sources_.carriers, carrier).place.file; }
    int WordsOf(int carrier) const { return At(sources_.carriers, carrier).context; }
    int SourceOf(int arrival) const { return At(sourceOfPage_, At(result_.arrivals, arrival).page); }

    /// The same file and the same words.
    void TakeAlike(const std::vector<int>& arrivals) {
        for (const int arrival : arrivals) {
            const auto found = alike_.find({SourceOf(arrival), At(result_.arrivals, arrival).context});
            (found == alike_.end() ? left_ : matches_[found->second].arrivals).push_back(arrival);
        }
    }

    void Compare(const KeyOf& keyOfCarrier, const KeyOf& keyOfArrival, bool takesRepeats) {
        std::map<int, std::vector<int>> waiting;
        for (const int arrival : std::exchange(left_, {})) {
            const int key = keyOfArrival(arrival);
            (key == kUnknownString ? left_ : waiting[key]).push_back(arrival);
        }
        if (waiting.empty()) {
            return;
        }
        std::map<int, std::vector<std::size_t>> byKey;
        for (std::size_t i = 0; i < matches_.size(); ++i) {
            if (!matches_[i].repeatsOnly) {
                byKey[keyOfCarrier(matches_[i].carriers.front())].push_back(i);
            }
        }
        for (auto& [key, arrivals] : waiting) {
            std::vector<int> rest = byKey.contains(key) ? Give(byKey[key], std::move(arrivals)) : arrivals;
            if (takesRepeats && byKey.contains(key) && !rest.empty()) {
                AddRepeats(byKey[key], std::move(rest));
            } else {
                std::ranges::move(rest, std::back_inserter(left_));
            }
        }
        std::erase_if(matches_, [](const Match& match) { return match.carriers.empty(); });
    }

    static std::size_t Missing(const Match& match) {
        return match.carriers.size() - std::min(match.carriers.size(), match.arrivals.size());
    }

    /// Gives arrivals to the matches that lack some, and returns the rest. If there are too few for all, the
    /// matches become one, since any of them may be the one that lacks its own.
    std::vector<int> Give(const std::vector<std::size_t>& indices, std::vector<int> arrivals) {
        std::vector<std::size_t> lacking;
        std::size_t missing = 0;
        for (const std::size_t index : indices) {
            if (const std::size_t lacks = Missing(matches_[index]); lacks > 0) {
                lacking.push_back(index);
                missing += lacks;
            }
        }
        if (missing > arrivals.size()) {
            Match& whole = matches_[lacking.front()];
            for (std::size_t i = 1; i < lacking.size(); ++i) {
                Match part = std::exchange(matches_[lacking[i]], {});
                std::ranges::move(part.carriers, std::back_inserter(whole.carriers));
                std::ranges::move(part.arrivals, std::back_inserter(whole.arrivals));
            }
            std::ranges::move(arrivals, std::back_inserter(whole.arrivals));
            return {};
        }
        auto next = arrivals.begin();
        for (const std::size_t index : lacking) {
            Match& match = matches_[index];
            const auto end = next + static_cast<std::ptrdiff_t>(Missing(match));
            match.arrivals.insert(match.arrivals.end(), next, end);
            next = end;
        }
        arrivals.erase(arrivals.begin(), next);
        return arrivals;
    }

    void AddRepeats(const std::vector<std::size_t>& indices, std::vector<int> arrivals) {
        if (indices.size() == 1) {
            std::ranges::move(arrivals, std::back_inserter(matches_[indices.front()].arrivals));
            return;
        }
        Match repeats{.carriers = {}, .arrivals = std::move(arrivals), .repeatsOnly = true};
        for (const std::size_t index : indices) {
            std::ranges::copy(matches_[index].carriers, std::back_inserter(repeats.carriers));
        }
        matches_.push_back(std::move(repeats));
    }

    const SourceTrace& sources_;
    const ResultTrace& result_;
    const std::vector<int>& sourceOfPage_;
    std::map<std::pair<int, int>, std::size_t>
        alike_;  ///< By file and words: a match, before the first Compare.
    std::vector<Match> matches_;
    std::vector<int> left_;  ///< Arrivals that belong to no match yet.
};

}  // namespace

std::vector<Match> MatchGroups(const SourceTrace& sources, const ResultTrace& result,
                               const std::vector<int>& sourceOfPage) {
    std::vector<std::vector<int>> carriersOf, arrivalsOf;
    std::unordered_map<int, std::size_t> indexOf;
    for (std::size_t i = 0; i < sources.carriers.size(); ++i) {
        const auto [known, isNew] = indexOf.try_emplace(sources.carriers[i].group, carriersOf.size());
        if (isNew) {
            carriersOf.emplace_back();
        }
        carriersOf[known->second].push_back(static_cast<int>(i));
    }
    arrivalsOf.resize(carriersOf.size());
    for (std::size_t i = 0; i < result.arrivals.size(); ++i) {
        if (const auto known = indexOf.find(result.arrivals[i].group); known != indexOf.end()) {
            arrivalsOf[known->second].push_back(static_cast<int>(i));
        }
    }
    std::vector<Match> matches;
    for (std::size_t i = 0; i < carriersOf.size(); ++i) {
        if (carriersOf[i].size() == 1) {
            matches.push_back({std::move(carriersOf[i]), std::move(arrivalsOf[i]), false});
        } else {
            GroupMatching matching(sources, result, sourceOfPage, carriersOf[i]);
            std::ranges::move(matching.Run(arrivalsOf[i]), std::back_inserter(matches));
        }
    }
    return matches;
}

}  // namespace ventrix::desk
