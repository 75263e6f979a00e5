#include "desk/toolkit/dita_classes.h"

#include <algorithm>
#include <sstream>
#include <string>

#include "desk/toolkit/dita_vocabulary.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

/// The types of a class without their modules: "ph uicontrol " for "+ topic/ph ui-d/uicontrol ".
std::string TypeNames(std::string_view types) {
    std::string names;
    for (std::size_t slash = types.find('/'); slash != std::string_view::npos; slash = types.find('/')) {
        types.remove_prefix(slash + 1);
        const std::size_t end = std::min(types.find(' '), types.size());
        names.append(types.substr(0, end)) += ' ';
        types.remove_prefix(end);
    }
    return names;
}

/// "ph" for "+ topic/ph ui-d/uicontrol "; empty if the class has no type of this module.
std::string BaseTopicType(const std::string& types) {
    constexpr std::string_view kModule = " topic/";
    const std::size_t module = types.find(kModule);
    if (module == std::string::npos) {
        return {};
    }
    const std::size_t begin = module + kModule.size();
    return types.substr(begin, types.find(' ', begin) - begin);
}

/// Names such as "summary" and "person": in a topic they are those of a specialisation.
bool IsBookMetadata(const ElementType& type) {
    return !type.types.starts_with("map/") && type.types.find(" bookmap/") != std::string_view::npos;
}

/// The class, and the default values that a DTD gives the element's attributes.
void AddAttributes(xmlNode* element, const ElementType& type) {
    xmlNewProp(element, Xml("class"), Xml(std::string("- ").append(type.types).append(" ").c_str()));
    if (type.defaults.empty()) {
        return;
    }
    std::istringstream defaults{std::string(type.defaults)};
    for (std::string name, value; std::getline(defaults >> std::ws, name, '=') && defaults >> value;) {
        if (xmlHasProp(element, Xml(name.c_str())) == nullptr) {
            xmlNewProp(element, Xml(name.c_str()), Xml(value.c_str()));
        }
    }
}

}  // namespace

std::string BaseName(const xmlNode* element) {
    const std::string types = Attribute(element, "class");
    const std::size_t begin = types.find('/') + 1;
    return begin == 0 ? std::string() : types.substr(begin, types.find(' ', begin) - begin);
}

bool IsForeign(const xmlNode* node) {
    for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
        if (node->ns != nullptr || HasType(node, "topic/foreign") || HasType(node, "topic/unknown")) {
            return true;
        }
    }
    return false;
}

bool IsPhrase(const xmlNode* node) {
    return HasType(node, "topic/keyword") || HasType(node, "topic/term") || HasType(node, "topic/ph") ||
           HasType(node, "topic/cite");
}

bool AddMissingClasses(xmlDoc* document) {
    bool allKnown = true;
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type != XML_ELEMENT_NODE || node->ns != nullptr ||
            xmlHasProp(node, Xml("class")) != nullptr) {
            continue;
        }
        const ElementType* type = FindElementType(View(node->name));
        if (type != nullptr && !(HasType(root, "topic/topic") && IsBookMetadata(*type))) {
            AddAttributes(node, *type);
        } else if (View(node->name) != "dita" && !IsForeign(node)) {
            allKnown = false;
        }
    }
    return allKnown;
}

void NameByBaseType(xmlDoc* document) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        const std::string types = node->type == XML_ELEMENT_NODE ? Attribute(node, "class") : std::string();
        if (types.find('/') == std::string::npos) {
            continue;
        }
        xmlSetProp(node, Xml("page-types"), Xml(TypeNames(types).c_str()));
        const std::string base = BaseTopicType(types);
        if (!base.empty() && View(node->name) != base) {
            xmlNodeSetName(node, Xml(base.c_str()));
        }
    }
}

bool HasType(const xmlNode* node, std::string_view type) {
    if (node == nullptr || node->type != XML_ELEMENT_NODE) {
        return false;
    }
    return HasWord(node, "class", type);
}

}  // namespace ventrix::desk
