#include "desk/toolkit/unhandled.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "desk/toolkit/dita_classes.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr char kAdvice[] = "; the DITA Open Toolkit handles it (--toolkit)";

struct UnhandledType {
    const char* type;
    const char* effect;
};

constexpr UnhandledType kTypes[] = {
    {"ditavalref-d/ditavalref", "its branch is published once, without its filter"},
    {"mapgroup-d/anchorref", "is published where it is"},
    {"map/anchor", "nothing is anchored to it"},
    {"map/navref", "the map is left out"},
    {"bookmap/toc", "no list is made"},
    {"bookmap/figurelist", "no list is made"},
    {"bookmap/tablelist", "no list is made"},
    {"bookmap/indexlist", "no list is made"},
    {"bookmap/glossarylist", "no list is made"},
    {"bookmap/trademarklist", "no list is made"},
    {"bookmap/bibliolist", "no list is made"},
    {"bookmap/abbrevlist", "no list is made"},
    {"abbrev-d/abbreviated-form", "the short form of the term is not looked up"},
    {"topic/longdescref", "the link to the long description is left out"},
    {"topic/longquoteref", "the link to the quotation's source is left out"},
    {"topic/indextermref", "is left out"},
    {"topic/unknown", "is left out"},
    {"map/relheader", "its links are left out"},
};

struct UnhandledAttribute {
    const char* name;
    const char* effect;
};

constexpr UnhandledAttribute kAttributes[] = {
    {"conaction", "the content is not pushed to another topic"},
    {"keyscope", "its keys are visible everywhere"},
    {"copy-to", "the topic is published under its own name"},
    {"chunk", "each file becomes one page"},
    {"mapref", "the map is left out"},
};

/// A list that names its own topic is an ordinary topic reference.
bool MakesList(const xmlNode* node, std::string_view type) {
    return !type.starts_with("bookmap/") ||
           (Attribute(node, "href").empty() && Attribute(node, "keyref").empty());
}

void ReportElement(const xmlNode* node, const NativePath& file,
                   const std::function<void(const DitaFinding&)>& finding) {
    const int line = static_cast<int>(xmlGetLineNo(node));
    const std::string element = "<" + std::string(View(node->name)) + ">";
    const std::string types = Attribute(node, "class");
    for (const UnhandledType& row : kTypes) {
        if (types.find(row.type) != std::string::npos && HasType(node, row.type) &&
            MakesList(node, row.type)) {
            finding({file, line, element + " is not handled: " + row.effect + kAdvice, kNotHandled});
        }
    }
    for (const UnhandledAttribute& row : kAttributes) {
        if (node->properties != nullptr && xmlHasProp(node, Xml(row.name)) != nullptr) {
            finding({file, line,
                     row.name + ("=\"" + Attribute(node, row.name)) + "\" of " + element +
                         " is not handled: " + row.effect + kAdvice,
                     kNotHandled});
        }
    }
}

}  // namespace

void ReportUnhandled(xmlDoc* document, const NativePath& file,
                     const std::function<void(const DitaFinding&)>& finding) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type == XML_ELEMENT_NODE) {
            ReportElement(node, file, finding);
        }
    }
}

}  // namespace ventrix::desk
