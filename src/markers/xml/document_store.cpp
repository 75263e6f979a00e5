#include "markers/xml/document_store.h"

#include <algorithm>

#include "markers/xml/attributes.h"
#include "markers/xml/characters.h"
#include "markers/xml/escaping.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

/// A string of the node's own that is filled makes the text node filled.
void NoteFilled(NodeRecord& text, std::string_view ownString) {
    if (!text.Has(kFilled) && IsFilled(ownString, TextForm::kContent)) {
        text.Set(kFilled);
    }
}

LineEnd LineEndOf(std::string_view source) {
    const std::size_t first = source.find('\n');
    const bool hasReturn = first != 0 && first != std::string_view::npos && source[first - 1] == '\r';
    return hasReturn ? LineEnd::kReturnAndLineFeed : LineEnd::kLineFeed;
}

/// True if the writer would write what the source bytes of a text stand for byte for byte as they are.
bool IsAsWritten(std::string_view source, LineEnd lineEnd) {
    const bool hasReturns = lineEnd == LineEnd::kReturnAndLineFeed;
    std::size_t at = 0;
    while ((at = FindAnyByte(source, at, '&', '>', hasReturns ? '\n' : '\r')) != std::string_view::npos) {
        if (source[at] == '\n' && at != 0 && source[at - 1] == '\r') {
            ++at;
            continue;
        }
        const NamedCharacter named = NamedCharacterAt(source.substr(at));
        if (named.length == 0 || named.character == '"' || named.character == '\'') {
            return false;
        }
        at += named.length;
    }
    return true;
}

}  // namespace

void DocumentStore::Reserve(std::size_t nodes) {
    nodes_.Reserve(nodes);
    strings.ExpectStrings((nodes_.Size() + nodes) / 4);  // One text node or attribute in a few gets a string.
}

// The children form a list whose previous links are closed to a ring: the first child's leads to the last. So
// inserting after the last child sets the same links as inserting before the first, except that the first
// stays first.
void DocumentStore::InsertBefore(NodeIndex parent, NodeIndex child, NodeIndex reference) {
    NoteModified(parent);
    NodeRecord& above = At(parent);
    NodeRecord& record = At(child);
    const NodeIndex first = above.FirstChild();
    record.parent = parent;
    record.next = reference;
    if (first == 0) {
        above.SetFirstChild(child);
        record.SetPreviousOrLast(child);
        return;
    }
    NodeRecord& after = At(reference == 0 ? first : reference);
    record.SetPreviousOrLast(after.PreviousOrLast());
    if (reference == first) {
        above.SetFirstChild(child);
    } else {
        At(after.PreviousOrLast()).next = child;
    }
    after.SetPreviousOrLast(child);
}

void DocumentStore::Unlink(NodeIndex child) {
    NodeRecord& record = At(child);
    if (record.parent == 0) {
        return;
    }
    NoteModified(record.parent);
    NodeRecord& above = At(record.parent);
    At(record.next == 0 ? above.FirstChild() : record.next).SetPreviousOrLast(record.PreviousOrLast());
    if (above.FirstChild() == child) {
        above.SetFirstChild(record.next);
    } else {
        At(record.PreviousOrLast()).next = record.next;
    }
    record.parent = record.next = 0;
    record.SetPreviousOrLast(0);
}

SourceText* DocumentStore::AddSource(platform::Bytes text) {
    const std::size_t size = text.size();
    strings.ExpectBytes(size);
    text.push_back('\0');
    SourceText* const source = AppendSource(std::move(text), size);
    if (source != nullptr) {
        source->lineEnd = LineEndOf(source->text);
    }
    return source;
}

SourceText* DocumentStore::AppendSource(platform::Bytes bytes, std::size_t textSize) {
    const std::uint64_t base =
        sources_.empty() ? 0 : std::uint64_t{sources_.back().base} + sources_.back().bytes.size();
    if (base + bytes.size() > UINT32_MAX) {
        return nullptr;
    }
    SourceText& source = sources_.emplace_back();
    source.base = static_cast<std::uint32_t>(base);
    source.bytes = std::move(bytes);
    source.text = {source.bytes.data(), textSize};
    first_ = &sources_.front();
    return latest_ = &source;
}

// A source for each piece would take more memory than most pieces, and a search among all of them for each
// access.
bool DocumentStore::AddPiece(std::string_view xml, SourceText& piece) {
    constexpr std::size_t kSize = std::size_t{64} * 1024;
    if (xml.size() >= kSize / 4) {
        return false;
    }
    if (pieces_ == nullptr || pieces_->bytes.size() - pieces_->text.size() <= xml.size() + 1) {
        SourceText* const added = AppendSource(platform::Bytes(kSize), 0);
        if (added == nullptr) {
            return false;
        }
        added->document = Add(NODE_DOCUMENT);
        pieces_ = added;
    }
    const std::size_t at = pieces_->text.size() + (pieces_->text.empty() ? 0 : 1);
    char* const place = pieces_->bytes.data() + at;
    std::ranges::copy(xml, place);
    place[xml.size()] = '\0';
    pieces_->text = {pieces_->bytes.data(), at + xml.size()};
    piece.base = pieces_->base + static_cast<std::uint32_t>(at);
    piece.text = {place, xml.size()};
    piece.document = pieces_->document;
    return true;
}

void DocumentStore::TakeBackPiece(const SourceText& piece) {
    const std::uint32_t at = piece.base - pieces_->base;
    pieces_->text = pieces_->text.substr(0, at == 0 ? 0 : at - 1);
}

SourceText& DocumentStore::LaterSourceOf(std::uint32_t offset) {
    if (offset < latest_->base || offset - latest_->base > latest_->text.size()) {
        latest_ = &*std::prev(std::ranges::upper_bound(sources_, offset, {}, &SourceText::base));
    }
    return *latest_;
}

SourceText* DocumentStore::SourceOfDocument(NodeIndex document) {
    // A document that was loaded more than once has several; the latest is the last.
    const auto found = std::find_if(sources_.rbegin(), sources_.rend(),
                                    [&](const SourceText& source) { return source.document == document; });
    return found == sources_.rend() ? nullptr : &*found;
}

bool DocumentStore::HasOnlyPlainSources() const {
    return std::ranges::none_of(
        sources_, [](const SourceText& source) { return source.hasNamespaces || source.hasDeclarations; });
}

std::string_view DocumentStore::AttributeNameOf(const NodeRecord& record) {
    if (record.Type() != NODE_ATTRIBUTE) {
        return {};
    }
    return record.Has(kCreated) ? strings.At(record.NameString())
                                : Slice(record.begin, record.begin + record.nameLength);
}

std::string_view DocumentStore::ContentOf(NodeIndex index, std::string& buffer) {
    const NodeRecord& record = At(index);
    switch (record.Type()) {
        case NODE_TEXT:
            return TextNodeContent(record, buffer);
        case NODE_CDATA_SECTION: {
            constexpr std::uint32_t kOpening = sizeof "<![CDATA[" - 1;
            constexpr std::uint32_t kClosing = sizeof "]]>" - 1;
            return buffer = NormalizeLineEnds(Slice(record.begin + kOpening, record.End() - kClosing));
        }
        case NODE_ATTRIBUTE:
            return record.Has(kOwnContent) ? OwnStringOf(record) : SourceValue(*this, index, buffer);
        default:
            return {};
    }
}

std::string_view DocumentStore::TextNodeContent(const NodeRecord& text, std::string& buffer) {
    if (text.Has(kOwnContent)) {
        return OwnStringOf(text);
    }
    const std::string_view raw = Slice(text.begin, text.End());
    const bool hasOwnString = text.Has(kPrefixed | kQuoted);
    if (!hasOwnString && text.Has(kVerbatim)) {
        return raw;
    }
    buffer = hasOwnString ? OwnStringOf(text) : std::string_view();
    if (text.Has(kQuoted)) {
        AppendEscaped(buffer, raw, kMarkupEscapes);
        buffer += strings.At(text.StringAfterQuote());
    } else {
        AppendDecodedText(buffer, raw);
    }
    return buffer;
}

bool DocumentStore::TextStartsWith(NodeIndex text, std::string_view prefix) {
    const NodeRecord& record = At(text);
    if (prefix.empty()) {
        return true;
    }
    if (!record.Has(kOwnContent | kPrefixed | kQuoted)) {
        // Only a reference and a line end can decode to a different first byte.
        const char first = Slice(record.begin, record.End())[0];
        if (first != prefix[0] && first != '&' && first != '\r') {
            return false;
        }
    }
    std::string buffer;
    return ContentOf(text, buffer).starts_with(prefix);
}

void DocumentStore::SetContent(NodeIndex index, std::string_view content) {
    NoteContentChange(index);
    NodeRecord& record = At(index);
    SetOwnString(record, content);
    record.Set(kOwnContent);
    if (record.Type() == NODE_ATTRIBUTE) {
        record.Clear(kFromDtd);
        NoteAttributeChange(record.parent);
    } else {
        record.Clear(kPrefixed | kQuoted | kFilled);
        NoteFilled(record, OwnStringOf(record));
    }
}

/// Makes the text node `part`, which may be `text` itself, refer to bytes of `text`, if that would write them
/// as they are. False without a change if not, and for no bytes, since no slice is empty.
bool DocumentStore::TakeSlice(NodeIndex part, NodeIndex text, std::string_view bytes) {
    const NodeRecord& whole = At(text);
    const SourceText& source = SourceOf(whole.begin);
    if (bytes.empty() || !IsAsWritten(bytes, source.lineEnd)) {
        return false;
    }
    NodeRecord& record = At(part);
    record.Set(kSearchable | (whole.Has(kVerbatim) ? kVerbatim : 0));
    record.Clear(kFilled);
    record.Set(IsFilled(bytes, TextForm::kSource) ? kFilled : 0);
    record.begin = source.base + static_cast<std::uint32_t>(bytes.data() - source.text.data());
    record.SetEnd(record.begin + static_cast<std::uint32_t>(bytes.size()));
    return true;
}

void DocumentStore::SetDecoded(NodeIndex text, std::string_view source) {
    std::string content;
    AppendDecodedText(content, source);
    SetContent(text, content);
}

void DocumentStore::SetSourcePart(NodeIndex text, std::string_view part) {
    if (TakeSlice(text, text, part)) {
        NoteContentChange(text);
    } else {
        SetDecoded(text, part);
    }
}

NodeIndex DocumentStore::AddTextPart(NodeIndex text, std::string_view part) {
    const NodeIndex added = Add(NODE_TEXT);
    if (!TakeSlice(added, text, part)) {
        At(added).Set(kCreated);
        SetDecoded(added, part);
    }
    return added;
}

void DocumentStore::AppendContent(NodeIndex index, std::string_view text) {
    NodeRecord& record = At(index);
    if (!record.Has(kOwnContent) || !record.Has(kReplaceable)) {
        std::string buffer;
        SetContent(index, std::string(ContentOf(index, buffer)).append(UpToNul(text)));
        return;
    }
    NoteContentChange(index);
    strings.Append(record.OwnString(), text);
    if (record.Type() == NODE_TEXT) {
        NoteFilled(record, UpToNul(text));
    }
}

NodeIndex DocumentStore::AddQuoted(std::string_view before, std::uint32_t begin, std::uint32_t end,
                                   std::string_view after) {
    const NodeIndex text = Add(NODE_TEXT);
    NodeRecord& record = At(text);
    record.Set(kCreated | kQuoted | kFilled);
    record.begin = begin;
    record.SetEnd(end);
    beforeQuote_ = strings.Intern(before, beforeQuote_);
    afterQuote_ = strings.Intern(after, afterQuote_);
    record.SetOwnString(beforeQuote_);
    record.SetStringAfterQuote(afterQuote_);
    return text;
}

void DocumentStore::PrependContent(NodeIndex text, std::string_view prefix) {
    NodeRecord& record = At(text);
    if (record.Has(kOwnContent | kQuoted)) {
        std::string buffer;
        SetContent(text, std::string(UpToNul(prefix)).append(ContentOf(text, buffer)));
        return;
    }
    NoteContentChange(text);
    if (!record.Has(kPrefixed)) {
        prefix_ = strings.Intern(prefix, prefix_);
        record.SetOwnString(prefix_);
        record.Set(kPrefixed);
    } else {
        SetOwnString(record, std::string(UpToNul(prefix)).append(OwnStringOf(record)));
    }
    NoteFilled(record, OwnStringOf(record));
}

// A node whose string is replaced once may have it replaced a thousand times, a little longer each time. From
// the second string on it is a replaceable one, so that the old strings do not pile up.
void DocumentStore::SetOwnString(NodeRecord& record, std::string_view text) {
    if (record.Has(kReplaceable)) {
        strings.Replace(record.OwnString(), text);
    } else if (record.Has(kOwnContent | kPrefixed) && record.OwnString() != 0) {
        record.SetOwnString(strings.AddReplaceable(text));
        record.Set(kReplaceable);
    } else {
        record.SetOwnString(strings.Add(text));
    }
}

std::uint32_t DocumentStore::ElementEnd(const NodeRecord& element) {
    const std::uint32_t endTag = element.EndTag();
    if (endTag == 0) {
        return StartTagEnd(element);
    }
    // Nothing but whitespace can be between the name of an end tag and its ">".
    const SourceText& source = SourceOf(endTag);
    const char* close = source.text.data() + (endTag - source.base) + sizeof "</" - 1 + element.nameLength;
    while (IsWhitespace(*close)) {
        ++close;
    }
    return source.base + static_cast<std::uint32_t>(close - source.text.data()) + 1;
}

// The ancestors of a modified element are all modified, so the walk up ends at the first one that is.
void DocumentStore::NoteModified(NodeIndex element) {
    while (element != 0 && !At(element).Has(kModified)) {
        At(element).Set(kModified);
        element = At(element).parent;
    }
}

void DocumentStore::NoteContentChange(NodeIndex index) {
    NoteModified(At(index).parent);
    if (listChanges) {
        changedNodes.push_back(index);
    }
}

void DocumentStore::NoteAttributeChange(NodeIndex element) {
    if (element != 0) {
        At(element).Set(kAttributesChanged);
        NoteModified(element);
    }
}

void DocumentStore::SetFirstAttribute(NodeIndex element, NodeIndex attribute) {
    NodeRecord& record = At(element);
    At(attribute).SetOwnersTagEnd(StartTagEnd(record));
    record.SetFirstAttribute(attribute);
}

void DocumentStore::ReadAttributes(NodeIndex element) {
    NodeRecord& record = At(element);
    if (record.Type() != NODE_ELEMENT || record.Has(kAttributesRead)) {
        return;
    }
    record.Set(kAttributesRead);
    ReadSourceAttributes(*this, element);
}

}  // namespace ventrix::xml
