#include "desk/toolkit/left_elements.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "desk/xml/marker_text.h"
#include "desk/xml/markup_in_text.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kNpos = std::string_view::npos;
constexpr std::string_view kSpaces = " \t\r\n";

/// An attribute that names ids: each of its words, or what comes after this character in it.
struct IdReference {
    std::string_view attribute;
    char separator = 0;
};

constexpr IdReference kIdReferences[] = {
    {"href", '#'}, {"conref", '#'}, {"conrefend", '#'}, {"conkeyref", '/'}, {"keyref", '/'},
    {"linkend"},   {"linkends"},    {"endterm"},        {"otherterm"},      {"xpointer"}};

constexpr std::string_view kReferences[] = {"keyref", "conkeyref", "conref", "linkend", "endterm"};
constexpr std::string_view kDocBookReferences[] = {"href", "url"};

/// An element for which a transformation writes text that is not in it, an image or a note, or of which it
/// leaves text out.
struct GeneratedOutput {
    std::string_view element;
    std::string_view attribute = {};  ///< Only an element with this attribute; empty for all.
};

constexpr GeneratedOutput kDitaOutput[] = {{"abbreviated-form"},
                                           {"data"},
                                           {"data-about"},
                                           {"draft-comment"},
                                           {"fn"},
                                           {"foreign"},
                                           {"image"},
                                           {"indexterm"},
                                           {"menucascade"},
                                           {"numcharref"},
                                           {"object"},
                                           {"parameterentity"},
                                           {"q"},
                                           {"required-cleanup"},
                                           {"sort-as"},
                                           {"state"},
                                           {"textentity"},
                                           {"tm"},
                                           {"unknown"},
                                           {"xmlatt"},
                                           {"xmlelement"},
                                           {"xmlnsname"},
                                           {"xmlpi"}};

constexpr GeneratedOutput kDocBookOutput[] = {{"annotation"},
                                              {"author"},
                                              {"citation"},
                                              {"citebiblioid"},
                                              {"citerefentry"},
                                              {"citetitle", "pubwork"},
                                              {"comment"},
                                              {"editor"},
                                              {"email"},
                                              {"footnote"},
                                              {"indexterm"},
                                              {"inlineequation"},
                                              {"inlinemediaobject"},
                                              {"keycombo"},
                                              {"manvolnum"},
                                              {"menuchoice"},
                                              {"optional"},
                                              {"othercredit"},
                                              {"person"},
                                              {"personname"},
                                              {"productname", "class"},
                                              {"quote"},
                                              {"remark"},
                                              {"sgmltag", "class"},
                                              {"simplelist"},
                                              {"tag", "class"},
                                              {"termdef"},
                                              {"trademark"}};

constexpr std::string_view kReferenceWhy = "a reference needs it";
constexpr std::string_view kLabelWhy = "the label of its bibliographic entry depends on it";
constexpr std::string_view kEmptyWhy = "it is or contains an element without text";
constexpr std::string_view kOutputWhy =
    "it is or contains an element for which the transformation generates output";

void AddWords(std::string_view text, IdSet& words) {
    for (std::size_t at = text.find_first_not_of(kSpaces); at != kNpos;) {
        const std::size_t end = std::min(text.find_first_of(kSpaces, at), text.size());
        words.emplace(text.substr(at, end - at));
        at = text.find_first_not_of(kSpaces, end);
    }
}

std::string_view IdIn(std::string_view reference) {
    return reference.substr(reference.find_last_of("#/") + 1);
}

/// The attribute of this name in the element, in text or in marker text, whose start tag contains the place;
/// null if it has none.
const AttributeInText* AttributeBeside(std::string_view document,
                                       const std::vector<AttributeInText>& attributes,
                                       const AttributeInText& place, std::string_view name) {
    const auto isBeside = [&](const AttributeInText& other) {
        const auto [first, last] = std::minmax({place.value.data(), other.value.data()});
        const std::string_view between = document.substr(static_cast<std::size_t>(first - document.data()),
                                                         static_cast<std::size_t>(last - first));
        return other.name == name && between.find('<') == kNpos && between.find("&amp;lt;") == kNpos;
    };
    const auto found = std::ranges::find_if(attributes, isBeside);
    return found == attributes.end() ? nullptr : &*found;
}

void AddRange(std::string_view document, const std::vector<AttributeInText>& attributes,
              const AttributeInText& end, ReferencedIds& referenced) {
    for (const char* name : {"conref", "conkeyref"}) {
        if (const AttributeInText* start = AttributeBeside(document, attributes, end, name)) {
            referenced.ranges.emplace(IdIn(start->value), IdIn(end.value));
        }
    }
}

bool ContainsId(std::string_view element, const IdSet& ids) {
    return std::ranges::any_of(AttributesIn(element), [&ids](const AttributeInText& attribute) {
        return attribute.name == "id" && ids.contains(attribute.value);
    });
}

using Places = std::vector<std::pair<std::size_t, std::size_t>>;  ///< The begin and the end of each.

/// The places between the ids of each range that is in the document.
Places RangesIn(std::string_view document, const ReferencedIds& referenced) {
    Places places;
    if (referenced.ranges.empty()) {
        return places;
    }
    std::vector<AttributeInText> ids = AttributesIn(document);
    std::erase_if(ids, [](const AttributeInText& attribute) { return attribute.name != "id"; });
    const auto placeOf = [document](const AttributeInText& id) {
        return static_cast<std::size_t>(id.value.data() - document.data());
    };
    for (const auto& [firstId, lastId] : referenced.ranges) {
        const auto first = std::ranges::find(ids, firstId, &AttributeInText::value);
        const auto last = std::ranges::find(first, ids.end(), lastId, &AttributeInText::value);
        if (last != ids.end()) {
            places.emplace_back(placeOf(*first), placeOf(*last));
        }
    }
    return places;
}

std::string_view LocalNameIn(std::string_view tag) {
    const std::string_view name = tag.substr(1, tag.find_first_of(" \t\r\n/>", 1) - 1);
    return name.substr(name.find(':') + 1);
}

bool HasAttribute(std::string_view tag, std::string_view name) {
    return std::ranges::any_of(AttributesIn(tag),
                               [name](const AttributeInText& attribute) { return attribute.name == name; });
}

bool IsEmpty(std::string_view tag, std::string_view rest) {
    return tag.ends_with("/>") || rest.starts_with("</");
}

/// An abbreviation is the label of a bibliographic entry if it is the first element in it, so that this
/// element must not become text. Its group is the first in the entry: `previousEnd` is where the one before
/// ends.
bool DecidesLabel(std::string_view document, const ElementGroup& group, std::size_t previousEnd) {
    constexpr std::string_view kEntry = "bibliomixed";
    const std::size_t parent = document.rfind('<', group.begin);
    if (parent == kNpos || parent < previousEnd || LocalNameIn(document.substr(parent)) != kEntry) {
        return false;
    }
    const std::size_t end = std::min(document.find(kEntry, group.begin), document.size());
    return document.substr(group.begin, end - group.begin).find("abbrev") != kNpos;
}

/// Browsers do not know CDATA sections, which the element would bring to the page.
std::string WithoutCdata(std::string_view element) {
    constexpr std::string_view kOpen = "<![CDATA[", kClose = "]]>";
    std::string changed;
    for (std::size_t at = element.find(kOpen); at != kNpos; at = element.find(kOpen)) {
        const std::size_t end = std::min(element.find(kClose, at), element.size());
        const std::size_t text = at + kOpen.size();
        changed.append(element.substr(0, at)).append(EscapedXml(element.substr(text, end - text)));
        element.remove_prefix(std::min(end + kClose.size(), element.size()));
    }
    return changed.append(element);
}

/// The rules for the elements of one document.
class DocumentRules {
  public:
    DocumentRules(const LeavingRules& rules, std::string_view document)
        : rules_(rules),
          document_(document),
          ranges_(RangesIn(document, rules.referenced)),
          hasDefaultClasses_(document.find("http://docbook.org/ns/docbook") == kNpos) {}

    /// Empty if the element of the group, whose CDATA sections are text, can be preserved.
    std::string_view WhyLeft(std::string_view element, const ElementGroup& group,
                             std::size_t previousEnd) const {
        if (ContainsId(element, rules_.referenced.ids) || IsInRange(group.begin)) {
            return kReferenceWhy;
        }
        if (IsDocBook() && DecidesLabel(document_, group, previousEnd)) {
            return kLabelWhy;
        }
        std::string_view why;
        for (std::size_t at = element.find('<'); at != kNpos; at = element.find('<', at + 1)) {
            const std::string_view rest = element.substr(at);
            const std::string_view tag = rest.substr(0, TagLength(rest));
            const bool isStart = std::string_view("/!?").find(tag.substr(1, 1)) == kNpos;
            const bool isEmpty = isStart && IsEmpty(tag, rest.substr(tag.size()));
            if (isStart && IsReference(tag)) {
                return kReferenceWhy;
            }
            if (isStart && HasGeneratedOutput(tag)) {
                why = kOutputWhy;
            } else if (isEmpty && why.empty()) {
                why = kEmptyWhy;
            }
        }
        return why;
    }

  private:
    bool IsDocBook() const {
        return rules_.vocabulary == Vocabulary::kDocBook || rules_.vocabulary == Vocabulary::kDocBookGlossary;
    }

    bool IsInRange(std::size_t position) const {
        return std::ranges::any_of(ranges_, [position](const auto& range) {
            return range.first < position && position < range.second;
        });
    }

    bool IsReference(std::string_view tag) const {
        const auto isIn = [tag](std::string_view name) { return HasAttribute(tag, name); };
        return std::ranges::any_of(kReferences, isIn) ||
               (IsDocBook() ? std::ranges::any_of(kDocBookReferences, isIn)
                            : LocalNameIn(tag) == "xref" && HasAttribute(tag, "href"));
    }

    bool HasGeneratedOutput(std::string_view tag) const {
        const auto isThis = [this, tag, name = LocalNameIn(tag)](const GeneratedOutput& output) {
            return output.element == name &&
                   (output.attribute.empty() || HasAttribute(tag, output.attribute) ||
                    (hasDefaultClasses_ && name == "productname"));
        };
        return rules_.vocabulary == Vocabulary::kDita
                   ? std::ranges::any_of(kDitaOutput, isThis)
                   : IsDocBook() && std::ranges::any_of(kDocBookOutput, isThis);
    }

    const LeavingRules& rules_;
    std::string_view document_;
    Places ranges_;
    bool hasDefaultClasses_;  ///< The DTD of DocBook 4 gives each productname a class.
};

}  // namespace

// The file, key or topic ahead of an id is not compared: only the transformation resolves it. An element that
// has the same id elsewhere is left to the transformation for nothing, which costs its markup but no text.
void AddReferencedIds(std::string_view document, ReferencedIds& referenced) {
    const std::vector<AttributeInText> attributes = AttributesIn(document);
    for (const AttributeInText& attribute : attributes) {
        const auto* reference = std::ranges::find(kIdReferences, attribute.name, &IdReference::attribute);
        if (reference == std::end(kIdReferences)) {
            continue;
        }
        if (reference->separator == 0) {
            AddWords(attribute.value, referenced.ids);
        } else if (attribute.value.find(reference->separator) != kNpos) {
            referenced.ids.emplace(IdIn(attribute.value));
        }
        if (attribute.name == "conrefend") {
            AddRange(document, attributes, attribute, referenced);
        }
    }
}

std::string WithLeftElements(std::string_view document, const LeavingRules& rules,
                             const LeftElementSink& sink) {
    const DocumentRules here(rules, document);
    std::string changed;
    std::size_t copied = 0;
    std::size_t previousEnd = 0;
    ForEachElementGroup(document, [&](const ElementGroup& group) {
        const std::string element = WithoutCdata(group.element);
        const std::string_view why = here.WhyLeft(element, group, std::exchange(previousEnd, group.end));
        if (!why.empty()) {
            sink(group.element, group.begin, why);
        } else if (element == group.element) {
            return;
        }
        changed.append(document, copied, group.begin - copied)
            .append(why.empty() ? MarkerTextOf(element) : group.element);
        copied = group.end;
    });
    return changed.append(document, copied);
}

}  // namespace ventrix::desk
