#include "desk/toolkit/unhandled.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_run.h"
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
    {"bookmap/booklist", "no list is made"},
    {"abbrev-d/abbreviated-form", "the short form of the term is not looked up"},
    {"topic/longdescref", "the link to the long description is left out"},
    {"topic/longquoteref", "the link to the quotation's source is left out"},
    {"topic/indextermref", "is left out"},
    {"topic/unknown", "is left out"},
    {"map/relheader", "its links are left out"},
    {"topic/state", "its name and value are left out"},
    {"topic/boolean", "its value is left out"},
    {"mathml-d/mathmlref", "the formula is left out"},
    {"svg-d/svgref", "the drawing is left out"},
};

struct UnhandledAttribute {
    const char* name;
    const char* type;  ///< Of the elements on which it counts; null for all.
    const char* effect;
};

constexpr UnhandledAttribute kAttributes[] = {
    {"conaction", nullptr, "the content is not pushed to another topic"},
    {"keyscope", nullptr, "its keys are visible everywhere"},
    {"copy-to", nullptr, "the topic is published under its own name"},
    {"chunk", nullptr, "each file becomes one page"},
    {"mapref", nullptr, "the map is left out"},
    {"spectitle", nullptr, "the heading is left out"},
    {"importance", "task/step", "the word for it is left out"},
    {"href", "topic/lq", "the link to the source of the quotation is left out"},
    {"keyref", "topic/lq", "the link to the source of the quotation is left out"},
    {"longdescref", nullptr, "the link to the long description is left out"},
    {"datakeyref", "topic/object", "the object has no data from the key"},
    {"keyref", "topic/param", "the parameter has no value from the key"},
};

bool HasBelow(const xmlNode* node, std::string_view type) {
    for (xmlNode* below = NextNode(const_cast<xmlNode*>(node), node); below != nullptr;
         below = NextNode(below, node)) {
        if (HasType(below, type)) {
            return true;
        }
    }
    return false;
}

/// A list that names its own topic is an ordinary topic reference.
bool MakesList(const xmlNode* node, std::string_view type) {
    return !type.starts_with("bookmap/") ||
           (Attribute(node, "href").empty() && Attribute(node, "keyref").empty());
}

/// A heading of a relationship table is mostly there for the writer.
bool HasLinks(const xmlNode* node, std::string_view type) {
    return type != "map/relheader" || HasBelow(node, "map/topicref");
}

/// Whether the element refers to a topic in a lightweight format.
bool NamesLightweightTopic(const xmlNode* node) {
    const std::string format = Attribute(node, "format");
    const std::string href = Attribute(node, "href");
    const bool isLightweight = format == "markdown" || format == "mdita" || format == "hdita" ||
                               (format.empty() && href.substr(0, href.find('#')).ends_with(".md"));
    return isLightweight && DitaTargetOf(href).has_value();
}

/// No DTD and no vocabulary says what it is.
bool IsUnknown(const xmlNode* node) {
    return node->ns == nullptr && xmlHasProp(node, Xml("class")) == nullptr && View(node->name) != "dita" &&
           !IsForeign(node);
}

void ReportElement(const xmlNode* node, const RemarkSink& remarks) {
    const Subject subject{.element = std::string(View(node->name))};
    const std::string element = "<" + subject.element + ">";
    const std::string types = Attribute(node, "class");
    if (IsUnknown(node)) {
        remarks(node, kNotHandled,
                element +
                    " is not known, so that it is published without a type; declare its class in the "
                    "document's DTD",
                subject);
    }
    for (const UnhandledType& row : kTypes) {
        if (types.find(row.type) != std::string::npos && HasType(node, row.type) &&
            MakesList(node, row.type) && HasLinks(node, row.type)) {
            remarks(node, kNotHandled, element + " is not handled: " + row.effect + kAdvice, subject);
        }
    }
}

void ReportAttributes(const xmlNode* node, const RemarkSink& remarks) {
    for (const UnhandledAttribute& row : kAttributes) {
        if (node->properties != nullptr && xmlHasProp(node, Xml(row.name)) != nullptr &&
            (row.type == nullptr || HasType(node, row.type))) {
            const Subject subject = ReferenceIn(row.name, node, Attribute(node, row.name));
            remarks(node, kNotHandled,
                    subject.attribute + "=\"" + subject.value + "\" of <" + std::string(View(node->name)) +
                        "> is not handled: " + row.effect + kAdvice,
                    subject);
        }
    }
    if (node->properties != nullptr && NamesLightweightTopic(node)) {
        const Subject subject = ReferenceIn("href", node, Attribute(node, "href"));
        remarks(node, kNotHandled,
                "\"" + subject.value +
                    "\" is not a topic in XML: the file is copied as it is; the DITA Open Toolkit handles it "
                    "from version 3 on (--toolkit)",
                subject);
    }
}

/// Whether the stylesheet writes words of its own into the page for the element or its content.
bool HasGeneratedWords(const xmlNode* node) {
    constexpr const char* kWithWords[] = {"topic/topic", "topic/note", "topic/fig", "topic/table",
                                          "topic/related-links"};
    return std::ranges::any_of(
        kWithWords, [node](const char* type) { return HasType(node, type) || HasBelow(node, type); });
}

/// The languages of the stylesheet's words.
bool IsKnownLanguage(const std::string& language) {
    return language.empty() || language.starts_with("en") || language.starts_with("de");
}

}  // namespace

std::string LanguageProblem(const std::string& language, std::set<std::string>& reported) {
    if (IsKnownLanguage(language) || !reported.insert(language).second) {
        return {};
    }
    return "the language \"" + language +
           "\" is not handled: generated words, such as \"Note\" and \"Table\", are in English; the DITA "
           "Open "
           "Toolkit has them in more languages (--toolkit)";
}

void ReportLanguages(xmlDoc* document, const std::string& mapLanguage, std::set<std::string>& reported,
                     const RemarkSink& remarks) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        const bool hasOwn =
            node->type == XML_ELEMENT_NODE && xmlHasNsProp(node, Xml("lang"), XML_XML_NAMESPACE) != nullptr;
        if (node != root && !hasOwn) {
            continue;
        }
        const XmlString own(xmlNodeGetLang(node));
        const std::string language = own == nullptr ? mapLanguage : std::string(View(own.get()));
        if (IsKnownLanguage(language) || !HasGeneratedWords(node)) {
            continue;
        }
        if (const std::string problem = LanguageProblem(language, reported); !problem.empty()) {
            remarks(node, kNotHandled, problem, {.attribute = "xml:lang", .value = language});
        }
    }
}

void ReportUnhandled(xmlDoc* document, const RemarkSink& remarks) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type == XML_ELEMENT_NODE) {
            ReportElement(node, remarks);
            ReportAttributes(node, remarks);
        }
    }
}

}  // namespace ventrix::desk
