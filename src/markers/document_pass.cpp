#include "markers/document_pass.h"

#include "markers/decoding_walk.h"
#include "markers/dom_helpers.h"
#include "markers/dtd_recovery.h"
#include "markers/encoding_walk.h"
#include "platform/com.h"

namespace ventrix {
namespace {

// A step of the walk deals with one node and returns the node at which the walk continues: the next sibling,
// null after the last one, or the node itself if the walk is to enter it. The step fetches the sibling, since
// only it knows whether the node is still in the tree.

// The marker words of a skipped element are removed all the same.
xml::Node DecodeNode(xml::Document& document, xml::Node node, const PublishParams& params,
                     DecodingState& state) {
    if (IsFilledTextNode(node)) {
        return DecodeTextNode(document, node, params, state);
    }
    if (!IsElement(node)) {
        return node.get_nextSibling();
    }
    if (IsListedElement(node, params.skipElements)) {
        ClearMarkerWords(node);
        return node.get_nextSibling();
    }
    return node;
}

xml::Node EncodeElement(xml::Document& document, xml::Node element, const PublishParams& params,
                        EncodingState& state) {
    const std::string_view name = NodeName(element);
    const bool isListed = IsListed(name, params.elements);
    if (!isListed) {
        state.textFollows.reset();
    }
    if (IsListed(name, params.skipElements)) {
        return element.get_nextSibling();
    }
    if (isListed) {
        return EncodeInlineElement(document, element, params, state);
    }
    EncodeScopedAttributes(element, params.scopedAttributes);
    return element;
}

// Whitespace and listed elements continue the run of siblings that `state.textFollows` describes; any other
// node ends it, here and in EncodeElement.
xml::Node EncodeNode(xml::Document& document, xml::Node node, xml::Node parent, const PublishParams& params,
                     EncodingState& state) {
    if (IsElement(node)) {
        return EncodeElement(document, node, params, state);
    }
    if (IsFilledTextNode(node)) {
        state.textFollows.reset();
        EncodeTextNode(node, parent, params, state);
    } else if (!IsTextNode(node)) {
        state.textFollows.reset();
    }
    return node.get_nextSibling();
}

// A page is a result, so that it changes as a whole or not at all. The file that an encoding pass gets is a
// copy in the package: a broken one fails the transformation, and the next run makes it anew.
void SaveOver(xml::Document& document, const std::string& path, bool decode) {
    if (decode) {
        document.save(path);
    } else {
        document.saveInPlace(path);
    }
}

}  // namespace

bool ProcessXmlFile(std::string path, bool decode, PublishParams& params, std::string& errorText) {
    params.currentFile = path;
    bool loaded = false;
    if (SUCCEEDED(CoInitialize(nullptr))) {
        loaded = ApplyMarkerPass(std::move(path), decode, params, errorText) != nullptr;
    }
    CoUninitialize();
    return loaded;
}

std::unique_ptr<xml::Document> ApplyMarkerPass(std::string path, bool decode, const PublishParams& params,
                                               std::string& errorText) {
    std::unique_ptr<xml::Document> document = LoadXmlDocument(path, errorText, false, false);
    if (!document) {
        return nullptr;
    }
    // A document without a root is saved as it is: no step below does anything with a null node.
    const xml::Node root = document->get_documentElement();
    if (!IsListedElement(root, params.skipElements)) {
        // The walk does this only for the elements below its start.
        EncodeScopedAttributes(root, params.scopedAttributes);
        CodeChildNodes(*document, root, decode, params);
        if (!decode && !params.preserveXPathList.empty()) {
            StampPreservedXPaths(*document, params.preserveXPathList, params.preserveXPathAttr);
        }
    }
    SaveOver(*document, path, decode);
    return document;
}

std::unique_ptr<xml::Document> LoadXmlDocument(const std::string& path, std::string& errorText,
                                               bool resolveExternals, bool repaired) {
    std::unique_ptr<xml::Document> document = xml::CreateDocument();
    ConfigureDocument(*document);
    if (resolveExternals) {
        document->put_resolveExternals(true);
    }
    document->setProperty("ProhibitDTD", false);
    document->setProperty("NormalizeAttributeValues", true);
    if (document->load(path)) {
        return document;
    }
    errorText = document->get_parseError().get_reason();
    document.reset();
    if (resolveExternals || errorText.find("undefined entity") == std::string::npos) {
        return nullptr;
    }
    if (repaired) {
        return LoadXmlDocument(path, errorText, true, true);
    }
    return RepairDoctype(path) ? LoadXmlDocument(path, errorText, false, true) : nullptr;
}

// The walk follows the links of the nodes and keeps no stack, so no depth of nesting can exhaust one. `node`
// is the node to deal with next and `parent` the element that it is in. When an element is entered, both move
// down by one level; at the end of a level, where `node` is null, both move up, to the sibling after the
// element.
void CodeChildNodes(xml::Document& document, xml::Node element, bool decode, const PublishParams& params) {
    DecodingState decoding;
    EncodingState state;
    state.stamps.sourceNames = params.addSourcePath;
    xml::Node parent = element;
    xml::Node node = element.get_firstChild();
    while (node || parent != element) {
        if (!node) {
            LeaveElement(parent, decoding);
            LeaveElement(parent, state.inherited);
            state.textFollows.reset();  // It described the last run of siblings of the inner level.
            node = parent.get_nextSibling();
            parent = parent.get_parentNode();
            continue;
        }
        const xml::Node next = decode ? DecodeNode(document, node, params, decoding)
                                      : EncodeNode(document, node, parent, params, state);
        if (next == node) {
            parent = node;
            node = node.get_firstChild();
        } else {
            node = next;
        }
    }
}

}  // namespace ventrix
