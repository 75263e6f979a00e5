#include "markers/xml/query.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/valid.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <algorithm>
#include <array>

#include "markers/xml/attributes.h"
#include "markers/xml/characters.h"
#include "markers/xml/libxml.h"
#include "markers/xml/namespaces.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

struct FreeXPathContext {
    void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
};
struct FreeXPathObject {
    void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

/// The text of a piece of XML without its tags.
std::string WithoutTags(std::string_view xml) {
    std::string text;
    while (!xml.empty()) {
        const std::size_t tag = std::min(xml.find('<'), xml.size());
        AppendDecodedText(text, xml.substr(0, tag));
        const std::size_t end = FindEnd(xml, ">", tag);
        xml = end == std::string_view::npos ? std::string_view() : xml.substr(end);
    }
    return text;
}

/// No prefix is bound, but libxml2 always treats this one as bound.
bool UsesXmlPrefix(std::string_view query) {
    constexpr std::string_view kPrefix = "xml:";
    for (std::size_t at = 0; at < query.size(); ++at) {
        if (query[at] == '"' || query[at] == '\'') {
            at = std::min(query.find(query[at], at + 1), query.size());
        } else if (query.substr(at).starts_with(kPrefix) &&
                   (at == 0 || (ClassOf(query[at - 1]) & kNameByte) == 0)) {
            return true;
        }
    }
    return false;
}

}  // namespace

/// A libxml2 document that has a node of the same kind, name and content for each node of the tree; only
/// CDATA sections become text nodes, and the content of an entity replaces a reference to it. `_private` of a
/// copied node holds the index of its original, which turns a result back into handles. `copies` leads the
/// other way, so that a changed text or attribute value can be carried over without copying the tree again.
///
/// The copy is made node by node instead of by parsing the saved document: adjacent text nodes stay apart,
/// and undeclared prefixes do no harm. Allocating each node would take longer than a query. So the copy of a
/// node, and of an attribute, has the place of its index in one block of memory, and strings are in an arena;
/// libxml2 must neither free nor replace them. It owns only the names, in its dictionary, once each, the
/// namespace declarations and the content of entities.
///
/// While the copy is made, `scope` holds the namespace declarations in force, as a stack: `scopeMarks` has
/// its height before each open element.
struct QueryTree::Copy {
    union Place {
        xmlNode node;
        xmlAttr attribute;
    };
    struct Release {
        void operator()(Place* memory) const { platform::ReleaseMemory(memory); }
    };

    explicit Copy(DocumentStore& treeStore)
        : store(treeStore),
          shape(treeStore.shape),
          places(TakePlaces(treeStore)),
          isCopied(treeStore.NodeCount()) {
        document->dict = xmlDictCreate();
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    ~Copy() {
        document->children = document->last = nullptr;
        for (const xmlNode* element : declaringElements) {
            xmlFreeNsList(element->nsDef);
        }
        for (xmlNode* content : entityContent) {
            xmlFreeNode(content);
        }
    }

    /// All attributes become nodes first, so that their indices are known.
    static Place* TakePlaces(DocumentStore& store) {
        const auto elementsEnd = static_cast<NodeIndex>(store.NodeCount());
        for (NodeIndex index = 1; index < elementsEnd; ++index) {
            store.ReadAttributes(index);
        }
        return static_cast<Place*>(platform::TakeMemory(store.NodeCount() * sizeof(Place)));
    }

    DocumentStore& store;
    std::uint64_t shape;
    XmlDocument document{xmlNewDoc(Chars("1.0"))};
    std::unique_ptr<Place[], Release> places;  ///< By index of the original.
    std::vector<bool> isCopied;                ///< The places that are in use.
    StringArena strings;
    std::string buffer;
    std::vector<xmlNode*> declaringElements;
    std::vector<xmlNode*> entityContent;
    std::array<std::pair<std::string_view, const xmlChar*>, 16> recentNames{};
    std::size_t recentCount = 0;  ///< Counts on; the remainder is the place of the next one.

    /// Prefix and namespace, innermost last; null for xmlns="".
    std::vector<std::pair<std::string, xmlNs*>> scope;
    std::vector<std::size_t> scopeMarks;

    /// A string in the form of libxml2, which ends at a NUL.
    xmlChar* Keep(std::string_view text) { return reinterpret_cast<xmlChar*>(strings.AddTerminated(text)); }

    xmlChar* Content(NodeIndex index) { return Keep(store.ContentOf(index, buffer)); }

    /// The namespace of a prefix; null for none.
    xmlNs* Find(std::string_view prefix) const {
        if (prefix == "xml") {
            return xmlSearchNs(document.get(), reinterpret_cast<xmlNode*>(document.get()), Chars("xml"));
        }
        for (auto entry = scope.rbegin(); entry != scope.rend(); ++entry) {
            if (entry->first == prefix) {
                return entry->second;
            }
        }
        return nullptr;
    }

    static void Mark(xmlNode* node, NodeIndex index) {
        node->_private = reinterpret_cast<void*>(std::uintptr_t{index});
    }

    void Fill(xmlNode* node, xmlElementType type, const xmlChar* name, xmlChar* content) {
        *node = {};
        node->type = type;
        node->name = name;
        node->content = content;
        node->doc = document.get();
    }

    xmlNode* MakeNode(NodeIndex index, xmlElementType type, const xmlChar* name, xmlChar* content) {
        xmlNode* const node = &places[index].node;
        isCopied[index] = true;
        Fill(node, type, name, content);
        Mark(node, index);
        return node;
    }

    /// A text node without an original.
    xmlNode* MakeText(xmlChar* content) {
        static_assert(alignof(xmlNode) <= alignof(void*));
        auto* const node = reinterpret_cast<xmlNode*>(strings.TakeAligned(sizeof(xmlNode)));
        Fill(node, XML_TEXT_NODE, xmlStringText, content);
        return node;
    }

    /// An entity counts with its content, whose nodes have no counterpart in the store. `parent` is the copy
    /// of the element around it.
    void AddEntityContent(const NodeRecord& reference, xmlNode* parent) {
        const std::string xml = ExpandEntity(store.Slice(reference.begin + 1, reference.End() - 1),
                                             store.SourceOf(reference.begin).dtd.get());
        xmlNode* content = xml.find('<') == std::string::npos ? nullptr : ParseContent(xml, parent);
        if (content == nullptr) {
            Link(parent, MakeText(Keep(WithoutTags(xml))));
        }
        while (content != nullptr) {
            xmlNode* next = content->next;
            content->next = nullptr;
            entityContent.push_back(content);
            Link(parent, content);
            content = next;
        }
    }

    /// The nodes of a piece of XML in the namespaces of `parent`; null if it cannot be parsed.
    static xmlNode* ParseContent(const std::string& xml, xmlNode* parent) {
        const QuietErrors quiet;
        xmlNode* content = nullptr;
        xmlParseInNodeContext(parent, xml.data(), static_cast<int>(xml.size()),
                              XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING,
                              &content);
        return content;
    }

    const xmlChar* Name(std::string_view name) {
        const auto known =
            std::ranges::find(recentNames, name, &std::pair<std::string_view, const xmlChar*>::first);
        if (known != recentNames.end()) {
            return known->second;
        }
        const xmlChar* const added = xmlDictLookup(
            document->dict, reinterpret_cast<const xmlChar*>(name.data()), static_cast<int>(name.size()));
        recentNames[recentCount++ % recentNames.size()] = {View(added), added};
        return added;
    }

    void DeclareNamespaces(NodeIndex element, xmlNode* node) {
        for (NodeIndex index = store.FirstAttribute(element); index != 0; index = store.At(index).next) {
            const std::string_view prefix = DeclaredPrefix(store.NameOf(index));
            if (prefix.data() == nullptr) {
                continue;
            }
            const xmlChar* const uri = Content(index);
            const std::string terminated(prefix);
            const xmlChar* declaredPrefix = prefix.empty() ? nullptr : Chars(terminated);
            xmlNs* declared = *uri == 0 ? nullptr : xmlNewNs(node, uri, declaredPrefix);
            scope.emplace_back(prefix, declared);
        }
        if (node->nsDef != nullptr) {
            declaringElements.push_back(node);
        }
    }

    void CopyAttributes(NodeIndex element, xmlNode* node) {
        xmlAttr* last = nullptr;
        for (NodeIndex index = store.FirstAttribute(element); index != 0; index = store.At(index).next) {
            if (DeclaredPrefix(store.NameOf(index)).data() != nullptr) {
                continue;
            }
            xmlAttr* const attribute = CopyAttribute(index, node);
            attribute->prev = last;
            (last == nullptr ? node->properties : last->next) = attribute;
            last = attribute;
        }
    }

    xmlAttr* CopyAttribute(NodeIndex index, xmlNode* element) {
        const std::string_view name = store.NameOf(index);
        xmlAttr* const attribute = &places[index].attribute;
        isCopied[index] = true;
        *attribute = {};
        attribute->type = XML_ATTRIBUTE_NODE;
        attribute->parent = element;
        attribute->doc = document.get();
        attribute->ns = PrefixOf(name).empty() ? nullptr : Find(PrefixOf(name));
        attribute->name = Name(attribute->ns == nullptr ? name : name.substr(PrefixOf(name).size() + 1));
        Mark(reinterpret_cast<xmlNode*>(attribute), index);
        SetValue(attribute, index);
        if (DeclaredType(store, index) == XML_ATTRIBUTE_ID ||
            xmlIsID(document.get(), element, attribute) == 1) {
            xmlAddID(nullptr, document.get(), attribute->children->content, attribute);
        }
        return attribute;
    }

    /// The value is a text node, which needs no escapes.
    void SetValue(xmlAttr* attribute, NodeIndex index) {
        xmlNode* const value = MakeText(Content(index));
        value->parent = reinterpret_cast<xmlNode*>(attribute);
        attribute->children = attribute->last = value;
    }

    /// The name comes last: only the element's own declarations define the namespace of its prefix. An
    /// undeclared prefix stays part of the name.
    xmlNode* CopyElement(NodeIndex index) {
        xmlNode* node = MakeNode(index, XML_ELEMENT_NODE, nullptr, nullptr);
        scopeMarks.push_back(scope.size());
        DeclareNamespaces(index, node);
        const std::string_view name = store.NameOf(index);
        xmlNs* space = Find(PrefixOf(name));
        const bool literal = space == nullptr || PrefixOf(name).empty();
        node->name = Name(literal ? name : name.substr(PrefixOf(name).size() + 1));
        node->ns = space;
        CopyAttributes(index, node);
        return node;
    }

    xmlNode* CopyNode(NodeIndex index) {
        const NodeRecord& record = store.At(index);
        switch (record.Type()) {
            case NODE_ELEMENT:
                return CopyElement(index);
            case NODE_TEXT:
            case NODE_CDATA_SECTION:
                return MakeNode(index, XML_TEXT_NODE, xmlStringText, Content(index));
            case NODE_COMMENT:
                return MakeNode(index, XML_COMMENT_NODE, xmlStringComment,
                                Keep(store.Slice(record.begin + 4, record.End() - 3)));
            case NODE_PROCESSING_INSTRUCTION: {
                const std::string_view body = store.Slice(record.begin + 2, record.End() - 2);
                const std::size_t targetEnd = std::min(body.find_first_of(" \t\r\n"), body.size());
                const std::size_t content =
                    std::min(body.find_first_not_of(" \t\r\n", targetEnd), body.size());
                return MakeNode(index, XML_PI_NODE, Name(body.substr(0, targetEnd)),
                                Keep(body.substr(content)));
            }
            default:
                return nullptr;
        }
    }

    /// Visits the tree by the links of its nodes, without recursion.
    void CopyTree(NodeIndex root) {
        NodeIndex index = root;
        auto* parent = reinterpret_cast<xmlNode*>(document.get());
        while (true) {
            if (store.At(index).Type() == NODE_ENTITY_REFERENCE) {
                AddEntityContent(store.At(index), parent);
            } else {
                Link(parent, CopyNode(index));
            }
            if (store.At(index).Type() == NODE_ELEMENT) {
                if (store.FirstChild(index) != 0) {
                    parent = parent->last;
                    index = store.FirstChild(index);
                    continue;
                }
                LeaveElement();
            }
            while (index != root && store.At(index).next == 0) {
                index = store.At(index).parent;
                parent = parent->parent;
                LeaveElement();
            }
            if (index == root) {
                return;
            }
            index = store.At(index).next;
        }
    }

    void LeaveElement() {
        scope.resize(scopeMarks.back());
        scopeMarks.pop_back();
    }

    /// Unlike xmlAddChild, does not merge adjacent text nodes.
    static void Link(xmlNode* parent, xmlNode* node) {
        node->parent = parent;
        node->prev = parent->last;
        (parent->last == nullptr ? parent->children : parent->last->next) = node;
        parent->last = node;
    }

    void UpdateAttribute(xmlAttr* attribute, NodeIndex index) {
        const bool isId = attribute->atype == XML_ATTRIBUTE_ID;
        if (isId) {
            xmlRemoveID(document.get(), attribute);
        }
        SetValue(attribute, index);
        if (isId) {
            xmlAddID(nullptr, document.get(), attribute->children->content, attribute);
        }
    }

    /// Carries over the changes of content since the last query.
    void Update() {
        for (const NodeIndex index : store.changedNodes) {
            if (index >= isCopied.size() || !isCopied[index]) {
                continue;
            }
            Place& place = places[index];
            if (place.node.type == XML_ATTRIBUTE_NODE) {
                UpdateAttribute(&place.attribute, index);
            } else {
                place.node.content = Content(index);
            }
        }
        store.changedNodes.clear();
    }
};

QueryTree::QueryTree(DocumentStore& store, NodeIndex document) : copy_(std::make_unique<Copy>(store)) {
    Copy::Mark(reinterpret_cast<xmlNode*>(copy_->document.get()), document);
    copy_->CopyTree(store.FirstChild(document));
    xmlXPathOrderDocElems(copy_->document.get());
    store.changedNodes.clear();
    store.listChanges = true;
}

QueryTree::~QueryTree() {
    copy_->store.listChanges = false;
    copy_->store.changedNodes.clear();
}

bool QueryTree::IsUsable() const {
    return copy_->shape == copy_->store.shape;
}

std::optional<std::vector<NodeIndex>> QueryTree::Select(const std::string& query) {
    if (UsesXmlPrefix(query)) {
        return std::nullopt;
    }
    copy_->Update();
    const QuietErrors quiet;
    const std::unique_ptr<xmlXPathContext, FreeXPathContext> context(
        xmlXPathNewContext(copy_->document.get()));
    const std::unique_ptr<xmlXPathObject, FreeXPathObject> found(
        xmlXPathEvalExpression(Chars(query), context.get()));
    if (!found || found->type != XPATH_NODESET) {
        return std::nullopt;
    }
    std::vector<NodeIndex> nodes;
    xmlNodeSet* set = found->nodesetval;
    xmlXPathNodeSetSort(set);
    for (int i = 0; set != nullptr && i < set->nodeNr; ++i) {
        const xmlNode* node = set->nodeTab[i];
        const bool marked = node->type != XML_NAMESPACE_DECL;
        nodes.push_back(marked ? static_cast<NodeIndex>(reinterpret_cast<std::uintptr_t>(node->_private))
                               : 0);
    }
    return nodes;
}

}  // namespace ventrix::xml
