#include "markers/xml/document_store.h"

#include <algorithm>

#include "markers/xml/attributes.h"
#include "markers/xml/characters.h"
#include "markers/xml/escaping.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

std::string_view UpToNul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

}  // namespace

void DocumentStore::InsertBefore(NodeIndex parent, NodeIndex child, NodeIndex reference) {
    Touch(parent);
    NodeRecord& above = At(parent);
    NodeRecord& record = At(child);
    record.parent = parent;
    record.next = reference;
    if (above.child == 0) {
        above.child = record.previous = child;
        return;
    }
    // Behind the last child is in front of the first one, except that the first one stays that.
    NodeRecord& behind = At(reference == 0 ? above.child : reference);
    record.previous = behind.previous;
    (reference == above.child ? above.child : At(behind.previous).next) = child;
    behind.previous = child;
}

void DocumentStore::Unlink(NodeIndex child) {
    NodeRecord& record = At(child);
    if (record.parent == 0) {
        return;
    }
    Touch(record.parent);
    NodeRecord& above = At(record.parent);
    At(record.next == 0 ? above.child : record.next).previous = record.previous;
    (above.child == child ? above.child : At(record.previous).next) = record.next;
    record.parent = record.next = record.previous = 0;
}

SourceText* DocumentStore::AddSource(platform::Bytes text) {
    const std::uint64_t base =
        sources_.empty() ? 0 : std::uint64_t{sources_.back().base} + sources_.back().text.size() + 1;
    if (base + text.size() >= UINT32_MAX) {
        return nullptr;
    }
    SourceText& source = sources_.emplace_back();
    source.base = static_cast<std::uint32_t>(base);
    arena_.Expect(text.size());
    source.bytes = std::move(text);
    source.bytes.push_back('\0');
    source.text = {source.bytes.data(), source.bytes.size() - 1};
    first_ = &sources_.front();
    return latest_ = &source;
}

SourceText& DocumentStore::LaterSourceOf(std::uint32_t offset) {
    if (offset < latest_->base || offset - latest_->base > latest_->text.size()) {
        latest_ = &*std::prev(std::ranges::upper_bound(sources_, offset, {}, &SourceText::base));
    }
    return *latest_;
}

SourceText* DocumentStore::SourceOfDocument(NodeIndex document) {
    // A document that was loaded more than once has its latest source behind the others.
    const auto found = std::find_if(sources_.rbegin(), sources_.rend(),
                                    [&](const SourceText& source) { return source.document == document; });
    return found == sources_.rend() ? nullptr : &*found;
}

std::uint32_t DocumentStore::AddText(std::string_view text) {
    if (texts_.size() == texts_.capacity()) {
        // Texts come in some proportion to nodes; growth in many steps would copy them again and again.
        texts_.reserve(std::max(2 * texts_.size(), nodes_.Size() / 4));
    }
    texts_.push_back(arena_.Keep(UpToNul(text)));
    return static_cast<std::uint32_t>(texts_.size() - 1);
}

std::uint32_t DocumentStore::ShareText(std::string_view text) {
    const auto known =
        std::ranges::find_if(shared_, [&](std::uint32_t number) { return texts_[number] == text; });
    if (known != shared_.end()) {
        return *known;
    }
    const std::uint32_t number = AddText(text);
    shared_[nextShared_++ % shared_.size()] = number;
    return number;
}

std::string_view DocumentStore::AttributeNameOf(const NodeRecord& record) {
    if (record.type != NODE_ATTRIBUTE) {
        return {};
    }
    return (record.flags & kCreated) != 0 ? texts_[record.close]
                                          : Slice(record.begin, record.begin + record.nameLength);
}

std::string_view DocumentStore::ContentOf(NodeIndex index, std::string& buffer) {
    const NodeRecord& record = At(index);
    if ((record.flags & kOwnText) != 0) {
        return OwnTextOf(record);
    }
    switch (record.type) {
        case NODE_TEXT:
            return TextOf(record, buffer);
        case NODE_CDATA_SECTION: {
            constexpr std::uint32_t kOpening = sizeof "<![CDATA[" - 1;
            constexpr std::uint32_t kClosing = sizeof "]]>" - 1;
            return buffer = NormalizeLineEnds(Slice(record.begin + kOpening, record.end - kClosing));
        }
        case NODE_ATTRIBUTE:
            return SourceValue(*this, index, buffer);
        default:
            return {};
    }
}

std::string_view DocumentStore::TextOf(const NodeRecord& text, std::string& buffer) {
    const std::string_view raw = Slice(text.begin, text.end);
    const bool isSurrounded = (text.flags & (kPrefixed | kQuoted)) != 0;
    if (!isSurrounded && (text.flags & kVerbatim) != 0) {
        return raw;
    }
    buffer = isSurrounded ? OwnTextOf(text) : std::string_view();
    if ((text.flags & kQuoted) != 0) {
        AppendEscaped(buffer, raw, kMarkupEscapes);
        buffer += texts_[text.close];
    } else {
        AppendDecodedText(buffer, raw);
    }
    return buffer;
}

bool DocumentStore::TextStartsWith(NodeIndex text, std::string_view front) {
    const NodeRecord& record = At(text);
    if (front.empty()) {
        return true;
    }
    if ((record.flags & (kOwnText | kPrefixed | kQuoted)) == 0) {
        // A reference or a line end, which may read as something else, is the only other beginning.
        const std::string_view raw = Slice(record.begin, record.end);
        if (raw[0] != front[0] && raw[0] != '&' && raw[0] != '\r') {
            return false;
        }
    }
    std::string buffer;
    return ContentOf(text, buffer).starts_with(front);
}

void DocumentStore::SetContent(NodeIndex index, std::string_view text) {
    NoteChange(index);
    NodeRecord& record = At(index);
    if (record.type == NODE_ATTRIBUTE) {
        record.flags &= static_cast<std::uint8_t>(~kFromDtd);
        ChangeAttributes(record.parent);
    }
    PutOwnText(record, text);
    record.flags = static_cast<std::uint8_t>((record.flags & ~(kPrefixed | kQuoted | kFilled)) | kOwnText);
    NoteFilled(record);
}

NodeIndex DocumentStore::AddQuoted(std::string_view before, std::uint32_t begin, std::uint32_t end,
                                   std::string_view behind) {
    const NodeIndex text = Add(NODE_TEXT);
    NodeRecord& record = At(text);
    record.flags = kCreated | kQuoted | kFilled;
    record.begin = begin;
    record.end = end;
    record.child = ShareText(before);
    record.close = ShareText(behind);
    return text;
}

void DocumentStore::PrependContent(NodeIndex text, std::string_view front) {
    NodeRecord& record = At(text);
    std::string buffer;
    if ((record.flags & (kOwnText | kQuoted)) != 0) {
        SetContent(text, std::string(UpToNul(front)).append(ContentOf(text, buffer)));
        return;
    }
    NoteChange(text);
    if ((record.flags & kPrefixed) == 0) {
        record.child = ShareText(front);
        record.flags |= kPrefixed;
    } else {
        PutOwnText(record, std::string(UpToNul(front)).append(OwnTextOf(record)));
    }
    NoteFilled(record);
}

// A node whose text is replaced once may have it replaced a thousand times, a little longer each time. So
// from then on the new one takes the old one's place.
void DocumentStore::PutOwnText(NodeRecord& record, std::string_view text) {
    if ((record.flags & kRewritten) != 0) {
        strings_[record.child] = UpToNul(text);
    } else if ((record.flags & (kOwnText | kPrefixed)) != 0 && record.child != 0) {
        strings_.emplace_back(UpToNul(text));
        record.child = static_cast<std::uint32_t>(strings_.size() - 1);
        record.flags |= kRewritten;
    } else {
        record.child = AddText(text);
    }
}

/// A text that has one of the store's is filled if that is.
void DocumentStore::NoteFilled(NodeRecord& text) {
    if (!std::ranges::all_of(OwnTextOf(text), IsBlank)) {
        text.flags |= kFilled;
    }
}

std::uint32_t DocumentStore::EndOf(const NodeRecord& element) {
    if (element.close == 0) {
        return TagEnd(element);
    }
    const SourceText& source = SourceOf(element.close);
    const std::size_t end = source.text.find('>', element.close - source.base);
    return source.base + static_cast<std::uint32_t>(end + 1);
}

// Above an element that is touched, all are.
void DocumentStore::Touch(NodeIndex element) {
    while (element != 0 && (At(element).flags & kTouched) == 0) {
        At(element).flags |= kTouched;
        element = At(element).parent;
    }
}

void DocumentStore::NoteChange(NodeIndex index) {
    Touch(At(index).parent);
    if (listChanges) {
        changedNodes.push_back(index);
    }
}

void DocumentStore::ChangeAttributes(NodeIndex element) {
    if (element != 0) {
        At(element).flags |= kAttributesChanged;
        Touch(element);
    }
}

void DocumentStore::SetFirstAttribute(NodeIndex element, NodeIndex attribute) {
    NodeRecord& record = At(element);
    At(attribute).previous = TagEnd(record);
    record.end = attribute;
    record.flags |= kHasAttributes;
}

void DocumentStore::ReadAttributes(NodeIndex element) {
    NodeRecord& record = At(element);
    if (record.type != NODE_ELEMENT || (record.flags & kAttributesRead) != 0) {
        return;
    }
    record.flags |= kAttributesRead;
    ReadSourceAttributes(*this, element);
}

}  // namespace ventrix::xml
