#include "desk/xml/xhtml.h"

#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr std::array<std::string_view, 20> kEmptyElements = {
    "area",    "base",   "basefont", "br",   "col",   "embed",  "frame", "hr",  "img",     "input",
    "isindex", "keygen", "link",     "meta", "param", "source", "track", "wbr", "command", "spacer"};

constexpr std::string_view kMeta =
    "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" />";

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

bool IsElement(const xmlNode* node, std::string_view name) {
    return node != nullptr && node->type == XML_ELEMENT_NODE && EqualIgnoringCase(View(node->name), name);
}

bool IsEmptyElement(const xmlNode* element) {
    return IsEmptyHtmlElement(View(element->name));
}

/// A declaration of the encoding, which may name another one than the page is written in.
bool DeclaresEncoding(const xmlNode* node) {
    return IsElement(node, "meta") && (xmlHasProp(node, Xml("charset")) != nullptr ||
                                       EqualIgnoringCase(Attribute(node, "http-equiv"), "content-type"));
}

void Replace(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

void AppendEscaped(std::string& page, std::string_view text, bool inValue) {
    for (const char c : text) {
        switch (c) {
            case '&':
                page += "&amp;";
                break;
            case '<':
                page += "&lt;";
                break;
            case '>':
                page += "&gt;";
                break;
            case '"':
                page += inValue ? "&quot;" : "\"";
                break;
            case '\n':
                page += inValue ? "&#10;" : "\n";
                break;
            case '\t':
                page += inValue ? "&#9;" : "\t";
                break;
            case '\r':
                page += "&#13;";
                break;
            default:
                page += c;
        }
    }
}

/// A browser reads the content of scripts and styles as it is; an XML parser needs signs escaped. A CDATA
/// section in comments satisfies both. JSON has no comments, but escapes of its own.
void AppendScript(std::string& page, const xmlNode* element) {
    const XmlString content(xmlNodeGetContent(element));
    std::string text(View(content.get()));
    const bool needsEscapes = text.find_first_of("<&") != std::string::npos;
    if (needsEscapes && Attribute(element, "type").find("json") != std::string::npos) {
        Replace(text, "<", "\\u003c");
        Replace(text, "&", "\\u0026");
    } else if (needsEscapes && text.find("<![CDATA[") == std::string::npos) {
        Replace(text, "]]>", "]] >");
        text = "/*<![CDATA[*/" + text + "/*]]>*/";
    }
    page += text;
}

std::string QualifiedName(const xmlNs* space, const xmlChar* name) {
    const std::string prefix = space == nullptr ? std::string() : std::string(View(space->prefix));
    return (prefix.empty() ? "" : prefix + ":") + std::string(View(name));
}

void AppendAttribute(std::string& page, const std::string& name, std::string_view value) {
    page.append(" ").append(name).append("=\"");
    AppendEscaped(page, value, true);
    page += '"';
}

void AppendStartTag(std::string& page, const xmlNode* element, const std::string& name) {
    page += '<' + name;
    for (const xmlNs* space = element->nsDef; space != nullptr; space = space->next) {
        const std::string prefix(View(space->prefix));
        AppendAttribute(page, prefix.empty() ? "xmlns" : "xmlns:" + prefix, View(space->href));
    }
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        const XmlString value(xmlNodeListGetString(element->doc, attribute->children, 1));
        AppendAttribute(page, QualifiedName(attribute->ns, attribute->name), View(value.get()));
    }
}

/// Where an element's content or end tag goes next.
const xmlNode* AppendStart(std::string& page, const xmlNode* element) {
    const std::string name = QualifiedName(element->ns, element->name);
    AppendStartTag(page, element, name);
    if (element->children == nullptr && IsEmptyElement(element)) {
        page += " />";
        return nullptr;
    }
    page += '>';
    if (IsElement(element, "head")) {
        page += kMeta;
    }
    if (IsElement(element, "script") || IsElement(element, "style")) {
        AppendScript(page, element);
    } else if (element->children != nullptr) {
        return element->children;
    }
    page += "</" + name + '>';
    return nullptr;
}

void AppendLeaf(std::string& page, const xmlNode* node) {
    if (node->type == XML_TEXT_NODE && node->name == xmlStringTextNoenc) {
        AppendMarkup(page, View(node->content));
    } else if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
        AppendEscaped(page, View(node->content), false);
    } else if (node->type == XML_COMMENT_NODE) {
        page.append("<!--").append(View(node->content)).append("-->");
    } else if (node->type == XML_PI_NODE) {
        page.append("<?").append(View(node->name)).append(" ").append(View(node->content)).append("?>");
    } else if (node->type == XML_ENTITY_REF_NODE) {
        page.append("&").append(View(node->name)).append(";");
    }
}

/// Walks without recursion, as a page may be nested deeply.
void AppendNodes(std::string& page, const xmlNode* top) {
    const xmlNode* node = top;
    while (node != nullptr) {
        const xmlNode* inside = nullptr;
        if (node->type == XML_ELEMENT_NODE && !DeclaresEncoding(node)) {
            inside = AppendStart(page, node);
        } else if (node->type != XML_ELEMENT_NODE) {
            AppendLeaf(page, node);
        }
        if (inside != nullptr) {
            node = inside;
            continue;
        }
        while (node != top && node->next == nullptr) {
            node = node->parent;
            page += "</" + QualifiedName(node->ns, node->name) + '>';
        }
        node = node == top ? nullptr : node->next;
    }
}

void AppendDoctype(std::string& page, const xmlDtd& dtd) {
    page.append("<!DOCTYPE ").append(View(dtd.name));
    if (dtd.ExternalID != nullptr) {
        page.append(" PUBLIC \"").append(View(dtd.ExternalID)).append("\"");
        page.append(" \"").append(View(dtd.SystemID)).append("\"");
    } else if (dtd.SystemID != nullptr) {
        page.append(" SYSTEM \"").append(View(dtd.SystemID)).append("\"");
    }
    page += ">\n";
}

/// Whether what follows an "&" and ends before a ";" is the name or the number of a character.
bool IsReference(std::string_view name) {
    return !name.empty() &&
           std::ranges::all_of(name, [](unsigned char c) { return std::isalnum(c) != 0 || c == '#'; });
}

}  // namespace

bool IsEmptyHtmlElement(std::string_view name) {
    return std::ranges::any_of(kEmptyElements,
                               [name](std::string_view empty) { return EqualIgnoringCase(empty, name); });
}

void AppendMarkup(std::string& page, std::string_view html) {
    while (!html.empty()) {
        const std::size_t ampersand = std::min(html.find('&'), html.size());
        page += html.substr(0, ampersand);
        html.remove_prefix(ampersand);
        const std::size_t end = html.find(';');
        const std::string name(end == std::string_view::npos ? std::string_view() : html.substr(1, end - 1));
        const htmlEntityDesc* entity = name.empty() ? nullptr : htmlEntityLookup(Xml(name.c_str()));
        if (entity != nullptr && entity->value > 0x7F) {
            page += "&#" + std::to_string(entity->value) + ';';
            html.remove_prefix(end + 1);
        } else if (!html.empty()) {
            page += IsReference(name) ? "&" : "&amp;";
            html.remove_prefix(1);
        }
    }
}

std::string XhtmlOf(const xmlDoc* document) {
    std::string page;
    if (document->intSubset != nullptr) {
        AppendDoctype(page, *document->intSubset);
    }
    for (const xmlNode* node = document->children; node != nullptr; node = node->next) {
        if (node->type != XML_DTD_NODE) {
            AppendNodes(page, node);
        }
    }
    return page + '\n';
}

}  // namespace ventrix::desk
