#include "desk/xml/xml_handles.h"

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

std::string Attribute(const xmlNode* element, const char* name) {
    const XmlString value(xmlGetNoNsProp(element, Xml(name)));
    return std::string(View(value.get()));
}

bool HasWord(const xmlNode* element, const char* name, std::string_view word) {
    const std::string padded = Attribute(element, name) + " ";
    return padded.find(std::string(" ").append(word).append(" ")) != std::string::npos;
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
