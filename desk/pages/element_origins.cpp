#include "desk/pages/element_origins.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

#include "desk/xml/qualified_names.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kMostCompared = 50;  ///< Candidates whose words are compared if none has the same ones.

/// The page's elements with one XPath that belong to one topic, by their positions.
using Group = std::vector<std::size_t>;

/// The words of an element's own text nodes.
struct Words {
    std::vector<std::string> pieces;  ///< Those of each text node, with single spaces.
    std::string all;                  ///< With a space between the pieces.
};

/// An element of a source that elements of the page can come from.
struct Candidate {
    Occurrence first;
    const NativePath* topic;                      ///< That it occurs in.
    std::vector<const xmlNode*> references = {};  ///< Of each occurrence in the topic, in order.
    std::vector<std::size_t> arrivals = {};       ///< The page's elements that come from it.
};

/// All candidates for a group.
struct Candidates {
    std::vector<Candidate> list;
    std::vector<std::size_t> order;  ///< The candidate of each occurrence in the group's topic.
    bool isComplete = true;
    bool mayBeReplaced = false;  ///< Other files push content here, so that only equal words are proof.
    std::vector<Words> words;    ///< Of each candidate, once they are needed.
    std::unordered_map<std::string_view, std::vector<std::size_t>> byWords;
};

Words WordsOf(const xmlNode* element) {
    Words words;
    for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
        std::string piece = child->type == XML_TEXT_NODE ? Collapsed(View(child->content)) : std::string();
        if (!piece.empty()) {
            words.all += (words.all.empty() ? "" : " ") + piece;
            words.pieces.push_back(std::move(piece));
        }
    }
    return words;
}

bool ContainsInOrder(std::string_view text, const std::vector<std::string>& pieces) {
    return std::ranges::all_of(pieces, [&text](const std::string& piece) {
        const std::size_t at = text.find(piece);
        text.remove_prefix(at == std::string_view::npos ? 0 : at + piece.size());
        return at != std::string_view::npos;
    });
}

/// A transformation may add a number or the text of a key, or leave out a part: less than there was.
bool AreSimilar(const Words& onPage, const Words& inSource) {
    const std::size_t shorter = std::min(onPage.all.size(), inSource.all.size());
    const std::size_t longer = std::max(onPage.all.size(), inSource.all.size());
    return shorter > 0 && 2 * shorter >= longer &&
           (ContainsInOrder(onPage.all, inSource.pieces) || ContainsInOrder(inSource.all, onPage.pieces));
}

bool HasValue(const xmlNode* node, const std::string& name, const std::string& value) {
    for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
        for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
            if (QualifiedName(*attribute) == name) {
                return ValueOf(*attribute) == value;
            }
        }
    }
    return false;
}

bool HasAttributes(const xmlNode* node, const TaggedElement& element) {
    return std::ranges::all_of(element.attributes, [node](const auto& attribute) {
        return HasValue(node, attribute.first, attribute.second);
    });
}

bool IsLink(const xmlNode* node) {
    while (node != nullptr && node->type == XML_ELEMENT_NODE && View(node->name) != "a") {
        node = node->parent;
    }
    return node != nullptr && node->type == XML_ELEMENT_NODE;
}

bool IsTitle(const std::string& xpath) {
    const std::string_view step = std::string_view(xpath).substr(xpath.rfind('/') + 1);
    return step.substr(0, step.find('[')) == "title";
}

/// `mainTopic` is the page's, whose text a topic inside of it may be followed by.
Candidates CandidatesFor(const std::string& xpath, const NativePath& topic, const NativePath& mainTopic,
                         SourcePlaces& places) {
    Candidates candidates;
    std::map<const xmlNode*, std::size_t> known;
    const auto add = [&](const NativePath& file) {
        for (const Occurrence& found : places.OccurrencesIn(file, xpath)) {
            const auto [index, isNew] = known.try_emplace(found.element, candidates.list.size());
            if (isNew) {
                candidates.list.push_back({.first = found, .topic = &file});
            }
            Candidate& candidate = candidates.list[index->second];
            if (candidate.topic == &file) {
                candidate.references.push_back(found.reference);
            }
            if (&file == &topic) {
                candidates.order.push_back(index->second);
            }
        }
        candidates.isComplete = candidates.isComplete && places.IsComplete(file);
        candidates.mayBeReplaced = candidates.mayBeReplaced || places.IsPushTarget(file);
    };
    add(topic);
    if (!(topic == mainTopic)) {
        add(mainTopic);
    }
    return candidates;
}

void ReadWords(Candidates& candidates) {
    if (!candidates.words.empty()) {
        return;
    }
    for (const Candidate& candidate : candidates.list) {
        candidates.words.push_back(WordsOf(candidate.first.element));
    }
    for (std::size_t i = 0; i < candidates.words.size(); ++i) {
        candidates.byWords[candidates.words[i].all].push_back(i);
    }
}

/// The candidates with the same words, else those with similar ones.
std::vector<std::size_t> WithWords(const Words& words, Candidates& candidates) {
    ReadWords(candidates);
    const auto equal = candidates.byWords.find(words.all);
    if (equal != candidates.byWords.end()) {
        return equal->second;
    }
    std::vector<std::size_t> similar;
    if (candidates.mayBeReplaced) {
        return similar;
    }
    for (std::size_t i = 0; i < candidates.list.size() && candidates.list.size() <= kMostCompared; ++i) {
        if (AreSimilar(words, candidates.words[i])) {
            similar.push_back(i);
        }
    }
    return similar;
}

/// The candidate that an element comes from, which is the group's `position`th of `size`. Null if there is
/// none, or if several fit.
Candidate* Choose(const TaggedElement& element, std::size_t position, std::size_t size,
                  Candidates& candidates) {
    const bool isClear = candidates.list.size() == 1 && candidates.isComplete && !candidates.mayBeReplaced &&
                         size <= candidates.order.size();
    std::vector<std::size_t> fitting =
        isClear ? std::vector<std::size_t>{0} : WithWords(WordsOf(element.node), candidates);
    std::erase_if(fitting,
                  [&](std::size_t i) { return !HasAttributes(candidates.list[i].first.element, element); });
    // Those of the group's topic come first.
    const NativePath* const topic = fitting.empty() ? nullptr : candidates.list[fitting.front()].topic;
    std::erase_if(fitting, [&](std::size_t i) { return candidates.list[i].topic != topic; });
    if (fitting.size() > 1 && !candidates.mayBeReplaced && size == candidates.order.size()) {
        const std::size_t inOrder = candidates.order[position];
        fitting = std::ranges::find(fitting, inOrder) == fitting.end() ? std::vector<std::size_t>{}
                                                                       : std::vector<std::size_t>{inOrder};
    }
    return fitting.size() == 1 ? &candidates.list[fitting.front()] : nullptr;
}

/// The reference that the arrival comes through; null if it comes through none, or if that is not certain.
const xmlNode* ReferenceOf(const Candidate& candidate, std::size_t arrival, bool isComplete) {
    const auto& references = candidate.references;
    if (references.size() == candidate.arrivals.size()) {
        return references[arrival];
    }
    const bool areSame =
        std::ranges::count(references, references.front()) == static_cast<std::ptrdiff_t>(references.size());
    return areSame && (isComplete || candidate.arrivals.size() < references.size()) ? references.front()
                                                                                    : nullptr;
}

/// The origins of a page's elements, while they are looked for.
struct Search {
    const std::vector<TaggedElement>& elements;
    const NativePath& mainTopic;
    SourcePlaces& places;
    std::vector<NativePath> files;  ///< That the elements name, or that are the only possible ones.
    std::vector<ElementOrigin> origins;
};

/// The groups of a topic by XPath.
using Groups = std::unordered_map<std::string_view, Group>;

void Decide(Search& search, const NativePath& topic, const Group& group) {
    const std::string& xpath = search.elements[group.front()].xpath;
    Candidates candidates = CandidatesFor(xpath, topic, search.mainTopic, search.places);
    for (std::size_t i = 0; i < group.size(); ++i) {
        const NativePath& file = search.files[group[i]];
        Candidate* chosen = nullptr;
        if (file.Empty()) {
            chosen = Choose(search.elements[group[i]], i, group.size(), candidates);
        } else {
            const auto inFile = std::ranges::find_if(candidates.list, [&file](const Candidate& candidate) {
                return *candidate.first.file == file;
            });
            chosen = inFile == candidates.list.end() ? nullptr : &*inFile;
        }
        if (chosen != nullptr) {
            chosen->arrivals.push_back(group[i]);
        }
    }
    for (const Candidate& candidate : candidates.list) {
        for (std::size_t i = 0; i < candidate.arrivals.size(); ++i) {
            ElementOrigin& origin = search.origins[candidate.arrivals[i]];
            origin.place = SourcePlaces::PlaceOf(*candidate.first.file, candidate.first.element);
            const xmlNode* const reference = ReferenceOf(candidate, i, candidates.isComplete);
            if (reference != nullptr) {
                origin.reusedBy = SourcePlaces::PlaceOf(*candidate.topic, reference);
            }
        }
    }
}

/// Whether the element is the title of another topic that the page contains, not of a link or of something
/// that the current topic reuses.
bool BeginsTopic(const TaggedElement& element, const NativePath& file, const NativePath& current,
                 SourcePlaces& places) {
    if (file.Empty() || file == current || !IsTitle(element.xpath) || IsLink(element.node)) {
        return false;
    }
    const std::vector<Occurrence> found = places.OccurrencesIn(current, element.xpath);
    return std::ranges::none_of(found,
                                [&file](const Occurrence& occurrence) { return *occurrence.file == file; });
}

}  // namespace

std::vector<ElementOrigin> OriginsOf(const std::vector<TaggedElement>& elements, const NativePath& topic,
                                     SourcePlaces& places) {
    Search search{elements, topic, places, {}, {}};
    search.files.reserve(elements.size());
    search.origins.reserve(elements.size());
    std::map<NativePath, Groups> topics;
    auto current = topics.try_emplace(topic).first;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const TaggedElement& element = elements[i];
        const NativePath named = places.FileOf(element.sourcePath);
        const NativePath& file = search.files.emplace_back(named.Empty() ? places.OnlyFile() : named);
        search.origins.push_back({{file, element.xpath, 0}, {}});
        if (element.xpath.empty()) {
            continue;
        }
        if (!file.Empty()) {
            search.origins.back().place = places.PlaceOf(file, element.xpath);
        }
        if (BeginsTopic(element, file, current->first, places)) {
            current = topics.try_emplace(file).first;
        }
        current->second[element.xpath].push_back(i);
    }
    for (const auto& [file, groups] : topics) {
        for (const auto& [xpath, group] : groups) {
            Decide(search, file, group);
        }
    }
    return std::move(search.origins);
}

}  // namespace ventrix::desk
