#include "desk/toolkit/page_metadata.h"

#include <algorithm>
#include <initializer_list>
#include <set>
#include <string_view>
#include <utility>

#include "desk/toolkit/contents.h"
#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_document.h"
#include "desk/toolkit/dita_keys.h"

namespace ventrix::desk {
namespace {

/// Elements whose text is the content, or else one of their attributes, in the order of a page's head. An
/// entry with two names is written twice.
struct MetadataRule {
    std::string_view element;
    const char* attribute;  ///< Null for the text.
    const char* name;
};

constexpr MetadataRule kRules[] = {{"source", "href", "DC.Source"},
                                   {"category", nullptr, "DC.Coverage"},
                                   {"keywords", nullptr, "DC.subject"},
                                   {"keywords", nullptr, "keywords"},
                                   {"audience", "experiencelevel", "DC.Audience.Experiencelevel"},
                                   {"audience", "importance", "DC.Audience.Importance"},
                                   {"audience", "name", "DC.Audience.Name"},
                                   {"audience", "job", "DC.Audience.Job"},
                                   {"audience", "type", "DC.Audience.Type"},
                                   {"prodname", nullptr, "prodname"},
                                   {"vrm", "version", "version"},
                                   {"vrm", "release", "release"},
                                   {"vrm", "modification", "modification"},
                                   {"brand", nullptr, "brand"},
                                   {"component", nullptr, "component"},
                                   {"featnum", nullptr, "featnum"},
                                   {"prognum", nullptr, "prognum"},
                                   {"platform", nullptr, "platform"},
                                   {"series", nullptr, "series"},
                                   {"author", nullptr, "DC.Creator"},
                                   {"publisher", nullptr, "DC.Publisher"},
                                   {"copyright", nullptr, "copyright"},
                                   {"copyright", nullptr, "DC.Rights.Owner"},
                                   {"permissions", "view", "DC.Rights.Usage"},
                                   {"created", "date", "DC.Date.Created"},
                                   {"revised", "modified", "DC.Date.Modified"},
                                   {"revised", "golive", "DC.Date.Issued"},
                                   {"revised", "golive", "DC.Date.Available"},
                                   {"revised", "expiry", "DC.Date.Expiry"},
                                   {"othermeta", "content", nullptr}};

bool IsOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::ranges::find(names, name) != names.end();
}

bool IsContainer(std::string_view name) {
    return IsOneOf(name, {"metadata", "prodinfo", "critdates", "vrmlist"});
}

/// What a map says about a branch counts for all topics in it.
bool CountsForBranch(std::string_view source) {
    return IsOneOf(source, {"audience", "author", "category", "copyright", "critdates", "permissions",
                            "prodinfo", "publisher"});
}

bool HasOnePlace(std::string_view source) {
    return IsOneOf(source, {"critdates", "permissions", "publisher", "source"});
}

/// The holder and the years.
std::string CopyrightText(const xmlNode* copyright) {
    std::string text = PlainText(TextOf(ChildOfType(copyright, "topic/copyrholder")));
    text = text.empty() ? "(C) Copyright" : text;
    for (const xmlNode* child = FirstElement(copyright); child != nullptr; child = NextElement(child)) {
        if (HasType(child, "topic/copyryear")) {
            text += " " + Attribute(child, "year");
        }
    }
    return text;
}

/// The words of the element and of those in it.
std::vector<std::string> WordsIn(const xmlNode* keywords) {
    std::vector<std::string> words;
    auto* root = const_cast<xmlNode*>(keywords);
    for (const xmlNode* node = root; node != nullptr; node = NextNode(const_cast<xmlNode*>(node), root)) {
        const std::string word = node->type == XML_TEXT_NODE ? PlainText(TextOf(node)) : std::string();
        if (!word.empty()) {
            words.push_back(word);
        }
    }
    return words;
}

std::string ContentOf(const xmlNode* element, const MetadataRule& rule) {
    if (rule.element == "copyright") {
        return CopyrightText(element);
    }
    if (rule.attribute == nullptr) {
        return PlainText(TextOf(element));
    }
    const std::string value = Attribute(element, rule.attribute);
    if (rule.element == "source") {
        return AsWritten(element, value);
    }
    // An audience's job or type of its own.
    return rule.element == "audience" && value == "other"
               ? Attribute(element, (std::string("other") + rule.attribute).c_str())
               : value;
}

std::string NameFor(const xmlNode* element, const MetadataRule& rule) {
    if (rule.name == nullptr) {
        return Attribute(element, "name");
    }
    return rule.element == "author" && Attribute(element, "type") == "contributor" ? "DC.Contributor"
                                                                                   : rule.name;
}

/// Both entries of a copyright have the same rank, and so have an author and a contributor.
int RankOf(const MetadataRule& rule) {
    const auto* first = std::ranges::find(kRules, rule.element, &MetadataRule::element);
    return static_cast<int>((rule.element == "copyright" ? first : &rule) - std::begin(kRules));
}

void AddEntries(const xmlNode* element, const std::string& source, std::vector<MetadataEntry>& entries) {
    const std::string base = BaseName(element);
    for (const MetadataRule& rule : kRules) {
        if (rule.element != base) {
            continue;
        }
        for (const std::string& content :
             base == "keywords" ? WordsIn(element) : std::vector{ContentOf(element, rule)}) {
            if (!content.empty()) {
                entries.push_back({NameFor(element, rule), content, source, RankOf(rule)});
            }
        }
    }
}

/// Adds what is in a prolog, a topicmeta or an element that groups metadata in them.
void CollectEntries(const xmlNode* container, const std::string& source,
                    std::vector<MetadataEntry>& entries) {
    for (const xmlNode* child = container == nullptr ? nullptr : FirstElement(container); child != nullptr;
         child = NextElement(child)) {
        const std::string base = BaseName(child);
        const std::string& from = source.empty() || source == "metadata" ? base : source;
        if (IsContainer(base)) {
            CollectEntries(child, from, entries);
        } else {
            AddEntries(child, from, entries);
        }
    }
}

/// The entries of a page while they are collected. Its keywords become one entry, in which each is once.
class Collected {
  public:
    void Add(const MetadataEntry& entry) {
        if (entry.source != "keywords") {
            entries_.push_back(entry);
        } else if (keywords_.insert({entry.name, entry.content}).second) {
            const auto same = std::ranges::find(entries_, entry.name, &MetadataEntry::name);
            if (same == entries_.end()) {
                entries_.push_back(entry);
            } else {
                same->content += ", " + entry.content;
            }
        }
    }

    /// Adds what one element of the map, or the topic, says. What has one place is not added to an earlier
    /// one.
    void AddAll(const std::vector<MetadataEntry>& entries) {
        std::set<std::string> added;
        for (const MetadataEntry& entry : entries) {
            if (!filled_.contains(entry.source)) {
                Add(entry);
            }
            if (HasOnePlace(entry.source)) {
                added.insert(entry.source);
            }
        }
        filled_.merge(added);
    }

    std::vector<MetadataEntry> InOrder() {
        std::ranges::stable_sort(entries_, {}, &MetadataEntry::rank);
        return std::move(entries_);
    }

  private:
    std::vector<MetadataEntry> entries_;
    std::set<std::pair<std::string, std::string>> keywords_;  ///< By name.
    std::set<std::string> filled_;                            ///< Sources that have one place.
};

}  // namespace

TopicMetadata ReadMapMetadata(const xmlNode* element, std::shared_ptr<const BranchMetadata> outer) {
    std::vector<MetadataEntry> entries;
    CollectEntries(ChildOfType(element, "map/topicmeta"), {}, entries);
    std::string searchTitle = MapTextOf(element, "searchtitle");
    if (entries.empty()) {
        return {{}, std::move(searchTitle), std::move(outer)};
    }
    const auto own = std::stable_partition(entries.begin(), entries.end(), [](const MetadataEntry& entry) {
        return CountsForBranch(entry.source);
    });
    TopicMetadata metadata{{own, entries.end()}, std::move(searchTitle), nullptr};
    entries.erase(own, entries.end());
    metadata.branch = std::make_shared<BranchMetadata>(BranchMetadata{std::move(entries), std::move(outer)});
    return metadata;
}

std::vector<MetadataEntry> MetadataOfPage(const xmlNode* topic, const TopicMetadata& inMap) {
    Collected collected;
    collected.AddAll(inMap.own);
    for (const BranchMetadata* branch = inMap.branch.get(); branch != nullptr; branch = branch->outer.get()) {
        collected.AddAll(branch->entries);
    }
    std::vector<MetadataEntry> own;
    CollectEntries(ChildOfType(topic, "topic/prolog"), {}, own);
    collected.AddAll(own);
    return collected.InOrder();
}

}  // namespace ventrix::desk
