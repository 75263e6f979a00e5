#include "markers/xml/dom.h"

#include <libxml/tree.h>

#include <algorithm>

#include "markers/xml/characters.h"
#include "markers/xml/document_store.h"
#include "markers/xml/libxml.h"
#include "markers/xml/loading.h"
#include "markers/xml/output_encoding.h"
#include "markers/xml/path_query.h"
#include "markers/xml/query.h"
#include "markers/xml/references.h"
#include "markers/xml/writer.h"
#include "platform/files.h"

namespace ventrix::xml {
namespace {

/// True if `node` is `ancestor` or lies below it. Most nodes that are inserted have no children, and need no
/// walk up the tree.
bool Contains(DocumentStore& store, NodeIndex ancestor, NodeIndex node) {
    if (store.FirstChild(ancestor) == 0 && ancestor != node) {
        return false;
    }
    while (node != 0 && node != ancestor) {
        node = store.At(node).parent;
    }
    return node == ancestor;
}

/// Puts out a loaded document in the encoding of its source. False if `put` failed, or a character has no
/// form in that encoding.
bool PutDocument(DocumentStore& store, NodeIndex document, const platform::PutPiece& put) {
    const SourceText& source = *store.SourceOfDocument(document);
    if (source.encoding.empty()) {
        return WriteDocument(store, source, put);
    }
    std::string text;
    std::string bytes;
    WriteDocument(store, source, [&](std::string_view piece) {
        text += piece;
        return true;
    });
    return EncodeDocument(text, source.encoding, bytes) && put(bytes);
}

}  // namespace

bool Node::HasSiblings(Node node) {
    return node && node.store_->At(node.index_).Type() != NODE_ATTRIBUTE;
}

NodeType Node::TypeOf(Node node) {
    return node ? node.store_->At(node.index_).Type() : NODE_INVALID;
}

std::string_view Node::NameOf(Node node) {
    return node ? node.store_->NameOf(node.index_) : std::string_view();
}

Node Node::ParentOf(Node node) {
    return HasSiblings(node) ? Node(node.store_, node.store_->At(node.index_).parent) : Node();
}

Node Node::FirstChildOf(Node node) {
    return node ? Node(node.store_, node.store_->FirstChild(node.index_)) : Node();
}

Node Node::NextSiblingOf(Node node) {
    return HasSiblings(node) ? Node(node.store_, node.store_->At(node.index_).next) : Node();
}

Node Node::PreviousSiblingOf(Node node) {
    return HasSiblings(node) ? Node(node.store_, node.store_->Previous(node.index_)) : Node();
}

NamedNodeMap Node::get_attributes() const {
    return NamedNodeMap(get_nodeType() == NODE_ELEMENT ? *this : Node());
}

std::string_view Node::ReadText(Node node, std::string& buffer) {
    return node ? node.store_->ContentOf(node.index_, buffer) : std::string_view();
}

std::string_view Node::SourceOf(Node node) {
    return node ? node.store_->SearchableSource(node.index_) : std::string_view();
}

void Node::SetSourcePart(Node node, std::string_view part) {
    if (SourceOf(node).data() != nullptr) {
        node.store_->SetSourcePart(node.index_, part);
    }
}

bool Node::HasFilledText(Node node) {
    return node && node.store_->IsFilledText(node.index_);
}

bool Node::TextStartsWith(Node node, std::string_view prefix) {
    return TypeOf(node) == NODE_TEXT && node.store_->TextStartsWith(node.index_, prefix);
}

void Node::SetText(Node node, std::string_view text) {
    const NodeType type = TypeOf(node);
    if (type == NODE_TEXT || type == NODE_ATTRIBUTE) {
        node.store_->SetContent(node.index_, text);
    }
}

void Node::AppendText(Node node, std::string_view text) {
    const NodeType type = TypeOf(node);
    if (type == NODE_TEXT || type == NODE_ATTRIBUTE) {
        node.store_->AppendContent(node.index_, text);
    }
}

void Node::PrependText(Node node, std::string_view prefix) {
    if (TypeOf(node) == NODE_TEXT) {
        node.store_->PrependContent(node.index_, prefix);
    }
}

std::string Node::get_xml() const {
    return get_nodeType() == NODE_ELEMENT ? WriteElement(*store_, index_) : std::string();
}

void Node::Insert(Node parent, Node child, Node reference) {
    DocumentStore* store = parent.store_;
    const NodeType type = TypeOf(child);
    const bool fits = TypeOf(parent) == NODE_ELEMENT && child.store_ == store && type != NODE_ATTRIBUTE &&
                      type != NODE_DOCUMENT && child != reference;
    if (!fits || Contains(*store, child.index_, parent.index_) ||
        (reference && (reference.store_ != store || ParentOf(reference) != parent))) {
        return;
    }
    store->Unlink(child.index_);
    store->InsertBefore(parent.index_, child.index_, reference.index_);
    ++store->shape;
}

void Node::Remove(Node parent, Node child) {
    if (child && ParentOf(child) == parent) {
        parent.store_->Unlink(child.index_);
        ++parent.store_->shape;
    }
}

NamedNodeMap::NamedNodeMap(Node element) : element_(element) {
    if (element_) {
        element_.store_->ReadAttributes(element_.index_);
    }
}

std::size_t NamedNodeMap::get_length() const {
    if (!length_) {
        std::size_t count = 0;
        for (NodeIndex index = element_ ? element_.store_->FirstAttribute(element_.index_) : 0; index != 0;
             index = element_.store_->At(index).next) {
            ++count;
        }
        length_ = count;
    }
    return *length_;
}

Node NamedNodeMap::getNamedItem(std::string_view name) const {
    if (!element_) {
        return {};
    }
    DocumentStore& store = *element_.store_;
    NodeIndex attribute = store.FirstAttribute(element_.index_);
    while (attribute != 0 && store.NameOf(attribute) != name) {
        attribute = store.At(attribute).next;
    }
    return {&store, attribute};
}

Node NamedNodeMap::get_item(std::size_t position) const {
    if (position >= get_length()) {
        return {};
    }
    DocumentStore& store = *element_.store_;
    if (!last_ || position < lastPosition_) {
        last_ = Node(&store, store.FirstAttribute(element_.index_));
        lastPosition_ = 0;
    }
    for (; lastPosition_ < position; ++lastPosition_) {
        last_ = Node(&store, store.At(last_.index_).next);
    }
    return last_;
}

void NamedNodeMap::setNamedItem(Node attribute) {
    if (!element_ || attribute.store_ != element_.store_ || attribute.get_nodeType() != NODE_ATTRIBUTE) {
        return;
    }
    DocumentStore& store = *element_.store_;
    if (store.At(attribute.index_).parent != 0) {
        return;
    }
    NodeIndex last = 0;
    NodeIndex same = store.FirstAttribute(element_.index_);
    while (same != 0 && store.NameOf(same) != attribute.get_nodeName()) {
        last = same;
        same = store.At(same).next;
    }
    NodeRecord& record = store.At(attribute.index_);
    record.parent = element_.index_;
    record.next = same == 0 ? 0 : store.At(same).next;
    if (last == 0) {
        store.SetFirstAttribute(element_.index_, attribute.index_);
    } else {
        store.At(last).next = attribute.index_;
    }
    if (same != 0) {
        store.At(same).parent = store.At(same).next = 0;
    }
    length_.reset();
    last_ = Node();
    store.NoteAttributeChange(element_.index_);
    ++store.shape;
}

Document::Document(std::shared_ptr<DocumentStore> store)
    : store_(std::move(store)), index_(store_->Add(NODE_DOCUMENT)) {}

Document::~Document() = default;

bool Document::IsLoaded() const {
    return store_->SourceOfDocument(index_) != nullptr && store_->FirstChild(index_) != 0;
}

bool Document::load(std::string_view path) {
    platform::Bytes bytes;
    if (const platform::ErrorCode error = platform::ReadWholeFile(path, bytes);
        error != platform::kErrorNone) {
        bytes.clear();
        reason_ = "The file '" + std::string(path) + "' cannot be read (error " + std::to_string(error) + ")";
        store_->RemoveRoot(index_);
        return false;
    }
    return Parse(path, std::move(bytes), true);
}

bool Document::loadXML(std::string_view text) {
    return Parse({}, platform::Bytes(text.begin(), text.end()), false);
}

bool Document::Parse(std::string_view path, platform::Bytes bytes, bool isFile) {
    store_->RemoveRoot(index_);
    ++store_->shape;
    reason_ = LoadSource(*store_, index_, std::move(bytes), {path, isFile, resolveExternals_});
    return reason_.empty();
}

Node Document::get_documentElement() const {
    return {store_.get(), store_->FirstChild(index_)};
}

Node Document::createTextNode(std::string_view text) {
    const NodeIndex index = store_->Add(NODE_TEXT);
    store_->At(index).Set(kCreated);
    store_->SetContent(index, text);
    return {store_.get(), index};
}

Node Document::createTextPart(Node text, std::string_view part) {
    return text.store_ == store_.get() && text.get_source().data() != nullptr
               ? store_->Handle(store_->AddTextPart(text.index_, part))
               : Node();
}

Node Document::createQuotedXml(std::string_view before, Node element, std::string_view after) {
    if (element.store_ != store_.get() || element.get_nodeType() != NODE_ELEMENT ||
        !StandsAlone(*store_, element.index_)) {
        return {};
    }
    const NodeRecord& record = store_->At(element.index_);
    return store_->Handle(store_->AddQuoted(before, record.begin, store_->ElementEnd(record), after));
}

Node Document::createElementFrom(std::string_view xml) {
    return {store_.get(), LoadElement(*store_, xml)};
}

Node Document::createAttribute(std::string_view name) {
    if (!IsPlainName(name) && xmlValidateQName(Chars(std::string(name)), 0) != 0) {
        return {};
    }
    const NodeIndex index = store_->Add(NODE_ATTRIBUTE);
    NodeRecord& record = store_->At(index);
    record.Set(kCreated | kOwnContent);
    record.SetNameString(store_->strings.Intern(name));
    return {store_.get(), index};
}

bool Document::save(std::string_view path) {
    const auto produce = [this](const platform::PutPiece& put) { return PutDocument(*store_, index_, put); };
    return IsLoaded() && platform::WriteWholeFile(path, produce) == platform::kErrorNone;
}

bool Document::saveInPlace(std::string_view path) {
    const auto produce = [this](const platform::PutPiece& put) { return PutDocument(*store_, index_, put); };
    return IsLoaded() && platform::OverwriteFile(path, produce) == platform::kErrorNone;
}

std::optional<NodeList> Document::selectNodes(std::string_view query) {
    if (!IsLoaded()) {
        return std::nullopt;
    }
    const auto steps = store_->HasOnlyPlainSources() ? ParsePath(query) : std::nullopt;
    const std::optional<std::vector<NodeIndex>> found =
        steps ? SelectByPath(*store_, index_, *steps) : Evaluate(query);
    if (!found) {
        return std::nullopt;
    }
    std::vector<Node> nodes;
    nodes.reserve(found->size());
    std::ranges::transform(*found, std::back_inserter(nodes),
                           [&](NodeIndex index) { return store_->Handle(index); });
    return NodeList(std::move(nodes));
}

std::optional<std::vector<std::uint32_t>> Document::Evaluate(std::string_view query) {
    if (store_->queries == nullptr || store_->queriedDocument != index_ || !store_->queries->IsUsable()) {
        store_->queries.reset();
        store_->queries = std::make_shared<QueryTree>(*store_, index_);
        store_->queriedDocument = index_;
    }
    return store_->queries->Select(std::string(query));
}

void DecodeText(std::string_view source, std::string& content) {
    content.clear();
    AppendDecodedText(content, source);
}

std::unique_ptr<Document> CreateDocument() {
    return std::unique_ptr<Document>(new Document(std::make_shared<DocumentStore>()));
}

std::unique_ptr<Document> CreateScratchDocument(Document& main) {
    return std::unique_ptr<Document>(new Document(main.store_));
}

}  // namespace ventrix::xml
