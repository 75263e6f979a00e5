#include "markers/xml/writer.h"

#include <algorithm>
#include <array>

#include "markers/xml/attributes.h"
#include "markers/xml/characters.h"
#include "markers/xml/markup_pieces.h"
#include "markers/xml/namespaces.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

enum class Output { kDocument, kStandalone };

constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

/// Walks a tree in document order. What still is in a source is not written at once, but becomes the pending
/// slice, which grows as long as the next slice continues it: an unchanged subtree, and any run of unchanged
/// nodes, is copied as one piece. Anything else is appended to `out_` after a Flush of the pending slice.
/// With a receiver, `out_` is passed on whenever it exceeds kPieceSize, and a long slice goes to the receiver
/// without a copy.
class Writer {
  public:
    /// Without a receiver of pieces, everything is kept for Finish.
    Writer(DocumentStore& store, Output output, LineEnd lineEnd, const platform::PutPiece* put = nullptr)
        : store_(store), output_(output), lineEnd_(lineEnd), put_(put) {}

    /// Announces about how many bytes will be written.
    void Expect(std::size_t size) { out_.reserve(std::min(size, 2 * kPieceSize)); }

    /// Visits the subtree by the links of its nodes, without recursion: a document may be deeper than any
    /// stack.
    void WriteSubtree(NodeIndex top) {
        NodeIndex index = top;
        while (true) {
            const NodeRecord& record = store_.At(index);
            if (record.Type() != NODE_ELEMENT) {
                WriteLeaf(record);
            } else if (IsUnchanged(record)) {
                AddSlice(record.begin, store_.ElementEnd(record));
            } else {
                OpenElement(index);
                if (const NodeIndex child = store_.FirstChild(index); child != 0) {
                    index = child;
                    continue;
                }
                CloseElement(index);
            }
            while (index != top && store_.At(index).next == 0) {
                index = store_.At(index).parent;
                CloseElement(index);
            }
            if (index == top) {
                return;
            }
            index = store_.At(index).next;
        }
    }

    /// Writes source bytes.
    void AddSlice(std::uint32_t begin, std::uint32_t end) {
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
        PassOn(out_.size());
        return accepted_;
    }

  private:
    struct EscapedString {
        StringIndex index = 0;  ///< 0 for none.
        std::string text;
    };

    void Flush() {
        const std::string_view piece =
            pendingBegin_ == pendingEnd_ ? std::string_view() : store_.Slice(pendingBegin_, pendingEnd_);
        if (put_ != nullptr && piece.size() >= kPieceSize) {
            PassOn(out_.size());
            accepted_ = accepted_ && (*put_)(piece);
        } else {
            out_.append(piece);
        }
        pendingBegin_ = pendingEnd_ = 0;
        if (put_ != nullptr && out_.size() >= kPieceSize) {
            // Multiples of the piece size only: the system copies whole pages faster.
            PassOn(out_.size() / kPieceSize * kPieceSize);
        }
    }

    void PassOn(std::size_t size) {
        accepted_ = accepted_ && (*put_)(std::string_view(out_).substr(0, size));
        out_.erase(0, size);
    }

    /// True if the element's source bytes represent all of its subtree.
    bool IsUnchanged(const NodeRecord& element) const {
        return output_ == Output::kDocument && !element.Has(kModified);
    }

    void WriteLeaf(const NodeRecord& record) {
        if (record.Has(kOwnContent)) {
            Flush();
            AppendEscapedText(out_, store_.OwnStringOf(record), lineEnd_);
        } else if (record.Has(kQuoted)) {
            Flush();
            AppendInterned(record.OwnString());
            AppendQuotedText(out_, store_.Slice(record.begin, record.End()), lineEnd_);
            AppendInterned(record.StringAfterQuote());
        } else if (record.Has(kPrefixed)) {
            Flush();
            AppendPrefix(record);
            AddSlice(record.begin, record.End());
        } else if (output_ == Output::kStandalone && record.Type() == NODE_ENTITY_REFERENCE) {
            Flush();
            out_ += ExpandEntity(store_.Slice(record.begin + 1, record.End() - 1),
                                 store_.SourceOf(record.begin).dtd.get());
        } else {
            AddSlice(record.begin, record.End());
        }
    }

    void AppendPrefix(const NodeRecord& text) {
        if (text.Has(kReplaceable)) {
            AppendEscapedText(out_, store_.OwnStringOf(text), lineEnd_);
        } else {
            AppendInterned(text.OwnString());
        }
    }

    /// A string that text nodes near each other share is escaped once.
    void AppendInterned(StringIndex index) {
        EscapedString& escaped = escaped_[index % escaped_.size()];
        if (escaped.index != index) {
            escaped.index = index;
            escaped.text.clear();
            AppendEscapedText(escaped.text, store_.strings.At(index), lineEnd_);
        }
        out_ += escaped.text;
    }

    void OpenElement(NodeIndex index) {
        const bool rewrites = MustRewrite(index);
        const NodeRecord& record = store_.At(index);
        // An empty-element tag whose element has got children loses its slash.
        const bool gainedContent = record.EndTag() == 0 && record.FirstChild() != 0;
        const std::uint32_t end = store_.StartTagEnd(record) - (gainedContent ? 2 : 0);
        if (rewrites) {
            RewriteTag(index, end);
        } else {
            AddSlice(record.begin, end);
        }
        if (gainedContent) {
            Flush();
            out_ += '>';
        }
    }

    /// In a piece of XML that has to stand alone, references to declared entities in attribute values are
    /// expanded too.
    bool MustRewrite(NodeIndex index) {
        if (store_.At(index).Has(kAttributesChanged)) {
            return true;
        }
        if (output_ == Output::kDocument || !store_.SourceOf(store_.At(index).begin).hasDeclarations) {
            return false;
        }
        store_.ReadAttributes(index);
        return store_.FirstAttribute(index) != 0;
    }

    /// Writes a start tag up to `end` with the current attributes. The bytes between the attributes are
    /// preserved.
    void RewriteTag(NodeIndex element, std::uint32_t end) {
        const std::uint32_t begin = store_.At(element).begin;
        AddSlice(begin, begin + 1U + store_.At(element).nameLength);
        for (NodeIndex index = store_.FirstAttribute(element); index != 0; index = store_.At(index).next) {
            WriteAttribute(index);
        }
        const std::string_view tag = store_.Slice(begin, end);
        std::size_t tail = tag.size() - (tag.ends_with("/>") ? 2 : tag.ends_with('>') ? 1 : 0);
        while (IsWhitespace(tag[tail - 1])) {
            --tail;
        }
        AddSlice(begin + static_cast<std::uint32_t>(tail), end);
    }

    void WriteAttribute(NodeIndex index) {
        const NodeRecord& record = store_.At(index);
        if (record.Has(kFromDtd) &&
            (output_ == Output::kDocument || DeclaredPrefix(store_.NameOf(index)).data() == nullptr)) {
            return;
        }
        if (record.Has(kCreated)) {
            Flush();
            out_.append(" ").append(store_.NameOf(index)).append("=");
            WriteValue(index, '"');
            return;
        }
        std::uint32_t begin = record.begin;
        while (IsWhitespace(store_.Slice(begin - 1, begin)[0])) {
            --begin;
        }
        if (!record.Has(kOwnContent) && (output_ == Output::kDocument || !DependsOnDtd(index))) {
            AddSlice(begin, record.End());
            return;
        }
        AddSlice(begin, record.ValueBegin() - 1);
        Flush();
        WriteValue(index, store_.Slice(record.End() - 1, record.End())[0]);
    }

    /// True if the value may refer to a declared entity or is normalised by its declared type.
    bool DependsOnDtd(NodeIndex attribute) {
        const NodeRecord& record = store_.At(attribute);
        const std::string_view raw = store_.Slice(record.ValueBegin(), record.End() - 1);
        return raw.find('&') != std::string_view::npos ||
               (DeclaredType(store_, attribute) != XML_ATTRIBUTE_CDATA &&
                store_.ContentOf(attribute, buffer_) != raw);
    }

    void WriteValue(NodeIndex attribute, char quote) {
        out_ += quote;
        AppendEscapedValue(out_, store_.ContentOf(attribute, buffer_), quote);
        out_ += quote;
    }

    void CloseElement(NodeIndex index) {
        const NodeRecord& record = store_.At(index);
        if (record.EndTag() != 0) {
            AddSlice(record.EndTag(), store_.ElementEnd(record));
        } else if (record.FirstChild() != 0) {
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
    bool accepted_ = true;  ///< The receiver accepted all pieces so far.
    std::string out_;
    std::string buffer_;
    std::array<EscapedString, 16> escaped_;
    std::uint32_t pendingBegin_ = 0, pendingEnd_ = 0;  ///< The pending slice.
};

constexpr std::string_view kCdataEnd = "]]>";

/// Escapes the end of a CDATA section in text, where no XML may have it. Expanded entities may join its
/// parts.
std::string WithoutCdataEndsInText(std::string_view xml) {
    std::string escaped;
    while (!xml.empty()) {
        const MarkupPiece piece = TakePiece(xml);
        std::string_view rest = piece.text;
        std::size_t found = 0;
        while (piece.kind == PieceKind::kText && (found = Find(rest, kCdataEnd)) != std::string_view::npos) {
            escaped.append(rest.substr(0, found)).append("]]&gt;");
            rest.remove_prefix(found + kCdataEnd.size());
        }
        escaped += rest;
    }
    return escaped;
}

}  // namespace

bool WriteDocument(DocumentStore& store, const SourceText& source, const platform::PutPiece& put) {
    Writer writer(store, Output::kDocument, source.lineEnd, &put);
    writer.Expect(2 * source.text.size());
    const NodeIndex root = store.FirstChild(source.document);
    const std::uint32_t prologEnd = store.At(source.root).begin;
    writer.AddSlice(source.base, prologEnd);
    if (root != 0) {
        writer.WriteSubtree(root);
    }
    writer.AddSlice(source.rootEnd, source.base + static_cast<std::uint32_t>(source.text.size()));
    return writer.FinishPieces();
}

bool StandsAlone(DocumentStore& store, NodeIndex element) {
    const NodeRecord& record = store.At(element);
    const SourceText& source = store.SourceOf(record.begin);
    return !record.Has(kModified) && !source.hasNamespaces && !source.hasDeclarations;
}

std::string WriteElement(DocumentStore& store, NodeIndex element) {
    Writer writer(store, Output::kStandalone, LineEnd::kLineFeed);
    writer.WriteSubtree(element);
    std::string xml = writer.Finish();
    if (store.SourceOf(store.At(element).begin).hasDeclarations && xml.find(kCdataEnd) != std::string::npos) {
        xml = WithoutCdataEndsInText(xml);
    }
    const std::string declarations = MissingNamespaces(store, element);
    if (!declarations.empty()) {
        xml.insert(1 + store.NameOf(element).size(), declarations);
    }
    return xml;
}

}  // namespace ventrix::xml
