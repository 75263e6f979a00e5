#include "markers/xml/writer.h"

#include <algorithm>
#include <array>

#include "markers/xml/characters.h"
#include "markers/xml/namespaces.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

enum class Output { kDocument, kStandalone };

/// The line end of a text that is written into this source: that of its first line.
LineEnd LineEndOf(const SourceText& source) {
    const std::size_t first = source.text.find('\n');
    const bool hasReturn = first != 0 && first != std::string::npos && source.text[first - 1] == '\r';
    return hasReturn ? LineEnd::kReturnAndLineFeed : LineEnd::kLineFeed;
}

constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

class Writer {
  public:
    /// Without a receiver of pieces, all is kept for Finish.
    Writer(DocumentStore& store, Output output, LineEnd lineEnd, const platform::PutPiece* put = nullptr)
        : store_(store), output_(output), lineEnd_(lineEnd), put_(put) {}

    /// Tells that so many bytes may come.
    void Expect(std::size_t size) { out_.reserve(std::min(size, 2 * kPieceSize)); }

    /// Goes through the subtree in document order without a stack of its own: a document may be deeper than
    /// any stack.
    void WriteSubtree(NodeIndex top) {
        NodeIndex index = top;
        while (true) {
            if (IsAsRead(index)) {
                Source(store_.At(index).begin, store_.EndOf(store_.At(index)));
            } else {
                Open(index);
                if (const NodeIndex child = store_.FirstChild(index); child != 0) {
                    index = child;
                    continue;
                }
                Close(index);
            }
            while (index != top && store_.At(index).next == 0) {
                index = store_.At(index).parent;
                Close(index);
            }
            if (index == top) {
                return;
            }
            index = store_.At(index).next;
        }
    }

    /// Puts source bytes out; neighbours in the source go out in one piece.
    void Source(std::uint32_t begin, std::uint32_t end) {
        if (begin != pendingEnd_) {
            Flush();
            pendingBegin_ = begin;
        }
        pendingEnd_ = end;
    }

    std::string Finish() {
        Flush();
        return std::move(out_);
    }

    bool FinishPieces() {
        Flush();
        HandOver(out_.size());
        return taken_;
    }

  private:
    struct EscapedText {
        std::uint32_t number = 0;  ///< 0 is no text.
        std::string text;
    };

    void Flush() {
        const std::string_view piece =
            pendingBegin_ == pendingEnd_ ? std::string_view() : store_.Slice(pendingBegin_, pendingEnd_);
        if (put_ != nullptr && piece.size() >= kPieceSize) {
            HandOver(out_.size());
            taken_ = taken_ && (*put_)(piece);
        } else {
            out_.append(piece);
        }
        pendingBegin_ = pendingEnd_ = 0;
    }

    void HandOver(std::size_t size) {
        taken_ = taken_ && (*put_)(std::string_view(out_).substr(0, size));
        out_.erase(0, size);
    }

    /// An element that goes out with all that is below it as one piece of its source.
    bool IsAsRead(NodeIndex index) {
        const NodeRecord& record = store_.At(index);
        return output_ == Output::kDocument && record.type == NODE_ELEMENT && (record.flags & kTouched) == 0;
    }

    void Open(NodeIndex index) {
        if (put_ != nullptr && out_.size() >= kPieceSize) {
            // Whole pieces only: the system takes in what begins and ends with its pages in larger steps.
            HandOver(out_.size() / kPieceSize * kPieceSize);
        }
        const NodeRecord& record = store_.At(index);
        if (record.type == NODE_ELEMENT) {
            OpenElement(index);
        } else if ((record.flags & kOwnText) != 0) {
            Flush();
            AppendEscapedText(out_, store_.OwnTextOf(record), lineEnd_);
        } else if ((record.flags & kQuoted) != 0) {
            Flush();
            AppendShared(record.child);
            AppendQuotedText(out_, store_.Slice(record.begin, record.end), lineEnd_);
            AppendShared(record.close);
        } else if ((record.flags & kPrefixed) != 0) {
            Flush();
            AppendFront(record);
            Source(record.begin, record.end);
        } else if (output_ == Output::kStandalone && record.type == NODE_ENTITY_REFERENCE) {
            Flush();
            out_ += ExpandEntity(store_.Slice(record.begin + 1, record.end - 1),
                                 store_.SourceOf(record.begin).dtd.get());
        } else {
            Source(record.begin, record.end);
        }
    }

    void AppendFront(const NodeRecord& text) {
        if ((text.flags & kRewritten) != 0) {
            AppendEscapedText(out_, store_.OwnTextOf(text), lineEnd_);
        } else {
            AppendShared(text.child);
        }
    }

    /// What texts near each other share is escaped once.
    void AppendShared(std::uint32_t number) {
        EscapedText& escaped = escaped_[number % escaped_.size()];
        if (escaped.number != number) {
            escaped.number = number;
            escaped.text.clear();
            AppendEscapedText(escaped.text, store_.TextAt(number), lineEnd_);
        }
        out_ += escaped.text;
    }

    void OpenElement(NodeIndex index) {
        const bool rewrites = MustRewrite(index);
        const NodeRecord& record = store_.At(index);
        // An empty-element tag that got content loses its slash.
        const bool gainedContent = record.close == 0 && record.child != 0;
        const std::uint32_t end = store_.TagEnd(record) - (gainedContent ? 2 : 0);
        if (rewrites) {
            RewriteTag(index, end);
        } else {
            Source(record.begin, end);
        }
        if (gainedContent) {
            Flush();
            out_ += '>';
        }
    }

    bool MustRewrite(NodeIndex index) {
        if ((store_.At(index).flags & kAttributesChanged) != 0) {
            return true;
        }
        if (output_ == Output::kDocument || !store_.SourceOf(store_.At(index).begin).hasDeclarations) {
            return false;
        }
        store_.ReadAttributes(index);
        return store_.FirstAttribute(index) != 0;
    }

    /// Writes a start tag up to `end` with its attributes as they are now. The bytes between the attributes
    /// stay.
    void RewriteTag(NodeIndex element, std::uint32_t end) {
        const std::uint32_t begin = store_.At(element).begin;
        Source(begin, begin + 1U + store_.At(element).nameLength);
        for (NodeIndex index = store_.FirstAttribute(element); index != 0; index = store_.At(index).next) {
            WriteAttribute(index);
        }
        const std::string_view tag = store_.Slice(begin, end);
        std::size_t tail = tag.size() - (tag.ends_with("/>") ? 2 : tag.ends_with('>') ? 1 : 0);
        while (IsBlank(tag[tail - 1])) {
            --tail;
        }
        Source(begin + static_cast<std::uint32_t>(tail), end);
    }

    void WriteAttribute(NodeIndex index) {
        const NodeRecord& record = store_.At(index);
        if ((record.flags & kFromDtd) != 0 &&
            (output_ == Output::kDocument || DeclaredPrefix(store_.NameOf(index)).data() == nullptr)) {
            return;
        }
        if ((record.flags & kCreated) != 0) {
            Flush();
            out_.append(" ").append(store_.NameOf(index)).append("=");
            WriteValue(index, '"');
            return;
        }
        std::uint32_t begin = record.begin;
        while (IsBlank(store_.Slice(begin - 1, begin)[0])) {
            --begin;
        }
        if ((record.flags & kOwnText) == 0 && (output_ == Output::kDocument || !HasReference(record))) {
            Source(begin, record.end);
            return;
        }
        Source(begin, record.close - 1);
        Flush();
        WriteValue(index, store_.Slice(record.end - 1, record.end)[0]);
    }

    bool HasReference(const NodeRecord& attribute) {
        return store_.Slice(attribute.close, attribute.end).find('&') != std::string_view::npos;
    }

    void WriteValue(NodeIndex attribute, char quote) {
        out_ += quote;
        AppendEscapedValue(out_, store_.ContentOf(attribute, buffer_), quote);
        out_ += quote;
    }

    void Close(NodeIndex index) {
        const NodeRecord& record = store_.At(index);
        if (record.type != NODE_ELEMENT) {
            return;
        }
        if (record.close != 0) {
            Source(record.close, store_.EndOf(record));
        } else if (record.child != 0) {
            Flush();
            out_ += "</";
            out_ += store_.NameOf(index);
            out_ += '>';
        }
    }

    DocumentStore& store_;
    Output output_;
    LineEnd lineEnd_;
    const platform::PutPiece* put_;
    bool taken_ = true;  ///< All pieces so far.
    std::string out_;
    std::string buffer_;
    std::array<EscapedText, 16> escaped_;
    std::uint32_t pendingBegin_ = 0, pendingEnd_ = 0;
};

}  // namespace

bool WriteDocument(DocumentStore& store, const SourceText& source, const platform::PutPiece& put) {
    Writer writer(store, Output::kDocument, LineEndOf(source), &put);
    writer.Expect(2 * source.text.size());
    const NodeIndex root = store.FirstChild(source.document);
    const std::uint32_t prologEnd = store.At(source.root).begin;
    writer.Source(source.base, prologEnd);
    if (root != 0) {
        writer.WriteSubtree(root);
    }
    writer.Source(source.rootEnd, source.base + static_cast<std::uint32_t>(source.text.size()));
    return writer.FinishPieces();
}

bool StandsAlone(DocumentStore& store, NodeIndex element) {
    const NodeRecord& record = store.At(element);
    const SourceText& source = store.SourceOf(record.begin);
    return (record.flags & kTouched) == 0 && !source.hasNamespaces && !source.hasDeclarations;
}

std::string WriteElement(DocumentStore& store, NodeIndex element) {
    Writer writer(store, Output::kStandalone, LineEnd::kLineFeed);
    writer.WriteSubtree(element);
    std::string xml = writer.Finish();
    const std::string declarations = MissingNamespaces(store, element);
    if (!declarations.empty()) {
        xml.insert(1 + store.NameOf(element).size(), declarations);
    }
    return xml;
}

}  // namespace ventrix::xml
