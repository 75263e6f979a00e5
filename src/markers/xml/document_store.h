// The memory behind documents. One store serves a main document and its scratch documents, so that a node can
// move between them without a copy. Offsets are positions in the source texts of the store, laid one behind
// the other; all text is UTF-8.
#pragma once

#include <libxml/tree.h>

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "markers/xml/dom.h"
#include "markers/xml/node_table.h"
#include "markers/xml/text_arena.h"
#include "platform/memory.h"

namespace ventrix::xml {

class QueryTree;

struct FreeXmlDoc {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XmlDocument = std::unique_ptr<xmlDoc, FreeXmlDoc>;

/// One parsed file or text, and what its DTD says.
struct SourceText {
    std::uint32_t base = 0;  ///< The offset of its first byte.
    platform::Bytes bytes;   ///< The text and a NUL.
    std::string_view text;   ///< UTF-8, with a byte-order mark if the file had one.
    std::string encoding;    ///< Of the file, where it is not UTF-8; else empty.
    XmlDocument dtd;         ///< Holds declarations only; null without a DOCTYPE.
    NodeIndex document = 0;
    NodeIndex root = 0;
    std::uint32_t rootEnd = 0;
    bool suppliesAttributes = false;  ///< The DTD has attributes with default values.
    bool tokenizes = false;           ///< The DTD declares attribute types other than CDATA.
    bool hasNamespaces = false;
    bool hasDefaultNamespace = false;  ///< Somewhere in it.
    bool hasDeclarations = false;      ///< The DTD holds some.
};

class DocumentStore {
  public:
    DocumentStore() : texts_(1) {}

    NodeRecord& At(NodeIndex index) { return nodes_[index]; }
    NodeIndex Add(NodeType type) { return nodes_.Add(type); }
    void Reserve(std::size_t nodes) { nodes_.Reserve(nodes); }

    /// In front of a child, or behind the last one for no reference.
    void InsertBefore(NodeIndex parent, NodeIndex child, NodeIndex reference);
    void Unlink(NodeIndex child);

    /// Leaves a document node without children.
    void Clear(NodeIndex document) {
        At(At(document).child).parent = 0;
        At(document).child = 0;
    }

    /// Of an element or a document; 0 for other kinds.
    NodeIndex FirstChild(NodeIndex index) {
        const NodeRecord& record = At(index);
        return record.type == NODE_ELEMENT || record.type == NODE_DOCUMENT ? record.child : 0;
    }
    NodeIndex Previous(NodeIndex index) {
        const NodeIndex previous = At(index).previous;
        return previous != 0 && At(previous).next != 0 ? previous : 0;
    }

    /// Takes a text in. Its base is set; null if the store's offsets are used up.
    SourceText* AddSource(platform::Bytes text);
    SourceText& SourceOf(std::uint32_t offset) {
        return offset <= first_->text.size() ? *first_ : LaterSourceOf(offset);
    }
    std::string_view Slice(std::uint32_t begin, std::uint32_t end) {
        const SourceText& source = SourceOf(begin);
        return {source.text.data() + (begin - source.base), end - begin};
    }

    /// The source whose document node this is; null before anything was loaded.
    SourceText* SourceOfDocument(NodeIndex document);

    /// The number of a text like this, which nothing changes. It ends at the first NUL.
    std::uint32_t AddText(std::string_view text);

    /// The same. A text that came a short while ago, as the same marker in front of many texts, is kept once.
    std::uint32_t ShareText(std::string_view text);
    std::string_view TextAt(std::uint32_t number) const { return texts_[number]; }

    /// The store's text of a node that has one.
    std::string_view OwnTextOf(const NodeRecord& record) const {
        return (record.flags & kRewritten) != 0 ? strings_[record.child] : texts_[record.child];
    }

    std::string_view NameOf(NodeIndex index) {
        const NodeRecord& record = At(index);
        return record.type == NODE_ELEMENT ? Slice(record.begin + 1, record.begin + 1 + record.nameLength)
                                           : AttributeNameOf(record);
    }

    /// Behind the element's last byte in its source.
    std::uint32_t EndOf(const NodeRecord& element);

    /// The content of a text, CDATA section or attribute; `buffer` is filled where the source does not hold
    /// it as it is.
    std::string_view ContentOf(NodeIndex index, std::string& buffer);
    bool IsFilledText(NodeIndex index) {
        const NodeRecord& record = At(index);
        return record.type == NODE_TEXT && (record.flags & kFilled) != 0;
    }
    bool TextStartsWith(NodeIndex text, std::string_view front);
    void SetContent(NodeIndex index, std::string_view text);
    /// A text whose content is the source from `begin` to `end`, escaped, between two texts.
    NodeIndex AddQuoted(std::string_view before, std::uint32_t begin, std::uint32_t end,
                        std::string_view behind);
    /// The text keeps its source bytes, if it has some.
    void PrependContent(NodeIndex text, std::string_view front);

    /// The element's start tag is to be written anew. Nothing happens for no element.
    void ChangeAttributes(NodeIndex element);

    /// The chain of an element's attributes, as far as they stand as nodes.
    NodeIndex FirstAttribute(NodeIndex element) {
        const NodeRecord& record = At(element);
        return (record.flags & kHasAttributes) != 0 ? record.end : 0;
    }
    void SetFirstAttribute(NodeIndex element, NodeIndex attribute);

    /// Behind an element's start tag.
    std::uint32_t TagEnd(const NodeRecord& element) {
        return (element.flags & kHasAttributes) != 0 ? At(element.end).previous : element.end;
    }

    /// Makes sure that an element's attributes stand as nodes.
    void ReadAttributes(NodeIndex element);

    /// Counts with every change of the tree's shape; content changes are listed in `changedNodes` while
    /// someone asks.
    std::uint64_t shape = 0;
    std::vector<NodeIndex> changedNodes;
    bool listChanges = false;

    Node Handle(NodeIndex index) { return {this, index}; }

  private:
    SourceText& LaterSourceOf(std::uint32_t offset);
    std::string_view AttributeNameOf(const NodeRecord& record);
    void NoteChange(NodeIndex index);
    void NoteFilled(NodeRecord& text);
    void PutOwnText(NodeRecord& record, std::string_view text);
    void Touch(NodeIndex element);
    std::string_view TextOf(const NodeRecord& text, std::string& buffer);

    NodeTable nodes_;
    std::deque<SourceText> sources_;
    SourceText* first_ = nullptr;   ///< Most nodes are of this one.
    SourceText* latest_ = nullptr;  ///< Of the others, the one asked for last.
    TextArena arena_;
    std::vector<std::string_view, platform::FullUseAllocator<std::string_view>> texts_;
    std::deque<std::string> strings_;  ///< Texts that were replaced, and may be again. Each is one node's.
    std::array<std::uint32_t, 8> shared_{};  ///< The numbers of the latest shared texts.
    std::size_t nextShared_ = 0;             ///< Counts on; the remainder is the next one's place.

  public:
    /// The copy that the last query made, and of which document. It goes before the nodes that it speaks of.
    std::shared_ptr<QueryTree> queries;
    NodeIndex queriedDocument = 0;
};

}  // namespace ventrix::xml
