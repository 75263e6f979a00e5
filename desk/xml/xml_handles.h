// Owners of what libxml2 hands out. Texts of libxml2 are UTF-8.
#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>
#include <string>
#include <string_view>

namespace ventrix::desk {

struct FreeXml {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
    void operator()(xmlChar* text) const { xmlFree(text); }
};

using XmlDocument = std::unique_ptr<xmlDoc, FreeXml>;
using XmlParser = std::unique_ptr<xmlParserCtxt, FreeXml>;
using XmlText = std::unique_ptr<xmlChar, FreeXml>;

inline const xmlChar* Xml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

/// Null reads as empty.
inline std::string_view View(const xmlChar* text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

/// The attribute's value, looked up without a namespace; empty if there is none.
std::string Attribute(const xmlNode* element, const char* name);

/// The node behind this one in document order within the tree under `top`, entities' content left out; null
/// at the end.
xmlNode* NextNode(xmlNode* node, const xmlNode* top);

/// The first child element, and the next sibling element; null if there is none.
xmlNode* FirstElement(const xmlNode* parent);
xmlNode* NextElement(const xmlNode* element);

}  // namespace ventrix::desk
