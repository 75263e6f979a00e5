#include "markers/document_pass.h"

#include "markers/decoding_walk.h"
#include "markers/dom_helpers.h"
#include "markers/dtd_recovery.h"
#include "markers/encoding_walk.h"
#include "platform/com.h"

namespace ventrix {
namespace {

// What these give is where the walk goes on: at a sibling, or, for no node, behind the parent. The node
// itself means that the walk goes into it.

xml::Node DecodeNode(xml::Document& document, xml::Node node, const PublishParams& record) {
    if (IsElement(node)) {
        return IsListedElement(node, record.skipElements) ? node.get_nextSibling() : node;
    }
    return IsFilledTextNode(node) ? DecodeTextNode(document, node, record) : node.get_nextSibling();
}

xml::Node EncodeElement(xml::Document& document, xml::Node element, PublishParams& record,
                        EncodingMemo& memo) {
    const bool listed = IsListedElement(element, record.elements);
    // Blanks and listed elements go on with a run of siblings, any other node ends it.
    if (!listed) {
        memo.textFollows.reset();
    }
    if (IsListedElement(element, record.skipElements)) {
        return element.get_nextSibling();
    }
    if (listed) {
        return EncodeInlineElement(document, element, record, memo);
    }
    EncodeScopedAttributes(element, record.scopedAttributes);
    return element;
}

xml::Node EncodeNode(xml::Document& document, xml::Node node, PublishParams& record, EncodingMemo& memo) {
    if (IsElement(node)) {
        return EncodeElement(document, node, record, memo);
    }
    if (IsFilledTextNode(node)) {
        memo.textFollows.reset();
        EncodeTextNode(node, record, memo);
    } else if (!IsTextNode(node)) {
        memo.textFollows.reset();
    }
    return node.get_nextSibling();
}

}  // namespace

bool ProcessXmlFile(std::string path, bool decode, PublishParams& record, std::string& errorText) {
    bool loaded = false;
    if (SUCCEEDED(CoInitialize(nullptr))) {
        loaded = ApplyMarkerPass(std::move(path), decode, record, errorText) != nullptr;
    }
    CoUninitialize();
    return loaded;
}

std::unique_ptr<xml::Document> ApplyMarkerPass(std::string path, bool decode, PublishParams& record,
                                               std::string& errorText) {
    std::unique_ptr<xml::Document> document = LoadXmlDocument(path, errorText, false, false);
    if (!document) {
        return nullptr;
    }
    // A document without a root is saved as it is: every step below passes over a null node.
    const xml::Node root = document->get_documentElement();
    if (!IsListedElement(root, record.skipElements)) {
        const std::list<std::string> wholeList = record.addSourcePath;
        record.currentFile = path;
        EncodeScopedAttributes(root, record.scopedAttributes);
        CodeChildNodes(*document, root, decode, record);
        record.addSourcePath = wholeList;
        if (decode) {
            ClearMarkerWords(root);
        } else if (!record.preserveXPathList.empty()) {
            StampPreservedXPaths(*document, record.preserveXPathList, record.preserveXPathAttr);
        }
    }
    document->save(path);
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

// The walk goes by the nodes' own links and keeps no stack, so that no depth of nesting can exhaust one. The
// sibling that follows is fetched by the step itself, since the step may replace its node.
void CodeChildNodes(xml::Document& document, xml::Node element, bool decode, PublishParams& record) {
    EncodingMemo memo;
    xml::Node parent = element;
    xml::Node node = element.get_firstChild();
    while (node || parent != element) {
        if (!node) {
            LeaveElement(parent, memo.inherited);
            memo.textFollows.reset();  // What it tells of the level inside holds no longer outside.
            node = parent.get_nextSibling();
            parent = parent.get_parentNode();
            continue;
        }
        const xml::Node next =
            decode ? DecodeNode(document, node, record) : EncodeNode(document, node, record, memo);
        if (next == node) {
            parent = node;
            node = node.get_firstChild();
        } else {
            node = next;
        }
    }
}

}  // namespace ventrix
