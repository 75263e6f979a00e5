#include "desk/documents/references.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "desk/xml/lenient_load.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr std::string_view kXlinkNamespace = "http://www.w3.org/1999/xlink";
constexpr std::string_view kXincludePrefix = "http://www.w3.org/2001/XInclude";

constexpr std::array kGraphicExtensions = {"svg", "svgz", "png", "jpg", "jpeg", "gif", "tif", "tiff",
                                           "bmp", "webp", "eps", "wmf", "emf",  "ico", "cgm"};
constexpr std::array kXmlExtensions = {"xml", "dita", "ditamap", "bookmap", "dbk", "docbook"};
constexpr std::array kDitaRoots = {
    "map",      "bookmap",    "topic",      "concept",         "task",         "reference", "dita",
    "glossary", "glossentry", "glossgroup", "troubleshooting", "subjectScheme"};

std::string_view WithoutFragment(std::string_view reference) {
    return reference.substr(0, reference.find('#'));
}

std::string Extension(std::string_view reference) {
    const std::string_view path = WithoutFragment(reference);
    const std::size_t dot = path.find_last_of("./\\");
    if (dot == std::string_view::npos || path[dot] != '.') {
        return {};
    }
    std::string extension(path.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return extension;
}

template <std::size_t Count>
bool Holds(const std::array<const char*, Count>& words, std::string_view word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

std::string_view Name(const xmlNode* element) {
    return View(element->name);
}

/// The attribute of the element or of its nearest ancestor that has it: in DITA, topicrefs and link lists
/// pass `scope` and `format` on to what they contain.
std::string Inherited(const xmlNode* element, const char* name) {
    for (; element != nullptr && element->type == XML_ELEMENT_NODE; element = element->parent) {
        if (std::string value = Attribute(element, name); !value.empty()) {
            return value;
        }
    }
    return {};
}

bool IsImage(const xmlNode* element) {
    return Name(element) == "image" || Name(element) == "img" || HasWord(element, "class", "topic/image");
}

bool IsCodeReference(const xmlNode* element) {
    return Name(element) == "coderef" || HasWord(element, "class", "pr-d/coderef");
}

bool IsAbsolute(std::string_view reference) {
    return reference.starts_with('/') || reference.find(':') != std::string_view::npos;
}

void Append(std::vector<Reference>& list, Reference reference) {
    if (WithoutFragment(reference.text).empty()) {
        return;
    }
    reference.graphic = reference.graphic || Holds(kGraphicExtensions, Extension(reference.text));
    reference.follow = reference.follow && !reference.graphic;
    reference.relative = !IsAbsolute(reference.text);
    list.push_back(std::move(reference));
}

bool FormatIsXml(std::string_view format, std::string_view reference) {
    return format == "dita" || format == "ditamap" || format == "xml" ||
           (format.empty() && Holds(kXmlExtensions, Extension(reference)));
}

void AppendHref(std::vector<Reference>& list, const xmlNode* element, const std::string& href) {
    const bool image = IsImage(element);
    // An image inside an external link is still local, so it inherits nothing.
    const std::string scope = image ? Attribute(element, "scope") : Inherited(element, "scope");
    const std::string format = image ? std::string() : Inherited(element, "format");
    Reference reference{.text = href, .graphic = image};
    reference.outside = scope == "external" || scope == "peer";
    // The file of a code sample becomes text, whatever it contains.
    const bool sample = IsCodeReference(element);
    reference.follow = !image && !sample && !reference.outside && FormatIsXml(format, href);
    reference.opaque = sample || (!format.empty() && !FormatIsXml(format, href));
    Append(list, std::move(reference));
}

bool HasFallback(const xmlNode* include) {
    for (const xmlNode* child = include->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE && Name(child) == "fallback") {
            return true;
        }
    }
    return false;
}

void AppendInclude(std::vector<Reference>& list, const xmlNode* element) {
    const bool text = Attribute(element, "parse") == "text";
    Append(list, {.text = Attribute(element, "href"),
                  .follow = !text,
                  .optional = HasFallback(element),
                  .confined = text,
                  .opaque = text});
}

void AppendConref(std::vector<Reference>& list, const std::string& target) {
    // A keyword such as -dita-use-conref-target, not a reference.
    if (!target.starts_with("-dita-")) {
        Append(list, {.text = target, .follow = true});
    }
}

/// The file of an unparsed entity that the document declares.
void AppendEntityReference(std::vector<Reference>& list, const xmlNode* element, const std::string& entity) {
    const xmlEntity* declared = xmlGetDocEntity(element->doc, Xml(entity.c_str()));
    if (declared != nullptr && declared->SystemID != nullptr) {
        Append(list, {.text = std::string(View(declared->SystemID)), .graphic = true});
    }
}

void AppendAttribute(std::vector<Reference>& list, const xmlNode* element, const xmlAttr* attribute) {
    const std::string_view name = View(attribute->name);
    const std::string_view space = attribute->ns == nullptr ? std::string_view() : View(attribute->ns->href);
    if (!space.empty() && (space != kXlinkNamespace || name != "href")) {
        return;
    }
    const bool known = name == "href" || name == "conref" || name == "fileref" || name == "data" ||
                       name == "mapref" || name == "entityref" || (name == "src" && IsImage(element));
    if (!known) {
        return;
    }
    const XmlString value(xmlNodeListGetString(element->doc, attribute->children, 1));
    const std::string text(View(value.get()));
    if (name == "href") {
        AppendHref(list, element, text);
    } else if (name == "conref") {
        AppendConref(list, text);
    } else if (name == "mapref") {
        Append(list, {.text = text, .follow = true});
    } else if (name == "fileref" || name == "src") {
        const bool shown = Name(element) == "textdata";
        Append(list, {.text = text, .graphic = !shown, .opaque = shown});
    } else if (name == "entityref") {
        AppendEntityReference(list, element, text);
    } else if (Name(element) == "object" || HasWord(element, "class", "topic/object")) {
        Append(list, {.text = text, .opaque = true});
    }
}

void AppendElement(std::vector<Reference>& list, const xmlNode* element) {
    if (element->ns != nullptr && View(element->ns->href).starts_with(kXincludePrefix)) {
        if (Name(element) == "include") {
            AppendInclude(list, element);
        }
        return;
    }
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        AppendAttribute(list, element, attribute);
    }
}

/// A DTD with a public id is found through the catalogs. It is left out, because a copy of it in the package
/// would lack the modules that it includes.
void AppendDtdFiles(std::vector<Reference>& list, const xmlDtd* dtd) {
    if (dtd == nullptr) {
        return;
    }
    if (dtd->SystemID != nullptr && dtd->ExternalID == nullptr && !IsAbsolute(View(dtd->SystemID))) {
        Append(list, {.text = std::string(View(dtd->SystemID)), .optional = true, .dtd = true});
    }
    for (const xmlNode* node = dtd->children; node != nullptr; node = node->next) {
        if (node->type != XML_ENTITY_DECL) {
            continue;
        }
        const auto* entity = reinterpret_cast<const xmlEntity*>(node);
        const bool parsed = entity->etype == XML_EXTERNAL_GENERAL_PARSED_ENTITY;
        const bool parameter = entity->etype == XML_EXTERNAL_PARAMETER_ENTITY;
        if ((parsed || parameter) && entity->SystemID != nullptr) {
            Append(list, {.text = std::string(View(entity->SystemID)),
                          .follow = parsed,
                          .optional = parameter,
                          .dtd = parameter,
                          .confined = parsed,
                          .line = DeclarationLine(*entity)});
        }
    }
}

}  // namespace

std::vector<Reference> ReferencesOf(xmlDoc* document) {
    std::vector<Reference> list;
    AppendDtdFiles(list, document->intSubset);
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type == XML_ELEMENT_NODE) {
            const std::size_t first = list.size();
            AppendElement(list, node);
            for (std::size_t added = first; added < list.size(); ++added) {
                list[added].line = static_cast<int>(xmlGetLineNo(node));
            }
        }
    }
    return list;
}

bool IsDita(const xmlDoc* document) {
    const xmlNode* root = xmlDocGetRootElement(document);
    const xmlDtd* dtd = document->intSubset;
    const bool namedByDtd =
        dtd != nullptr && View(dtd->ExternalID).find("DTD DITA") != std::string_view::npos;
    return namedByDtd || HasWord(root, "class", "map/map") || HasWord(root, "class", "topic/topic") ||
           xmlHasNsProp(root, Xml("DITAArchVersion"), Xml("http://dita.oasis-open.org/architecture/2005/")) !=
               nullptr ||
           (root->ns == nullptr && Holds(kDitaRoots, Name(root)));
}

}  // namespace ventrix::desk
