// Owners for the objects of libxml2, and the queries on its trees that several components share. Strings of
// libxml2 are UTF-8.
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
using XmlString = std::unique_ptr<xmlChar, FreeXml>;

inline const xmlChar* Xml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

inline bool IsXmlWhitespace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Null reads as empty.
inline std::string_view View(const xmlChar* text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

/// The text with its reserved characters escaped, for the content of an element or for a quoted value.
std::string EscapedXml(std::string_view text);

/// The string with each run of whitespace as one space and none at its ends: what a transformation may change
/// in a text without changing its words.
std::string Collapsed(std::string_view text);

/// The value of the attribute that has this name and no namespace; empty if there is none.
std::string Attribute(const xmlNode* element, const char* name);

/// Whether a word other than the first of the attribute's value, split at spaces, is this one: the first word
/// of a DITA class is always "-" or "+".
bool HasWord(const xmlNode* element, const char* name, std::string_view word);

/// The next node in document order in the tree under `top`; null at the end. The content of entities is
/// skipped.
xmlNode* NextNode(xmlNode* node, const xmlNode* top);

/// The first child element, and the next sibling element; null if there is none.
xmlNode* FirstElement(const xmlNode* parent);
xmlNode* NextElement(const xmlNode* element);

}  // namespace ventrix::desk
