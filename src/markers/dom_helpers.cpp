#include "markers/dom_helpers.h"

#include <algorithm>

#include "markers/marker_format.h"

namespace ventrix {
std::string_view NodeName(xml::Node node) {
    return node.get_nodeName();
}

std::string NodeText(xml::Node node) {
    std::string buffer;
    return std::string(node.get_text(buffer));
}

xml::Node NewTextNode(xml::Document& document, std::string_view text) {
    return document.createTextNode(text);
}

xml::Node NewElementGroupNode(xml::Document& document, xml::Node element) {
    // The document can mostly quote the element from its source, which saves a copy of the XML and its
    // escaping.
    const xml::Node quoted = document.createQuotedXml(QL_ELEM_S, element, QL_ELEM_E);
    return quoted ? quoted : NewTextNode(document, WrapElementGroup(element.get_xml()));
}

bool IsElement(xml::Node node) {
    return node.get_nodeType() == xml::NODE_ELEMENT;
}

bool IsTextNode(xml::Node node) {
    return node.get_nodeType() == xml::NODE_TEXT;
}

bool IsListed(std::string_view name, const std::list<std::string>& names) {
    return std::ranges::find(names, name) != names.end();
}

bool IsListedElement(xml::Node element, const std::list<std::string>& names) {
    return !names.empty() && IsListed(NodeName(element), names);
}

bool IsFilledTextNode(xml::Node node) {
    return node.IsFilledText();
}

xml::Node FirstFilledTextNode(xml::Node element) {
    xml::Node node = NextInSubtree(element, element, true);
    while (node && !IsFilledTextNode(node)) {
        node = NextInSubtree(node, element, IsElement(node));
    }
    return node;
}

void PrependGroup(xml::Node textNode, std::string_view group) {
    // Only a merge needs the content. Without one the document puts the group in front and saves the bytes of
    // the content as the file has them.
    if (!textNode.StartsWith(QL_START)) {
        textNode.prepend_text(group);
        return;
    }
    std::string text = NodeText(textNode);
    PrependComposedGroup(text, group);
    textNode.put_text(text);
}

xml::Node AttributeNode(xml::Node element, std::string_view name) {
    return element.get_attributes().getNamedItem(name);
}

std::string AttributeValue(xml::Node element, std::string_view name) {
    return NodeText(AttributeNode(element, name));
}

void AddAttribute(xml::Document& document, xml::Node element, std::string_view name, std::string_view value) {
    xml::Node attribute = document.createAttribute(name);
    attribute.put_value(value);
    element.get_attributes().setNamedItem(attribute);
}

void SetOrAppendAttribute(xml::Document& document, xml::Node element, std::string_view name,
                          std::string_view value) {
    xml::Node attribute = AttributeNode(element, name);
    if (!attribute) {
        AddAttribute(document, element, name, value);
        return;
    }
    attribute.append_text(" ");
    attribute.append_text(value);
}

std::unique_ptr<xml::Document> NewScratchDocument(xml::Document& main) {
    std::unique_ptr<xml::Document> document = xml::CreateScratchDocument(main);
    ConfigureDocument(*document);
    return document;
}

xml::Node ParseElementXml(xml::Document& main, std::string_view xmlText) {
    // Most pieces need no document of their own, which saves half of the time.
    if (const xml::Node element = main.createElementFrom(xmlText)) {
        return element;
    }
    const std::unique_ptr<xml::Document> scratch = NewScratchDocument(main);
    scratch->setProperty("ProhibitDTD", false);
    scratch->loadXML(xmlText);
    if (xmlText.find("<!DOCTYPE") != std::string_view::npos) {
        // The declarations do not come along into the main document, so what refers to them is expanded.
        scratch->loadXML(scratch->get_documentElement().get_xml());
    }
    return scratch->get_documentElement();
}

void ConfigureDocument(xml::Document& document) {
    document.put_async(false);
    document.put_validateOnParse(false);
    document.put_resolveExternals(false);
    document.put_preserveWhiteSpace(true);
}

xml::Node NextInSubtree(xml::Node node, xml::Node top, bool enter) {
    if (enter) {
        if (const xml::Node child = node.get_firstChild()) {
            return child;
        }
    }
    for (; node != top; node = node.get_parentNode()) {
        if (const xml::Node next = node.get_nextSibling()) {
            return next;
        }
    }
    return {};
}

}  // namespace ventrix
