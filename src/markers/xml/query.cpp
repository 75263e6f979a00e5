#include "markers/xml/query.h"

#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <algorithm>

#include "markers/xml/characters.h"
#include "markers/xml/namespaces.h"
#include "markers/xml/quiet_errors.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

struct FreeXPathContext {
    void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
};
struct FreeXPathObject {
    void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

const xmlChar* Chars(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

/// The text between the tags.
std::string TextOfXml(std::string_view xml) {
    std::string text;
    while (!xml.empty()) {
        const std::size_t tag = std::min(xml.find('<'), xml.size());
        AppendDecodedText(text, xml.substr(0, tag));
        const std::size_t behind = xml.find('>', tag);
        xml = behind == std::string_view::npos ? std::string_view() : xml.substr(behind + 1);
    }
    return text;
}

/// No prefix is bound, but libxml2 takes this one for bound whatever it is told.
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

struct QueryTree::Copy {
    explicit Copy(DocumentStore& treeStore) : store(treeStore), shape(treeStore.shape) {
        document->dict = xmlDictCreate();
    }

    DocumentStore& store;
    std::uint64_t shape;
    XmlDocument document{xmlNewDoc(Chars("1.0"))};
    std::vector<xmlNode*> places;  ///< Of texts and attributes, which may change, by index.

    /// The namespaces in force, innermost last; a null one for a default that is switched off.
    std::vector<std::pair<std::string, xmlNs*>> scope;
    std::vector<std::size_t> scopeMarks;

    std::string Content(NodeIndex index) {
        std::string buffer;
        return std::string(store.ContentOf(index, buffer));
    }

    xmlNs* Find(std::string_view prefix) const {
        for (auto entry = scope.rbegin(); entry != scope.rend(); ++entry) {
            if (entry->first == prefix) {
                return entry->second;
            }
        }
        return nullptr;
    }

    void Mark(xmlNode* node, NodeIndex index) {
        node->_private = reinterpret_cast<void*>(std::uintptr_t{index});
    }

    xmlNode* CopyText(NodeIndex index) {
        xmlNode* text = xmlNewDocText(document.get(), Chars(Content(index)));
        Place(index, text);
        return text;
    }

    /// Elements inside an entity are out of a query's reach; its text counts.
    xmlNode* CopyReference(const NodeRecord& reference) {
        const std::string xml = ExpandEntity(store.Slice(reference.begin + 1, reference.end - 1),
                                             store.SourceOf(reference.begin).dtd.get());
        return xmlNewDocText(document.get(), Chars(TextOfXml(xml)));
    }

    void Place(NodeIndex index, xmlNode* node) {
        if (places.size() <= index) {
            places.resize(std::max<std::size_t>(index + 1U, 2 * places.size()));
        }
        places[index] = node;
    }

    const xmlChar* Name(std::string_view name) {
        return xmlDictLookup(document->dict, reinterpret_cast<const xmlChar*>(name.data()),
                             static_cast<int>(name.size()));
    }

    void DeclareNamespaces(NodeIndex element, xmlNode* node) {
        for (NodeIndex index = store.FirstAttribute(element); index != 0; index = store.At(index).next) {
            const std::string_view prefix = DeclaredPrefix(store.NameOf(index));
            if (prefix.data() == nullptr) {
                continue;
            }
            const std::string address = Content(index);
            const std::string owned(prefix);
            xmlNs* declared = address.empty()
                                  ? nullptr
                                  : xmlNewNs(node, Chars(address), owned.empty() ? nullptr : Chars(owned));
            scope.emplace_back(owned, declared);
        }
    }

    void CopyAttributes(NodeIndex element, xmlNode* node) {
        for (NodeIndex index = store.FirstAttribute(element); index != 0; index = store.At(index).next) {
            const std::string_view name = store.NameOf(index);
            if (DeclaredPrefix(name).data() != nullptr) {
                continue;
            }
            xmlNs* space = PrefixOf(name).empty() ? nullptr : Find(PrefixOf(name));
            const std::string_view local = space == nullptr ? name : name.substr(PrefixOf(name).size() + 1);
            xmlAttr* attribute =
                xmlNewNsPropEatName(node, space, const_cast<xmlChar*>(Name(local)), Chars(Content(index)));
            Mark(reinterpret_cast<xmlNode*>(attribute), index);
            Place(index, reinterpret_cast<xmlNode*>(attribute));
        }
    }

    xmlNode* CopyElement(NodeIndex index) {
        store.ReadAttributes(index);
        xmlNode* node =
            xmlNewDocNodeEatName(document.get(), nullptr, const_cast<xmlChar*>(Name("x")), nullptr);
        scopeMarks.push_back(scope.size());
        DeclareNamespaces(index, node);
        const std::string_view name = store.NameOf(index);
        xmlNs* space = Find(PrefixOf(name));
        const bool literal = space == nullptr || PrefixOf(name).empty();
        node->name = Name(literal ? name : name.substr(PrefixOf(name).size() + 1));
        xmlSetNs(node, space);
        CopyAttributes(index, node);
        return node;
    }

    xmlNode* CopyNode(NodeIndex index) {
        const NodeRecord& record = store.At(index);
        switch (record.type) {
            case NODE_ELEMENT:
                return CopyElement(index);
            case NODE_TEXT:
            case NODE_CDATA_SECTION:
                return CopyText(index);
            case NODE_COMMENT:
                return xmlNewDocComment(document.get(),
                                        Chars(std::string(store.Slice(record.begin + 4, record.end - 3))));
            case NODE_PROCESSING_INSTRUCTION: {
                const std::string_view body = store.Slice(record.begin + 2, record.end - 2);
                const std::size_t blank = std::min(body.find_first_of(" \t\r\n"), body.size());
                const std::size_t content = std::min(body.find_first_not_of(" \t\r\n", blank), body.size());
                return xmlNewDocPI(document.get(), Chars(std::string(body.substr(0, blank))),
                                   Chars(std::string(body.substr(content))));
            }
            case NODE_ENTITY_REFERENCE:
                return CopyReference(record);
            default:
                return nullptr;
        }
    }

    void CopyTree(NodeIndex root) {
        NodeIndex index = root;
        auto* parent = reinterpret_cast<xmlNode*>(document.get());
        while (true) {
            xmlNode* node = CopyNode(index);
            Mark(node, store.At(index).type == NODE_ENTITY_REFERENCE ? 0 : index);
            Link(parent, node);
            if (store.At(index).type == NODE_ELEMENT) {
                if (store.FirstChild(index) != 0) {
                    parent = node;
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

    /// Texts that stand side by side must not be merged, as xmlAddChild would.
    static void Link(xmlNode* parent, xmlNode* node) {
        node->parent = parent;
        node->prev = parent->last;
        (parent->last == nullptr ? parent->children : parent->last->next) = node;
        parent->last = node;
    }

    void Update() {
        for (const NodeIndex index : store.changedNodes) {
            xmlNode* place = index < places.size() ? places[index] : nullptr;
            if (place == nullptr) {
                continue;
            }
            if (place->type == XML_ATTRIBUTE_NODE) {
                xmlNodeSetContent(place, nullptr);
                Link(place, xmlNewDocText(document.get(), Chars(Content(index))));
            } else {
                xmlNodeSetContent(place, Chars(Content(index)));
            }
        }
        store.changedNodes.clear();
    }
};

QueryTree::QueryTree(DocumentStore& store, NodeIndex document) : copy_(std::make_unique<Copy>(store)) {
    copy_->Mark(reinterpret_cast<xmlNode*>(copy_->document.get()), document);
    copy_->CopyTree(store.FirstChild(document));
    xmlXPathOrderDocElems(copy_->document.get());
    store.changedNodes.clear();
    store.listChanges = true;
}

QueryTree::~QueryTree() {
    copy_->store.listChanges = false;
    copy_->store.changedNodes.clear();
}

bool QueryTree::Holds() const {
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
