// The XML document object model, as far as the document passes use it, under the DOM's own method names.
// There is one implementation for all platforms; docs/xml-document.md describes it.
//
// A Document owns its nodes. Node, NamedNodeMap and NodeList are handles that own nothing; they stay valid as
// long as that document, even for nodes that were removed from the tree. A null node answers every question
// with "nothing" and ignores every change. Strings are UTF-8 and end at the first NUL; paths are in system
// notation.
//
// Saving preserves every byte of what was not changed: quotes, line ends, `<a></a>`, character references,
// the DOCTYPE.
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

    /// The qualified name of an element or attribute as written, prefix included; empty for other kinds. The
    /// view is valid as long as the document.
    std::string_view get_nodeName() const { return NameOf(*this); }

    /// Null for an attribute. The root's parent is the document node, which has none.
    Node get_parentNode() const { return ParentOf(*this); }
    Node get_firstChild() const { return FirstChildOf(*this); }
    Node get_nextSibling() const { return NextSiblingOf(*this); }
    Node get_previousSibling() const { return PreviousSiblingOf(*this); }

    /// An element's attributes in document order, followed by those that the DTD supplies. Empty for other
    /// kinds.
    NamedNodeMap get_attributes() const;

    /// Text node, CDATA section: its content, with line ends as line feeds. Attribute: its value, with
    /// references expanded and whitespace normalised. Empty for other kinds. The view points into the
    /// document where it holds the string in this form, otherwise into `buffer`, which is overwritten; it is
    /// valid until the buffer or this node changes.
    std::string_view get_text(std::string& buffer) const { return ReadText(*this, buffer); }

    /// True for a text node that holds more than spaces, tabs, line feeds and carriage returns. O(1).
    bool IsFilledText() const { return HasFilledText(*this); }

    /// True if this is a text node whose content starts with `prefix`. Rarely looks at more than the first
    /// byte.
    bool StartsWith(std::string_view prefix) const { return TextStartsWith(*this, prefix); }

    /// The bytes that a text node has in its file, if a search for a word finds the same in them as in the
    /// content: no letter, digit or underscore is written as a reference. Null without such bytes.
    std::string_view get_source() const { return SourceOf(*this); }

    /// Reduces the content of a text node to what a part of get_source() stands for. Mostly the bytes stay
    /// where they are.
    void put_source(std::string_view part) { SetSourcePart(*this, part); }

    /// Replaces the content of a text node or the value of an attribute; ignored for other kinds. What XML
    /// cannot represent, a control character or a byte that is not UTF-8, is saved as U+FFFD.
    void put_text(std::string_view text) { SetText(*this, text); }
    void put_value(std::string_view value) { put_text(value); }

    /// Appends to the content of a text node or the value of an attribute; ignored for other kinds. A run of
    /// calls for one node takes time in proportion to what they append.
    void append_text(std::string_view text) { AppendText(*this, text); }

    /// Inserts `prefix` before the content of a text node, whose own bytes stay as the file has them.
    void prepend_text(std::string_view prefix) { PrependText(*this, prefix); }

    /// An element and its subtree as XML that can be parsed on its own: declarations of the namespaces that
    /// it uses are added, and declared entities expanded. Empty for other kinds.
    std::string get_xml() const;

    /// Inserts `child` before `reference`, a child of this element, or after the last child if that is null.
    /// The child is first removed from its old place. It may come from a scratch document of this document.
    /// Ignored where the result would not be a tree (a child that contains this element), and for a reference
    /// that is not a child of this element, an attribute or a document node.
    void insertBefore(Node child, Node reference) { Insert(*this, child, reference); }

    /// Removes a child of this element from the tree.
    void removeChild(Node child) { Remove(*this, child); }

  private:
    friend class Document;
    friend class DocumentStore;
    friend class NamedNodeMap;
    friend class NodeList;

    // The methods above forward to functions that take the node by value. A call with `this` would force each
    // handle of a walk out of its registers into memory, and made an encoding pass a tenth slower; link-time
    // optimisation does not make up for it.
    static NodeType TypeOf(Node node);
    static std::string_view NameOf(Node node);
    static Node ParentOf(Node node);
    static Node FirstChildOf(Node node);
    static Node NextSiblingOf(Node node);
    static Node PreviousSiblingOf(Node node);
    static std::string_view ReadText(Node node, std::string& buffer);
    static std::string_view SourceOf(Node node);
    static void SetSourcePart(Node node, std::string_view part);
    static bool HasFilledText(Node node);
    static bool TextStartsWith(Node node, std::string_view prefix);
    static void SetText(Node node, std::string_view text);
    static void AppendText(Node node, std::string_view text);
    static void PrependText(Node node, std::string_view prefix);
    static void Insert(Node parent, Node child, Node reference);
    static void Remove(Node parent, Node child);

    static bool HasSiblings(Node node);  ///< False for an attribute and a null node.

    Node(DocumentStore* store, std::uint32_t index) : store_(index == 0 ? nullptr : store), index_(index) {}

    DocumentStore* store_ = nullptr;
    std::uint32_t index_ = 0;
};

/// The attributes of one element. Visiting the positions in ascending order is linear.
class NamedNodeMap {
  public:
    std::size_t get_length() const;

    /// By position from 0; a null node past the end.
    Node get_item(std::size_t position) const;

    /// By qualified name; a null node without such an attribute.
    Node getNamedItem(std::string_view name) const;

    /// Adds an attribute from createAttribute of the same document; it replaces one of the same name.
    void setNamedItem(Node attribute);

  private:
    friend class Node;
    explicit NamedNodeMap(Node element);

    Node element_;
    mutable std::optional<std::size_t> length_;  ///< Counted when it is requested first.
    mutable Node last_;                          ///< The item that was requested last, and its position.
    mutable std::size_t lastPosition_ = 0;
};

/// The nodes that a query selected, in document order.
class NodeList {
  public:
    std::size_t get_length() const { return nodes_.size(); }

    /// By position from 0; a null node past the end, and for a selected node that has no handle: a namespace
    /// declaration or what lies inside an entity.
    Node get_item(std::size_t position) const { return position < nodes_.size() ? nodes_[position] : Node(); }

  private:
    friend class Document;
    explicit NodeList(std::vector<Node> nodes) : nodes_(std::move(nodes)) {}

    std::vector<Node> nodes_;
};

class ParseError {
  public:
    explicit ParseError(std::string reason) : reason_(std::move(reason)) {}

    /// One line without a line break; empty if there was no error. For a reference to an undeclared entity it
    /// contains the words "undefined entity".
    const std::string& get_reason() const { return reason_; }

  private:
    std::string reason_;
};

class Document {
  public:
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// On: the external DTD subset is read, from local files only, whether its system id is a path or a file
    /// URL. Off (the default): entities that it would declare are undefined, and a reference to one fails the
    /// load.
    void put_resolveExternals(bool resolve) { resolveExternals_ = resolve; }

    /// These settings are fixed and the values are ignored: loading is synchronous, never validates, keeps
    /// all whitespace and allows a DOCTYPE; attribute values are normalised; queries are XPath.
    void put_async(bool) {}
    void put_validateOnParse(bool) {}
    void put_preserveWhiteSpace(bool) {}
    void setProperty(std::string_view, bool) {}
    void setProperty(std::string_view, const char*) {}

    /// Parses a file, in the encoding that it declares, and replaces what the document held. On failure
    /// (false) the document has no root element and get_parseError has the reason.
    bool load(std::string_view path);

    /// Parses a string, which is UTF-8 whatever it declares. Failure is reported as for `load`.
    bool loadXML(std::string_view text);

    ParseError get_parseError() const { return ParseError(reason_); }

    /// The root element, or a null node.
    Node get_documentElement() const;

    /// A new text node, not yet in the tree.
    Node createTextNode(std::string_view text);

    /// A new text node, not yet in the tree, with what a part of text.get_source() stands for.
    Node createTextPart(Node text, std::string_view part);

    /// A new text node that consists of `before`, the element's XML with its markup characters escaped, and
    /// `after`. The XML is not copied; later changes of the element do not affect the text node. Null if the
    /// document does not hold the element in the form that get_xml returns.
    Node createQuotedXml(std::string_view before, Node element, std::string_view after);

    /// The element that a piece of XML consists of, not yet in the tree. Null if the piece is not certainly
    /// well-formed, or has declarations; a scratch document can still parse it then.
    Node createElementFrom(std::string_view xml);

    /// A new attribute without a value, not yet on an element; null if `name` is not an XML name.
    Node createAttribute(std::string_view name);

    /// Writes the document in the encoding from which it was loaded; characters that it lacks become
    /// character references. If it lacks a character of a name or comment, which cannot hold a reference, the
    /// document is written and declared as UTF-8. On failure (false) the file keeps its old content.
    bool save(std::string_view path);

    /// As `save`, but overwrites the file where it lies, and a failure in the middle leaves it empty.
    bool saveInPlace(std::string_view path);

    /// The nodes that an XPath expression selects in the document as it is now. Nothing for an expression
    /// that is invalid, uses a prefix, or does not yield nodes. Consecutive queries share their preparation
    /// if only text and attribute values change in between.
    std::optional<NodeList> selectNodes(std::string_view query);

  private:
    friend std::unique_ptr<Document> CreateDocument();
    friend std::unique_ptr<Document> CreateScratchDocument(Document& main);
    explicit Document(std::shared_ptr<DocumentStore> store);

    bool IsLoaded() const;
    bool Parse(std::string_view path, platform::Bytes bytes, bool isFile);
    std::optional<std::vector<std::uint32_t>> Evaluate(std::string_view query);

    std::shared_ptr<DocumentStore> store_;
    std::uint32_t index_ = 0;  ///< The document node.
    std::string reason_;
    bool resolveExternals_ = false;
};

/// The content that a part of a text node's source bytes stands for. `content` is overwritten.
void DecodeText(std::string_view source, std::string& content);

/// An empty document.
std::unique_ptr<Document> CreateDocument();

/// An empty document for a piece of XML. Its nodes may be inserted into `main`; they live as long as `main`,
/// even after the scratch document was released.
std::unique_ptr<Document> CreateScratchDocument(Document& main);

}  // namespace ventrix::xml
