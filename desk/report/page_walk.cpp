#include "desk/report/page_walk.h"

#include <algorithm>

#include "desk/xml/qualified_names.h"

namespace ventrix::desk {
namespace {

constexpr std::string_view kSeparator = "QL_SEP";
constexpr std::string_view kMarkerPrefix = "QL_";
constexpr std::string_view kSkippedElement = "mathml";

/// The value of the attribute with this qualified name; empty if there is none.
std::string AttributeValue(const xmlNode& element, std::string_view name) {
    for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
        if (View(attribute->name) == name && attribute->ns == nullptr) {
            return ValueOf(*attribute);
        }
    }
    return {};
}

/// The id of the nearest element at or around this one that has an id without marker text.
std::string AnchorOf(const xmlNode* element) {
    for (; element != nullptr && element->type == XML_ELEMENT_NODE; element = element->parent) {
        std::string id = element->properties == nullptr ? std::string() : AttributeValue(*element, "id");
        if (!id.empty() && id.find(kMarkerPrefix) == std::string::npos) {
            return id;
        }
    }
    return {};
}

bool IsSkipped(const xmlNode* element) {
    for (; element != nullptr && element->type == XML_ELEMENT_NODE; element = element->parent) {
        if (View(element->name) == kSkippedElement) {
            return true;
        }
    }
    return false;
}

/// The text of these elements is not shown.
bool IsCode(const xmlNode& element) {
    return View(element.name) == "script" || View(element.name) == "style";
}

/// The title of a browser's window has no markup, so that only the text of an element is left there.
bool IsTitleOfPage(const xmlNode& element) {
    return View(element.name) == "title" && element.parent != nullptr && View(element.parent->name) == "head";
}

/// An element group that contains another is not.
bool IsWellFormed(std::string_view elementGroup) {
    const std::string xml = ElementXml(elementGroup);
    const XmlDocument document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                      XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET | XML_PARSE_HUGE));
    return document != nullptr && xml.find("QL_ELEM_S") == std::string::npos;
}

bool IsKnownPair(const std::vector<std::pair<std::string, std::string>>& pairs, std::string_view name,
                 std::string_view value) {
    return std::ranges::any_of(pairs,
                               [&](const auto& pair) { return pair.first == name && pair.second == value; });
}

/// The pages are read in their order.
bool HasOneOf(int page, const std::vector<BrokenText>& texts) {
    return !texts.empty() && texts.back().page == page;
}

BrokenText BrokenTextIn(const xmlNode& element, std::string_view shown, int page) {
    return {page, static_cast<int>(xmlGetLineNo(&element)), Shortened(Collapsed(shown))};
}

}  // namespace

PageWalk::PageWalk(const std::string& tagsAttribute, const StringTable& strings,
                   WellFormedElements& wellFormed, ResultTrace& trace)
    : tagsAttribute_(tagsAttribute),
      strings_(strings),
      wellFormed_(wellFormed),
      trace_(trace),
      page_(static_cast<int>(trace.pages.size()) - 1) {}

void PageWalk::Run(const xmlNode& root) {
    for (const xmlNode* node = &root; node != nullptr; node = NextNode(const_cast<xmlNode*>(node), &root)) {
        if (node->type == XML_ELEMENT_NODE) {
            ReadValues(*node);
        } else if (node->type == XML_TEXT_NODE) {
            ReadText(*node);
        } else if (node->type == XML_COMMENT_NODE) {
            ReadOther(*node, "comment");
        } else if (node->type == XML_CDATA_SECTION_NODE) {
            ReadOther(*node, "CDATA section");
        } else if (node->type == XML_PI_NODE) {
            ReadOther(*node, "processing instruction");
        }
    }
    ComparePending();
}

// --- text, which is decoded ---

void PageWalk::ReadText(const xmlNode& text) {
    const std::string_view content = View(text.content);
    // Every marker word has one, in any case.
    if (content.find('_') == std::string_view::npos) {
        return;
    }
    const xmlNode& element = *text.parent;
    if (IsCode(element)) {
        AddCopies(content, '<' + QualifiedName(element) + '>', &element);
        return;
    }
    const bool isSkipped = IsSkipped(&element);
    bool isFirstGroup = true;
    bool textCameBefore = false;
    const std::vector<MarkerPiece> pieces = SplitAtGroups(content);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const MarkerPiece& piece = pieces[i];
        textCameBefore |= piece.kind == PieceKind::kPlain || piece.kind == PieceKind::kElement;
        if (piece.kind == PieceKind::kPlain) {
            AddChanged(piece.content, element);
            AddCut(piece.content, element);
            continue;
        }
        if (piece.kind == PieceKind::kElement && IsTitleOfPage(element)) {
            AddCopy(piece, "<title>", &element);
            continue;
        }
        Arrival* const arrival = AddArrival(piece, WordsAround(pieces, i), element);
        if (piece.kind == PieceKind::kAttributes) {
            std::vector<MarkerEntry> entries = EntriesOf(piece.content);
            // Only the first group of a text node is applied.
            if (isFirstGroup && !isSkipped) {
                Apply(element, entries);
            }
            isFirstGroup = false;
            if (arrival != nullptr) {
                pending_.push_back({trace_.arrivals.size() - 1, &element, std::move(entries)});
            }
            continue;
        }
        NotApplied problem = isSkipped ? NotApplied::kMisplaced : NotApplied::kApplied;
        if (piece.kind == PieceKind::kElement) {
            if (!isSkipped && !IsRestored(arrival, piece.content)) {
                problem = NotApplied::kBroken;
                AddDropped(piece.content, element);
            }
        } else if (!isSkipped) {
            problem = textCameBefore ? NotApplied::kMisplaced : ApplyScoped(element, FieldsOf(piece.content));
        }
        if (arrival != nullptr && problem != NotApplied::kApplied) {
            arrival->problem = problem;
            arrival->unapplied = {0};
        }
    }
}

/// Whether decoding makes an element of the group.
bool PageWalk::IsRestored(const Arrival* arrival, std::string_view content) {
    if (arrival == nullptr) {
        return IsWellFormed(content);
    }
    const auto [known, isNew] = wellFormed_.try_emplace(arrival->group);
    if (isNew) {
        known->second = IsWellFormed(content);
    }
    return known->second;
}

PageWalk::Applied& PageWalk::AppliedTo(const xmlNode& element) {
    const auto [known, isNew] = applied_.try_emplace(&element);
    if (isNew) {
        std::string value = AttributeValue(element, tagsAttribute_);
        std::vector<std::string> tokens;
        for (std::size_t end = value.find(kSeparator); end != std::string::npos;
             end = value.find(kSeparator)) {
            tokens.push_back(value.substr(0, end));
            value.erase(0, end + kSeparator.size());
        }
        for (std::size_t i = 0; i + 1 < tokens.size(); i += 2) {
            known->second.tags.emplace_back(tokens[i], tokens[i + 1]);
        }
    }
    return known->second;
}

void PageWalk::Apply(const xmlNode& element, const std::vector<MarkerEntry>& entries) {
    Applied& applied = AppliedTo(element);
    const std::size_t before = applied.tags.size();
    for (const MarkerEntry& entry : entries) {
        if (!entry.target.empty()) {
            if (!IsKnownPair(applied.attributes, entry.target, entry.value)) {
                applied.attributes.emplace_back(entry.target, entry.value);
            }
            continue;
        }
        const auto end = applied.tags.begin() + static_cast<std::ptrdiff_t>(before);
        if (std::find_if(applied.tags.begin(), end,
                         [&](const Pair& tag) { return tag.first == entry.name; }) == end) {
            applied.tags.emplace_back(entry.name, entry.value);
        }
    }
}

/// The nearest element of the name gets the attribute, unless it has a value for it.
NotApplied PageWalk::ApplyScoped(const xmlNode& element, const ScopedFields& fields) {
    const xmlNode* target = &element;
    while (target != nullptr && target->type == XML_ELEMENT_NODE &&
           QualifiedName(*target) != fields.element) {
        target = target->parent;
    }
    if (target == nullptr || target->type != XML_ELEMENT_NODE) {
        return NotApplied::kMisplaced;
    }
    Applied& applied = AppliedTo(*target);
    std::string value = AttributeValue(*target, fields.attribute);
    const auto known = std::ranges::find(applied.attributes, fields.attribute, &Pair::first);
    if (value.empty() && known != applied.attributes.end()) {
        value = known->second;
    }
    if (value.empty()) {
        applied.attributes.emplace_back(fields.attribute, fields.value);
        return NotApplied::kApplied;
    }
    return value == fields.value ? NotApplied::kApplied : NotApplied::kOtherValue;
}

bool PageWalk::Has(const xmlNode& element, const MarkerEntry& entry) {
    const Applied& applied = AppliedTo(element);
    return entry.target.empty() ? IsKnownPair(applied.tags, entry.name, entry.value)
                                : IsKnownPair(applied.attributes, entry.target, entry.value);
}

/// An entry that was not applied is there nevertheless if another text of the element has the same.
void PageWalk::ComparePending() {
    for (const Pending& pending : pending_) {
        Arrival& arrival = trace_.arrivals[pending.arrival];
        for (std::size_t i = 0; i < pending.entries.size(); ++i) {
            if (!Has(*pending.element, pending.entries[i])) {
                arrival.unapplied.push_back(static_cast<int>(i));
                arrival.problem = NotApplied::kOtherValue;
            }
        }
    }
}

Arrival* PageWalk::AddArrival(const MarkerPiece& piece, std::string_view words, const xmlNode& element) {
    const std::string key = GroupKey(piece.kind, piece.content);
    const int group = strings_.Find(key);
    if (group == kUnknownString) {
        trace_.changed.push_back({group, page_, '<' + QualifiedName(element) + '>', key, AnchorOf(&element)});
        return nullptr;
    }
    trace_.arrivals.push_back({.group = group,
                               .context = strings_.Find(Collapsed(words)),
                               .page = page_,
                               .element = QualifiedName(element),
                               .anchor = AnchorOf(&element),
                               .problem = NotApplied::kApplied,
                               .unapplied = {}});
    return &trace_.arrivals.back();
}

/// Groups that are not decoded, so that their words stay in the text.
void PageWalk::AddChanged(std::string_view words, const xmlNode& element) {
    for (const MarkerPiece& group : ChangedGroups(words)) {
        trace_.changed.push_back({kUnknownString, page_, '<' + QualifiedName(element) + '>',
                                  GroupKey(group.kind, group.content), AnchorOf(&element)});
    }
}

void PageWalk::AddCut(std::string_view words, const xmlNode& element) {
    const bool hasWord = !HasOneOf(page_, trace_.cuts) && words.find(kMarkerPrefix) != std::string_view::npos;
    if (const std::string left = hasWord ? LeftOfCutGroups(words) : std::string(); !left.empty()) {
        trace_.cuts.push_back(BrokenTextIn(element, left, page_));
    }
}

void PageWalk::AddDropped(std::string_view content, const xmlNode& element) {
    if (!HasOneOf(page_, trace_.dropped)) {
        trace_.dropped.push_back(BrokenTextIn(element, ElementXml(content), page_));
    }
}

// --- what is not decoded ---

void PageWalk::ReadValues(const xmlNode& element) {
    for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
        const std::string_view start =
            attribute->children == nullptr ? std::string_view() : View(attribute->children->content);
        // Mostly the value is one node; only those with references have more.
        const bool isWhole = attribute->children == attribute->last;
        if (!isWhole || start.find(kMarkerPrefix) != std::string_view::npos) {
            AddCopies(ValueOf(*attribute),
                      '<' + QualifiedName(element) + ' ' + std::string(View(attribute->name)) + '>',
                      &element);
        }
    }
}

void PageWalk::ReadOther(const xmlNode& node, const std::string& where) {
    if (View(node.content).find(kMarkerPrefix) != std::string_view::npos) {
        AddCopies(View(node.content), where, node.parent);
    }
}

void PageWalk::AddCopies(std::string_view text, const std::string& where, const xmlNode* element) {
    for (const MarkerPiece& piece : SplitAtGroups(text)) {
        if (piece.kind != PieceKind::kPlain) {
            AddCopy(piece, where, element);
        }
    }
}

void PageWalk::AddCopy(const MarkerPiece& piece, const std::string& where, const xmlNode* element) {
    std::string key = GroupKey(piece.kind, piece.content);
    const int group = strings_.Find(key);
    trace_.copies.push_back({group, page_, where, std::move(key), AnchorOf(element)});
}

}  // namespace ventrix::desk
