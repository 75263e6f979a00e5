// The memory of a main document and its scratch documents, which share one store so that a node can move
// between them without a copy: sources, nodes and strings. The tree keeps offsets into the sources instead of
// copies; docs/xml-document.md explains the design.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "markers/xml/dom.h"
#include "markers/xml/libxml.h"
#include "markers/xml/node_table.h"
#include "markers/xml/references.h"
#include "markers/xml/string_table.h"
#include "platform/memory.h"

namespace ventrix::xml {

class QueryTree;

/// A file or string that was loaded, as UTF-8, and what its DTD declares.
struct SourceText {
    std::uint32_t base = 0;  ///< The offset of its first byte in the store.
    platform::Bytes bytes;   ///< The text and a NUL; room for more in a source of pieces.
    std::string_view text;   ///< With a byte-order mark if the file had one.
    std::string encoding;    ///< Of the file; empty if that is UTF-8.
    XmlDocument dtd;         ///< Holds declarations only; null without a DOCTYPE.
    NodeIndex document = 0;
    NodeIndex root = 0;
    std::uint32_t rootEnd = 0;             ///< Past the root element.
    LineEnd lineEnd = LineEnd::kLineFeed;  ///< Of new text: that of the first line.
    bool hasDeclarations = false;          ///< The DTD declares something.
    bool suppliesAttributes = false;       ///< The DTD declares attributes with default values.
    bool tokenizes = false;                ///< The DTD declares attribute types other than CDATA.
    bool hasNamespaces = false;            ///< Some element declares a namespace, or the DTD may.
    bool hasDefaultNamespace = false;      ///< The same for a default namespace.
};

class DocumentStore {
  public:
    // Nodes

    NodeRecord& At(NodeIndex index) { return nodes_[index]; }
    NodeIndex Add(NodeType type) { return nodes_.Add(NodeRecord(type)); }
    NodeIndex Add(const NodeRecord& record) { return nodes_.Add(record); }
    void Reserve(std::size_t nodes);
    std::size_t NodeCount() const { return nodes_.Size(); }  ///< One more than the highest index.
    Node Handle(NodeIndex index) { return {this, index}; }

    NodeIndex FirstChild(NodeIndex index) { return At(index).FirstChild(); }
    NodeIndex Previous(NodeIndex index) {
        const NodeIndex previous = At(index).PreviousOrLast();
        return previous != 0 && At(previous).next != 0 ? previous : 0;
    }

    /// Inserts before a child of the parent, or after the last one if `reference` is 0.
    void InsertBefore(NodeIndex parent, NodeIndex child, NodeIndex reference);
    void Unlink(NodeIndex child);

    /// Leaves a document node without a root.
    void RemoveRoot(NodeIndex document) {
        At(FirstChild(document)).parent = 0;  // Without a root this is the unused record 0.
        At(document).SetFirstChild(0);
    }

    // Sources. Offsets are positions in all sources of the store, laid end to end.

    /// Adds a source and sets its base; null if the offsets no longer fit in 32 bits.
    SourceText* AddSource(platform::Bytes text);
    /// Adds a piece of XML to a source that it shares with others, as `piece`, whose document node has no
    /// children yet. False if there is no room for it, as for a long one.
    bool AddPiece(std::string_view xml, SourceText& piece);
    /// Removes the piece that was added last. Its nodes must not be used.
    void TakeBackPiece(const SourceText& piece);

    SourceText& SourceOf(std::uint32_t offset) {
        return offset <= first_->text.size() ? *first_ : LaterSourceOf(offset);
    }
    std::string_view Slice(std::uint32_t begin, std::uint32_t end) {
        const SourceText& source = SourceOf(begin);
        return {source.text.data() + (begin - source.base), end - begin};
    }

    /// The source from which this document node was loaded last; null before the first load.
    SourceText* SourceOfDocument(NodeIndex document);

    /// True if no source has namespaces, or declarations in its DTD.
    bool HasOnlyPlainSources() const;

    /// Past the element's start tag.
    std::uint32_t StartTagEnd(const NodeRecord& element) {
        const NodeIndex attribute = element.FirstAttribute();
        return attribute == 0 ? element.End() : At(attribute).OwnersTagEnd();
    }
    /// Past the element.
    std::uint32_t ElementEnd(const NodeRecord& element);

    // Names and content

    std::string_view NameOf(NodeIndex index) {
        const NodeRecord& record = At(index);
        return record.Type() == NODE_ELEMENT ? Slice(record.begin + 1, record.begin + 1 + record.nameLength)
                                             : AttributeNameOf(record);
    }

    /// The content of a text node, CDATA section or attribute. `buffer` is filled where it differs from the
    /// bytes that the store holds.
    std::string_view ContentOf(NodeIndex index, std::string& buffer);
    std::string_view OwnStringOf(const NodeRecord& record) const {
        return record.Has(kReplaceable) ? strings.ReplaceableAt(record.OwnString())
                                        : strings.At(record.OwnString());
    }
    bool IsFilledText(NodeIndex index) {
        const NodeRecord& record = At(index);
        return record.Type() == NODE_TEXT && record.Has(kFilled);
    }
    bool TextStartsWith(NodeIndex text, std::string_view prefix);

    /// Replaces the content of a text node or attribute.
    void SetContent(NodeIndex index, std::string_view content);
    /// The source bytes of a text node, if words can be searched in them as in its content; null otherwise.
    std::string_view SearchableSource(NodeIndex text) {
        const NodeRecord& record = At(text);
        const bool isSource = record.Type() == NODE_TEXT && record.Has(kSearchable) &&
                              !record.Has(kOwnContent | kPrefixed | kQuoted);
        return isSource ? Slice(record.begin, record.End()) : std::string_view();
    }
    /// Replaces the content of a text node by what a part of its SearchableSource stands for.
    void SetSourcePart(NodeIndex text, std::string_view part);
    /// Adds a text node with what a part of the SearchableSource of `text` stands for.
    NodeIndex AddTextPart(NodeIndex text, std::string_view part);
    /// Appends to the content of a text node or attribute.
    void AppendContent(NodeIndex index, std::string_view text);
    /// Adds a prefix to a text node, which keeps its source bytes, if it has some.
    void PrependContent(NodeIndex text, std::string_view prefix);
    /// Adds a text node whose content is `before`, the source from `begin` to `end`, escaped, and `after`.
    NodeIndex AddQuoted(std::string_view before, std::uint32_t begin, std::uint32_t end,
                        std::string_view after);

    // Attributes

    /// Makes nodes of an element's attributes, if that has not been done. Until then FirstAttribute is 0.
    void ReadAttributes(NodeIndex element);
    NodeIndex FirstAttribute(NodeIndex element) { return At(element).FirstAttribute(); }
    void SetFirstAttribute(NodeIndex element, NodeIndex attribute);

    /// Notes that the element's start tag has to be written anew. Ignored for 0.
    void NoteAttributeChange(NodeIndex element);

    StringTable strings;

    /// Counts the changes of the tree's shape. Content changes are listed in `changedNodes` while
    /// `listChanges` is set.
    std::uint64_t shape = 0;
    std::vector<NodeIndex> changedNodes;
    bool listChanges = false;

  private:
    SourceText* AppendSource(platform::Bytes bytes, std::size_t textSize);
    SourceText& LaterSourceOf(std::uint32_t offset);
    std::string_view AttributeNameOf(const NodeRecord& record);
    std::string_view TextNodeContent(const NodeRecord& text, std::string& buffer);
    void SetOwnString(NodeRecord& record, std::string_view text);
    bool TakeSlice(NodeIndex part, NodeIndex text, std::string_view bytes);
    void SetDecoded(NodeIndex text, std::string_view source);
    void NoteContentChange(NodeIndex index);
    void NoteModified(NodeIndex element);

    NodeTable nodes_;
    std::deque<SourceText> sources_;
    SourceText* first_ = nullptr;   ///< The source of most nodes.
    SourceText* latest_ = nullptr;  ///< The one of the others that was used last.
    SourceText* pieces_ = nullptr;  ///< The one that pieces are added to.

    // The strings of the last text nodes of the forms kPrefixed and kQuoted. The next one mostly has the
    // same.
    StringIndex prefix_ = 0, beforeQuote_ = 0, afterQuote_ = 0;

  public:
    /// The copy of a document that the last query made. Declared last: its destructor uses the store.
    std::shared_ptr<QueryTree> queries;
    NodeIndex queriedDocument = 0;
};

}  // namespace ventrix::xml
