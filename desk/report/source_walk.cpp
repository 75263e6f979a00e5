#include "desk/report/source_walk.h"

#include <libxml/xpath.h>

#include <algorithm>
#include <set>

#include "desk/report/marker_pieces.h"
#include "desk/xml/qualified_names.h"

namespace ventrix::desk {
namespace {

constexpr std::string_view kXPathEntry = "data-qlxpath";
constexpr std::string_view kSourceEntry = "data-qlsource";
constexpr std::string_view kSkippedElement = "mathml";
constexpr char kTitle[] = "title";
constexpr int kLastExactLine = 65534;  // libxml2 keeps lines of elements up to here.

int LinesIn(std::string_view text) {
    return static_cast<int>(std::ranges::count(text, '\n'));
}

bool IsFilledText(const xmlNode& node) {
    return node.type == XML_TEXT_NODE && IsFilled(View(node.content));
}

bool HasFilledText(const xmlNode& element) {
    for (const xmlNode* node = NextNode(const_cast<xmlNode*>(&element), &element); node != nullptr;
         node = NextNode(const_cast<xmlNode*>(node), &element)) {
        if (IsFilledText(*node)) {
            return true;
        }
    }
    return false;
}

std::string WithoutGroups(std::string_view text) {
    std::string words;
    for (const MarkerPiece& piece : SplitAtGroups(text)) {
        if (piece.kind == PieceKind::kPlain) {
            words += piece.content;
        }
    }
    return words;
}

/// The first words in the element, without marker text.
std::string FirstWords(const xmlNode& element) {
    constexpr std::size_t kEnough = 120;
    std::string words;
    for (const xmlNode* node = NextNode(const_cast<xmlNode*>(&element), &element);
         node != nullptr && words.size() < kEnough; node = NextNode(const_cast<xmlNode*>(node), &element)) {
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
            words += WithoutGroups(View(node->content)) + ' ';
        }
    }
    return Shortened(Collapsed(words));
}

/// Whether one of its text nodes, not of the elements in it, has words.
bool HasOwnText(const xmlNode& element) {
    for (const xmlNode* node = element.children; node != nullptr; node = node->next) {
        if ((node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) &&
            IsFilled(View(node->content))) {
            return true;
        }
    }
    return false;
}

struct FreeXPath {
    void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
    void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

/// The elements that the query selects; none if libxml2 does not accept it.
std::vector<const xmlNode*> Select(const xmlNode& root, const std::string& query) {
    const std::unique_ptr<xmlXPathContext, FreeXPath> context(xmlXPathNewContext(root.doc));
    context->error = [](void*, xmlErrorPtr) {};
    const std::unique_ptr<xmlXPathObject, FreeXPath> result(
        xmlXPathEvalExpression(Xml(query.c_str()), context.get()));
    std::vector<const xmlNode*> selected;
    const xmlNodeSet* nodes = result == nullptr ? nullptr : result->nodesetval;
    for (int i = 0; nodes != nullptr && i < nodes->nodeNr; ++i) {
        if (nodes->nodeTab[i]->type == XML_ELEMENT_NODE) {
            selected.push_back(nodes->nodeTab[i]);
        }
    }
    return selected;
}

XmlDocument ParseElement(const std::string& xml) {
    return XmlDocument(xmlReadMemory(
        xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
        XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET | XML_PARSE_HUGE));
}

}  // namespace

SourceWalk::SourceWalk(const Preservation& preservation, const PreservedItems& items, bool linesKnown,
                       SourceTrace& trace, StringTable& strings)
    : preservation_(preservation),
      items_(items),
      linesKnown_(linesKnown),
      trace_(trace),
      strings_(strings),
      open_(1),
      sourcePathCarried_(items.All().size()) {}

void SourceWalk::Run(const xmlNode& root) {
    Enter(root);
    const xmlNode* node = root.children;
    while (open_.size() > 1) {
        if (node == nullptr) {
            node = open_.back().node->next;
            Leave();
            if (open_.size() == 1) {
                break;
            }
        } else if (node->type == XML_ELEMENT_NODE) {
            Enter(*node);
            node = node->children;
        } else {
            Read(*node);
            node = node->next;
        }
    }
    ReportSelectedWithoutText(root);
    ReportSourcePathsWithoutText();
}

// --- elements ---

void SourceWalk::Enter(const xmlNode& element) {
    const std::string name = QualifiedName(element);
    const std::string step = StepOf(name);
    Open open;
    open.node = &element;
    open.skipped = open_.back().skipped || name == kSkippedElement;
    const long line = xmlGetLineNo(&element);
    line_ = line > 0 && line <= kLastExactLine ? static_cast<int>(line) : line_;
    path_ += step;
    open.pathLength = path_.size();
    open.line = line_;
    CollectWanted(element, open);
    if (!preservation_.queries.empty()) {
        elements_[&element] = {path_, line_};
    }
    NoteStandingAlone(element, open, name);
    NoteSourcePathElement(element, name);
    open_.push_back(std::move(open));
}

std::string SourceWalk::StepOf(std::string_view name) {
    auto& counts = open_.back().childCounts;
    auto count = counts.find(name);
    if (count == counts.end()) {
        count = counts.emplace(name, 0).first;
    }
    ++count->second;
    const std::string position = count->second > 1 ? '[' + std::to_string(count->second) + ']' : "";
    return '/' + std::string(name) + position;
}

void SourceWalk::CollectWanted(const xmlNode& element, Open& open) const {
    const std::string elementName = QualifiedName(element);
    for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
        const std::string name = QualifiedName(*attribute);
        if (const int item = items_.Find(ItemKind::kAttribute, name); item != kNoItem) {
            open.wanted.push_back({.item = item,
                                   .name = items_.All()[static_cast<std::size_t>(item)].name,
                                   .value = ValueOf(*attribute)});
        }
        for (const ScopedNames& scoped : preservation_.scoped) {
            if (scoped[0] == elementName && scoped[1] == name) {
                open.wanted.push_back({.item = items_.Find(ItemKind::kScopedAttribute, ScopedName(scoped)),
                                       .name = scoped[1],
                                       .value = ValueOf(*attribute),
                                       .scoped = &scoped});
            }
        }
    }
}

/// A preserved element that is still an element was not in running text.
void SourceWalk::NoteStandingAlone(const xmlNode& element, const Open& open, const std::string& name) {
    if (const int item = items_.Find(ItemKind::kElement, name); item != kNoItem) {
        AddUncarried(item, open.skipped ? NotCarried::kNotEncoded : NotCarried::kStandsAlone,
                     PlaceOf(element, line_));
    }
}

void SourceWalk::NoteSourcePathElement(const xmlNode& element, const std::string& name) {
    const int item = name == kTitle ? kNoItem : items_.Find(ItemKind::kSourcePath, name);
    if (item == kNoItem) {
        return;
    }
    const auto [known, isFirst] = sourcePathElements_.try_emplace(item);
    const bool hasText = !known->second.hasText && HasOwnText(element);
    if (isFirst || hasText) {
        known->second = {hasText ? PlaceOf(element, line_) : PlaceHere(line_, {}), hasText};
    }
}

void SourceWalk::Leave() {
    const Open& left = open_.back();
    ReportUncarried(left);
    const auto [marked, plain] = std::pair(left.hasMarkedText, left.hasPlainText);
    open_.pop_back();
    open_.back().hasMarkedText |= marked;
    open_.back().hasPlainText |= plain;
    path_.resize(open_.back().pathLength);
}

void SourceWalk::ReportUncarried(const Open& open) {
    for (const Wanted& wanted : open.wanted) {
        if (!wanted.counted) {
            AddUncarried(wanted.item, ReasonFor(wanted, open), PlaceOf(*open.node, open.line), wanted.value);
        }
    }
}

NotCarried SourceWalk::ReasonFor(const Wanted& wanted, const Open& open) {
    if (wanted.inElement) {
        return NotCarried::kInElement;
    }
    if (open.hasMarkedText && wanted.scoped == nullptr) {
        return NotCarried::kOverridden;
    }
    return open.hasMarkedText || open.hasPlainText ? NotCarried::kNotEncoded : NotCarried::kNoText;
}

// --- text ---

void SourceWalk::Read(const xmlNode& node) {
    const std::string_view content = View(node.content);
    const bool isCdata = node.type == XML_CDATA_SECTION_NODE;
    if ((node.type != XML_TEXT_NODE && !isCdata) || !IsFilled(content)) {
        line_ += LinesIn(content);
        return;
    }
    const std::vector<MarkerPiece> pieces = SplitAtGroups(content);
    const bool isMarked = !isCdata && std::ranges::any_of(pieces, [](const MarkerPiece& piece) {
        return piece.kind != PieceKind::kPlain;
    });
    open_.back().hasMarkedText |= isMarked;
    open_.back().hasPlainText |= !isMarked;
    if (isMarked) {
        ReadPieces(pieces);
        return;
    }
    AddUnencodedText(PlaceHere(line_, Shortened(Collapsed(content))));
    line_ += LinesIn(content);
}

/// A text that is left as it is carries neither its XPath nor the attributes that apply to it.
void SourceWalk::AddUnencodedText(const SourcePlace& place) {
    if (preservation_.xpath) {
        AddUncarried(items_.Find(ItemKind::kXPath, {}), NotCarried::kNotEncoded, place);
    }
    std::set<int> nearest;
    for (auto open = open_.rbegin(); open != open_.rend(); ++open) {
        for (Wanted& wanted : open->wanted) {
            if (wanted.scoped == nullptr && nearest.insert(wanted.item).second) {
                wanted.counted = true;
                AddUncarried(wanted.item, NotCarried::kNotEncoded, place, wanted.value);
            }
        }
    }
}

void SourceWalk::ReadPieces(const std::vector<MarkerPiece>& pieces) {
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const MarkerPiece& piece = pieces[i];
        const bool wordsFollow = i + 1 < pieces.size() && pieces[i + 1].kind == PieceKind::kPlain;
        // A text begins with its first word, not with the line end before it.
        const std::string_view next = wordsFollow ? pieces[i + 1].content : std::string_view();
        const int line =
            line_ + LinesIn(next.substr(0, std::min(next.find_first_not_of(" \t\r\n"), next.size())));
        switch (piece.kind) {
            case PieceKind::kAttributes:
                AddAttributeGroup(piece.content, Collapsed(WordsAround(pieces, i)), line);
                break;
            case PieceKind::kScoped:
                AddScopedGroup(piece.content, Collapsed(WordsAround(pieces, i)), line);
                break;
            case PieceKind::kElement:
                AddElementGroup(piece.content, Collapsed(WordsAround(pieces, i)), line_);
                line_ += LinesIn(piece.content);
                break;
            case PieceKind::kPlain:
                line_ += LinesIn(piece.content);
                break;
        }
    }
}

void SourceWalk::AddAttributeGroup(std::string_view group, const std::string& context, int line) {
    AddCarrier(PieceKind::kAttributes, group, context, PlaceHere(line, Shortened(context)),
               ItemsOf(EntriesOf(group)));
}

std::vector<CarriedItem> SourceWalk::ItemsOf(const std::vector<MarkerEntry>& entries) {
    std::vector<CarriedItem> items;
    const auto last = std::find_if(entries.rbegin(), entries.rend(),
                                   [](const MarkerEntry& entry) { return entry.name == kXPathEntry; });
    for (const MarkerEntry& entry : entries) {
        const bool isLastXPath = last != entries.rend() && &*last == &entry;
        if (const int item = ItemOf(entry, isLastXPath); item != kNoItem) {
            items.push_back({item, static_cast<int>(&entry - entries.data())});
        }
    }
    return items;
}

/// Of the entries with this name, the last is the XPath, if XPaths are preserved; the others are queries.
int SourceWalk::ItemOf(const MarkerEntry& entry, bool isLastXPath) {
    if (entry.name == kXPathEntry) {
        return isLastXPath && preservation_.xpath ? items_.Find(ItemKind::kXPath, {})
                                                  : items_.Find(ItemKind::kQuery, entry.value);
    }
    if (entry.name == kSourceEntry) {
        const int item = items_.Find(ItemKind::kSourcePath, QualifiedName(*open_.back().node));
        if (item != kNoItem) {
            sourcePathCarried_[static_cast<std::size_t>(item)] = true;
        }
        return item;
    }
    MarkAttribute(entry.name);
    return items_.Find(ItemKind::kAttribute, entry.name);
}

/// The text has the attribute of the nearest element.
void SourceWalk::MarkAttribute(std::string_view name) {
    for (auto open = open_.rbegin(); open != open_.rend(); ++open) {
        for (Wanted& wanted : open->wanted) {
            if (wanted.scoped == nullptr && wanted.name == name) {
                wanted.counted = true;
                return;
            }
        }
    }
}

/// The groups of a text are in the order from the inner elements to the outer ones.
SourceWalk::Wanted* SourceWalk::FindScoped(const ScopedFields& fields) {
    for (auto open = open_.rbegin(); open != open_.rend(); ++open) {
        for (Wanted& wanted : open->wanted) {
            const bool isFree = wanted.scoped != nullptr && !wanted.counted && !wanted.inElement;
            if (isFree && (*wanted.scoped)[2] == fields.element && (*wanted.scoped)[3] == fields.attribute &&
                Collapsed(wanted.value) == Collapsed(fields.value)) {
                return &wanted;
            }
        }
    }
    return nullptr;
}

void SourceWalk::AddScopedGroup(std::string_view group, const std::string& context, int line) {
    Wanted* const wanted = FindScoped(FieldsOf(group));
    if (wanted == nullptr) {
        return;
    }
    wanted->counted = true;
    AddCarrier(PieceKind::kScoped, group, context, PlaceHere(line, Shortened(context)), {{wanted->item, 0}});
}

void SourceWalk::AddElementGroup(std::string_view group, const std::string& context, int line) {
    const std::string xml = ElementXml(group);
    const XmlDocument document = ParseElement(xml);
    const xmlNode* root = document == nullptr ? nullptr : xmlDocGetRootElement(document.get());
    if (root == nullptr) {
        return;
    }
    SourcePlace place = PlaceHere(line, FirstWords(*root));
    place.xpath += StepOf(QualifiedName(*root));
    std::vector<CarriedItem> items;
    for (const xmlNode* node = root; node != nullptr; node = NextNode(const_cast<xmlNode*>(node), root)) {
        if (node->type == XML_ELEMENT_NODE) {
            AddNestedItems(*node, place, items);
        }
        // A scoped group of an element around is in the first text, which may be in this element.
        for (const MarkerPiece& piece :
             SplitAtGroups(View(node->type == XML_TEXT_NODE ? node->content : nullptr))) {
            Wanted* const wanted =
                piece.kind == PieceKind::kScoped ? FindScoped(FieldsOf(piece.content)) : nullptr;
            if (wanted != nullptr) {
                wanted->inElement = true;
            }
        }
    }
    AddCarrier(PieceKind::kElement, group, context, place, std::move(items));
}

void SourceWalk::AddNestedItems(const xmlNode& element, const SourcePlace& place,
                                std::vector<CarriedItem>& items) {
    const int item = items_.Find(ItemKind::kElement, QualifiedName(element));
    if (item != kNoItem) {
        items.push_back({item, 0});
    }
    Open nested;
    CollectWanted(element, nested);
    for (const Wanted& wanted : nested.wanted) {
        if (wanted.scoped == nullptr) {
            items.push_back({wanted.item, 0});
        } else {
            AddUncarried(wanted.item, NotCarried::kInElement, place, wanted.value);
        }
    }
}

void SourceWalk::AddCarrier(PieceKind kind, std::string_view group, const std::string& context,
                            const SourcePlace& place, std::vector<CarriedItem> items) {
    if (!items.empty()) {
        trace_.carriers.push_back(
            {strings_.Add(GroupKey(kind, group)), strings_.Add(context), place, std::move(items)});
    }
}

// --- places without a group ---

/// The first text of a selected element carries the query, so an element without text has none.
void SourceWalk::ReportSelectedWithoutText(const xmlNode& root) {
    for (const std::string& query : preservation_.queries) {
        for (const xmlNode* element : Select(root, query)) {
            const auto known = elements_.find(element);
            if (known != elements_.end() && !HasFilledText(*element)) {
                SourcePlace place = PlaceHere(known->second.line, {});
                place.xpath = known->second.xpath;
                AddUncarried(items_.Find(ItemKind::kQuery, query), NotCarried::kNoText, place);
            }
        }
    }
}

void SourceWalk::ReportSourcePathsWithoutText() {
    for (const auto& [item, element] : sourcePathElements_) {
        if (!sourcePathCarried_[static_cast<std::size_t>(item)]) {
            AddUncarried(item, element.hasText ? NotCarried::kNotEncoded : NotCarried::kNoText,
                         element.place);
        }
    }
}

void SourceWalk::AddUncarried(int item, NotCarried reason, const SourcePlace& place,
                              const std::string& value) {
    trace_.uncarried.push_back({item, reason, value, place});
}

SourcePlace SourceWalk::PlaceOf(const xmlNode& element, int line) const {
    return PlaceHere(line, FirstWords(element));
}

SourcePlace SourceWalk::PlaceHere(int line, const std::string& text) const {
    return {static_cast<int>(trace_.files.size()) - 1, linesKnown_ ? line : 0, path_, text};
}

}  // namespace ventrix::desk
