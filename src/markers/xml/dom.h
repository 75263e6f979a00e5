// The XML document object model, as far as the document passes use it, under its own method names.
// A Document owns everything of it; Node, NamedNodeMap and NodeList are handles that own nothing and hold as
// long as that document does, also for nodes that were taken out of the tree. A null node answers every
// question with "nothing" and ignores every change. Texts are UTF-8 and end at the first NUL; paths are in
// system notation.
//
// Saving keeps every byte of what was not changed: quotes, line ends, `<a></a>`, character references, the
// DOCTYPE.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/memory.h"

namespace ventrix::xml {

class DocumentStore;
class NamedNodeMap;

enum NodeType : int {
    NODE_INVALID = 0,  ///< A null node.
    NODE_ELEMENT = 1,
    NODE_ATTRIBUTE = 2,
    NODE_TEXT = 3,
    NODE_CDATA_SECTION = 4,
    NODE_ENTITY_REFERENCE = 5,
    NODE_PROCESSING_INSTRUCTION = 7,
    NODE_COMMENT = 8,
    NODE_DOCUMENT = 9
};

class Node {
  public:
    Node() = default;

    explicit operator bool() const { return store_ != nullptr; }
    bool operator==(const Node&) const = default;

    NodeType get_nodeType() const { return TypeOf(*this); }

    /// The qualified name as written of an element or an attribute, prefix included; empty for other kinds.
    /// The text lives as long as the document.
    std::string_view get_nodeName() const { return NameOf(*this); }

    /// An attribute has no parent here; the root's parent is the document node, which has none.
    Node get_parentNode() const { return ParentOf(*this); }
    Node get_firstChild() const { return FirstChildOf(*this); }
    Node get_nextSibling() const { return NextOf(*this); }
    Node get_previousSibling() const { return PreviousOf(*this); }

    /// An element's attributes in the document's order; those that the DTD supplies stand behind. Empty for
    /// other kinds.
    NamedNodeMap get_attributes() const;

    /// Text, CDATA section: its content, line ends read as line feeds. Attribute: its value, references
    /// expanded and white space normalised. Empty for other kinds.
    std::string get_text() const;

    /// The same without a copy where the document holds the text as it stands; otherwise `buffer` is filled.
    /// The view holds until the buffer or this node is changed.
    std::string_view get_text(std::string& buffer) const { return TextOf(*this, buffer); }

    /// True for a text node that holds more than spaces, tabs, line feeds and carriage returns. Costs no look
    /// at the text.
    bool IsFilledText() const { return HasFilledText(*this); }

    /// Puts something in front of a text node's content, whose bytes stay as the file has them.
    void prepend_text(std::string_view text) { PrependText(*this, text); }

    /// Replaces the content of a text node or the value of an attribute. What XML cannot hold, a control
    /// character or a byte that is no UTF-8, is saved as U+FFFD.
    void put_text(std::string_view text) { SetText(*this, text); }
    void put_value(std::string_view value) { SetText(*this, value); }

    /// An element with its subtree as XML that parses on its own: it carries the namespace declarations that
    /// it needs from around it, and declared entities stand expanded. Empty for other kinds.
    std::string get_xml() const;

    /// True if the content of a text begins so. Mostly costs no look at more than the front of it.
    bool StartsWith(std::string_view front) const { return TextStartsWith(*this, front); }

    /// Puts `child` in front of `reference`, a child of this element, or behind the last child for a null
    /// reference. The child is taken from where it stood. It may come from a scratch document of this
    /// document. What would not give a tree is ignored: a child that holds this element, a reference that is
    /// no child, an attribute.
    void insertBefore(Node child, Node reference) { Insert(*this, child, reference); }

    /// Takes a child of this element out of the tree.
    void removeChild(Node child) { Remove(*this, child); }

  private:
    friend class Document;
    friend class DocumentStore;
    friend class NamedNodeMap;
    friend class NodeList;

    // What the methods do. They take the node by value: a handle whose address nobody needs stays in
    // registers, and a walk asks many questions of each node.
    static NodeType TypeOf(Node node);
    static std::string_view NameOf(Node node);
    static Node ParentOf(Node node);
    static Node FirstChildOf(Node node);
    static Node NextOf(Node node);
    static Node PreviousOf(Node node);
    static std::string_view TextOf(Node node, std::string& buffer);
    static bool TextStartsWith(Node node, std::string_view front);
    static bool HasFilledText(Node node);
    static void PrependText(Node node, std::string_view front);
    static void SetText(Node node, std::string_view text);
    static void Insert(Node parent, Node child, Node reference);
    static void Remove(Node parent, Node child);

    Node(DocumentStore* store, std::uint32_t index) : store_(index == 0 ? nullptr : store), index_(index) {}

    DocumentStore* store_ = nullptr;
    std::uint32_t index_ = 0;
};

/// The attributes of one element. Going through the positions in order is linear.
class NamedNodeMap {
  public:
    std::size_t get_length() const { return length_; }

    /// By position from 0; a null node beyond the end.
    Node get_item(std::size_t position) const;

    /// Adds an attribute from createAttribute of the same document; it takes the place of one of that name.
    void setNamedItem(Node attribute);

  private:
    friend class Node;
    explicit NamedNodeMap(Node element);

    Node element_;
    std::size_t length_ = 0;
    mutable Node last_;  ///< The item asked for last, and its position.
    mutable std::size_t lastPosition_ = 0;
};

/// What a query selected, in document order.
class NodeList {
  public:
    std::size_t get_length() const { return nodes_.size(); }

    /// By position from 0; a null node beyond the end. Null too for a selected node that has no handle: an
    /// attribute that declares a namespace, and what stands inside an entity.
    Node get_item(std::size_t position) const { return position < nodes_.size() ? nodes_[position] : Node(); }

  private:
    friend class DocumentStore;
    std::vector<Node> nodes_;
};

class ParseError {
  public:
    explicit ParseError(std::string reason) : reason_(std::move(reason)) {}

    /// One line of text without a line break at its end; empty if nothing went wrong. A reference to an
    /// entity that nothing declares gives a reason with the words "undefined entity".
    const std::string& get_reason() const { return reason_; }

  private:
    std::string reason_;
};

class Document {
  public:
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// Loading always finishes before it returns, never validates and keeps all white space: the other values
    /// of these three are ignored.
    void put_async(bool) {}
    void put_validateOnParse(bool) {}
    void put_preserveWhiteSpace(bool) {}

    /// On: the external part of the DTD is read, from a local file only, whichever way its system id names
    /// it. Off, as at first: entities that it would declare are undefined, and a reference to one fails the
    /// load.
    void put_resolveExternals(bool resolve) { resolveExternals_ = resolve; }

    /// "ProhibitDTD", "NormalizeAttributeValues", "SelectionLanguage": a DOCTYPE is always allowed, values
    /// are always normalised, queries are always XPath.
    void setProperty(std::string_view, bool) {}
    void setProperty(std::string_view, const char*) {}

    /// Parses a file, in any encoding that it declares, in place of what the document held. False leaves no
    /// root element and a reason.
    bool load(std::string_view path);

    /// Parses a text, which is UTF-8 whatever it declares. False as for `load`.
    bool loadXML(std::string_view text);

    ParseError get_parseError() const { return ParseError(reason_); }

    /// The root element, or a null node.
    Node get_documentElement() const;

    /// A new text node, not yet in the tree.
    Node createTextNode(std::string_view text);

    /// The same, of `before`, the element's XML with its five markup characters escaped, and `behind`,
    /// without a copy of the XML: later changes of the element change nothing. A null node where the document
    /// does not hold the element as get_xml would give it.
    Node createQuotedXml(std::string_view before, Node element, std::string_view behind);

    /// A new attribute without a value, not yet on an element; a null node for a text that is no XML name.
    Node createAttribute(std::string_view name);

    /// Writes the document in the encoding in which it was loaded; characters that it lacks become character
    /// references. The file changes as a whole, or on failure (false) not at all.
    bool save(std::string_view path);

    /// The nodes that an XPath expression selects; texts that were inserted or changed count as they are now.
    /// No list for an expression that is none, has a prefix, or does not select nodes. Queries between which
    /// only texts and attribute values change share their preparation.
    std::optional<NodeList> selectNodes(std::string_view query);

  private:
    friend std::unique_ptr<Document> CreateDocument();
    friend std::unique_ptr<Document> CreateScratchDocument(Document& main);
    explicit Document(std::shared_ptr<DocumentStore> store);

    bool Build(std::string_view path, platform::Bytes bytes, bool isFile);

    std::shared_ptr<DocumentStore> store_;
    std::uint32_t index_ = 0;  ///< The document node.
    std::string reason_;
    bool resolveExternals_ = false;
};

/// An empty document; null where the system has no document model. Released by whoever holds the pointer.
std::unique_ptr<Document> CreateDocument();

/// An empty document for a piece of XML. Its nodes may be inserted into `main`, and live on as long as main
/// does, also when the scratch document was released long ago.
std::unique_ptr<Document> CreateScratchDocument(Document& main);

}  // namespace ventrix::xml
