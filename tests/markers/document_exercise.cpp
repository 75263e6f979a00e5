#include "markers/document_exercise.h"

#include "markers/dom_helpers.h"
#include "platform/files.h"

namespace ventrix::test {
namespace {

/// The next node in document order within `top`; null at the end.
xml::Node NextNode(xml::Node node, xml::Node top) {
    if (xml::Node child = node.get_firstChild()) {
        return child;
    }
    while (node != top && !node.get_nextSibling()) {
        node = node.get_parentNode();
    }
    return node == top ? xml::Node() : node.get_nextSibling();
}

/// Kinds, names and text of the nodes in document order.
std::string Describe(xml::Node root) {
    std::string description;
    for (xml::Node node = root; node; node = NextNode(node, root)) {
        description.append(std::to_string(static_cast<int>(node.get_nodeType()))).append(node.get_nodeName());
        description.append("[").append(NodeText(node)).append("]");
    }
    return description;
}

void RewriteAll(xml::Node root) {
    for (xml::Node node = root; node; node = NextNode(node, root)) {
        const xml::NamedNodeMap attributes = node.get_attributes();
        for (std::size_t i = 0; i < attributes.get_length(); ++i) {
            attributes.get_item(i).put_text(NodeText(attributes.get_item(i)));
        }
        node.put_source(node.get_source());
        const std::string text = NodeText(node);
        node.put_text("other");
        node.put_text(text);
    }
}

std::string CheckReason(const xml::Document& document) {
    const std::string reason = document.get_parseError().get_reason();
    return reason.empty() || reason.find_first_of("\r\n") != std::string::npos
               ? "the reason is not one line: " + reason
               : "";
}

std::string CheckLoaded(xml::Document& document, std::string_view path, std::string_view bytes) {
    std::string saved;
    if (!document.save(path) || platform::ReadWholeFile(path, saved) != platform::kErrorNone ||
        saved != bytes) {
        return "saved unchanged, but the bytes differ: " + saved;
    }
    const xml::Node root = document.get_documentElement();
    if (!xml::CreateScratchDocument(document)->loadXML(root.get_xml())) {
        return "the XML of the root does not parse on its own: " + root.get_xml();
    }
    if (!document.selectNodes("//node() | //@*")) {
        return "the query yields no list";
    }
    const std::string before = Describe(root);
    RewriteAll(root);
    if (Describe(root) != before) {
        return "rewritten, but the tree differs: " + Describe(root);
    }
    const auto again = xml::CreateDocument();
    if (!document.save(path) || !again->load(path)) {
        return "rewritten, but the file does not load: " + again->get_parseError().get_reason();
    }
    const std::string after = Describe(again->get_documentElement());
    return after == before ? "" : "rewritten and loaded, but the tree differs: " + after;
}

}  // namespace

std::string ExerciseDocument(std::string_view path, std::string_view bytes) {
    if (platform::WriteWholeFile(path, bytes) != platform::kErrorNone) {
        return "cannot write the file";
    }
    const auto document = xml::CreateDocument();
    return document->load(path) ? CheckLoaded(*document, path, bytes) : CheckReason(*document);
}

}  // namespace ventrix::test
