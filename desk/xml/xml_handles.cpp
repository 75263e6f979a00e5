#include "desk/xml/xml_handles.h"

#include <algorithm>

namespace ventrix::desk {
namespace {

xmlNode* ElementFrom(xmlNode* node) {
    while (node != nullptr && node->type != XML_ELEMENT_NODE) {
        node = node->next;
    }
    return node;
}

bool MayDescend(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE || node->type == XML_DOCUMENT_NODE;
}

}  // namespace

std::string EscapedXml(std::string_view text) {
    const XmlString escaped(xmlEncodeSpecialChars(nullptr, Xml(std::string(text).c_str())));
    return std::string(View(escaped.get()));
}

std::string Collapsed(std::string_view text) {
    std::string words;
    words.reserve(text.size());
    const auto end = text.end();
    for (auto word = std::find_if_not(text.begin(), end, IsXmlWhitespace); word != end;) {
        const auto wordEnd = std::find_if(word, end, IsXmlWhitespace);
        words.append(words.empty() ? "" : " ").append(word, wordEnd);
        word = std::find_if_not(wordEnd, end, IsXmlWhitespace);
    }
    return words;
}

std::string Attribute(const xmlNode* element, const char* name) {
    const xmlAttr* attribute = xmlHasNsProp(element, Xml(name), nullptr);
    if (attribute == nullptr) {
        return {};
    }
    // Nearly every value is one text, which needs no copy by libxml2.
    if (attribute->type == XML_ATTRIBUTE_NODE && attribute->children != nullptr &&
        attribute->children->next == nullptr && attribute->children->type == XML_TEXT_NODE) {
        return std::string(View(attribute->children->content));
    }
    const XmlString value(xmlGetNoNsProp(element, Xml(name)));
    return std::string(View(value.get()));
}

bool HasWord(const xmlNode* element, const char* name, std::string_view word) {
    const std::string words = Attribute(element, name);
    for (std::size_t at = words.find(word); at != std::string::npos; at = words.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        if (at > 0 && words[at - 1] == ' ' && (end == words.size() || words[end] == ' ')) {
            return true;
        }
    }
    return false;
}

xmlNode* NextNode(xmlNode* node, const xmlNode* top) {
    if (MayDescend(node) && node->children != nullptr) {
        return node->children;
    }
    while (node != nullptr && node != top && node->next == nullptr) {
        node = node->parent;
    }
    return node == nullptr || node == top ? nullptr : node->next;
}

xmlNode* FirstElement(const xmlNode* parent) {
    return ElementFrom(parent->children);
}

xmlNode* NextElement(const xmlNode* element) {
    return ElementFrom(element->next);
}

}  // namespace ventrix::desk
