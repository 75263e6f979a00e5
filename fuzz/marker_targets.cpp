// The two directions of the marker coding, and preserved queries, on documents in memory.
#include <memory>

#include "fuzz/checks.h"
#include "fuzz/targets.h"
#include "markers/decoding_walk.h"
#include "markers/document_pass.h"
#include "markers/dom_helpers.h"
#include "markers/path_stamps.h"

namespace ventrix::fuzz {
namespace {

constexpr std::size_t kLongestDocument = 20000;

std::unique_ptr<xml::Document> Load(std::string_view text) {
    auto document = xml::CreateDocument();
    return document->loadXML(text) ? std::move(document) : nullptr;
}

void Decode(xml::Document& document, const PublishParams& params) {
    const xml::Node root = document.get_documentElement();
    CodeChildNodes(document, root, true, params);
    ClearMarkerWords(root);
}

void Encode(xml::Document& document, const PublishParams& params) {
    const xml::Node root = document.get_documentElement();
    CodeChildNodes(document, root, false, params);
}

void CheckParses(const std::string& xml) {
    Check(Load(xml) != nullptr, "the result does not parse: " + xml);
}

/// True for attributes that a pass adds.
bool IsAdded(std::string_view name) {
    return name == "data-twtags" || name == "stamp" || name == "xmlns" || name.starts_with("xmlns:");
}

std::string DescribeAttributes(xml::Node element) {
    std::string description;
    const xml::NamedNodeMap attributes = element.get_attributes();
    for (std::size_t i = 0; i < attributes.get_length(); ++i) {
        const xml::Node attribute = attributes.get_item(i);
        if (!IsAdded(NodeName(attribute))) {
            description.append(" ").append(NodeName(attribute)).append("=").append(NodeText(attribute));
        }
    }
    return description;
}

std::string Opening(xml::Node node) {
    return IsElement(node) ? "<" + std::string(NodeName(node)) + DescribeAttributes(node) + ">"
                           : NodeText(node);
}

/// Tags, attributes and text of a tree, whatever text nodes the text is divided into.
std::string Describe(xml::Node root) {
    std::string description;
    xml::Node node = root;
    while (true) {
        description += Opening(node);
        if (const xml::Node child = node.get_firstChild()) {
            node = child;
            continue;
        }
        description += IsElement(node) ? "</>" : "";
        while (node != root && !node.get_nextSibling()) {
            node = node.get_parentNode();
            description += "</>";
        }
        if (node == root) {
            return description;
        }
        node = node.get_nextSibling();
    }
}

/// Without scoped attributes: a group for the text of a carried element is not read again.
PublishParams AllOptions() {
    PublishParams params;
    params.attributes = {"a", "audience"};
    params.elements = {"i", "b"};
    params.skipElements = {"skip"};
    params.addXpath = true;
    params.xpathAttr = "stamp";
    return params;
}

}  // namespace

void MarkerDecode(std::string_view input) {
    const auto document = Load(input.substr(0, kLongestDocument));
    if (!document) {
        return;
    }
    Decode(*document, {});
    CheckParses(document->get_documentElement().get_xml());
}

// What the walks carry through the text comes back: the decoded document equals the first one.
void EncodeDecode(std::string_view input) {
    // Marker words of the document itself are read as such, and a DOCTYPE does not survive the way through a
    // string.
    const bool isOrdinary =
        input.find("QL_") == std::string_view::npos && input.find("<!DOCTYPE") == std::string_view::npos &&
        input.find("twtags") == std::string_view::npos && input.find("stamp") == std::string_view::npos;
    const auto document = isOrdinary ? Load(input.substr(0, kLongestDocument)) : nullptr;
    if (!document) {
        return;
    }
    const PublishParams params = AllOptions();
    const std::string before = Describe(document->get_documentElement());
    Encode(*document, params);
    const std::string encoded = document->get_documentElement().get_xml();
    const auto decoded = Load(encoded);
    Check(decoded != nullptr, "the encoded document does not parse: " + encoded);
    Decode(*decoded, params);
    CheckParses(decoded->get_documentElement().get_xml());
    const std::string after = Describe(decoded->get_documentElement());
    Check(after == before, "decoding gives another document:\n" + before + "\n" + after + "\n" + encoded);
}

// The first line is a query, the rest a document.
void XPathQueries(std::string_view input) {
    constexpr std::size_t kLongestQuery = 200;
    constexpr std::size_t kLongestQueriedDocument = 2000;
    Parts parts(input);
    const std::string query = parts.Line();
    const auto document = Load(parts.Rest().substr(0, kLongestQueriedDocument));
    if (!document || query.size() > kLongestQuery) {
        return;
    }
    const auto selected = document->selectNodes(query);
    const auto again = document->selectNodes(query);
    Check(selected.has_value() == again.has_value(), "the second query answers differently");
    for (std::size_t i = 0; selected && i < selected->get_length(); ++i) {
        Check(selected->get_item(i) == again->get_item(i), "the second query selects other nodes");
        static_cast<void>(NodeText(selected->get_item(i)));
    }
    StampPreservedXPaths(*document, {query}, "stamp");
    CheckParses(document->get_documentElement().get_xml());
}

}  // namespace ventrix::fuzz
