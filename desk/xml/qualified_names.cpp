#include "desk/xml/qualified_names.h"

namespace ventrix::desk {
namespace {

std::string WithPrefix(const xmlNs* space, const xmlChar* name) {
    const std::string local(View(name));
    const bool hasPrefix = space != nullptr && space->prefix != nullptr;
    return hasPrefix ? std::string(View(space->prefix)) + ':' + local : local;
}

}  // namespace

std::string QualifiedName(const xmlNode& element) {
    return WithPrefix(element.ns, element.name);
}

std::string QualifiedName(const xmlAttr& attribute) {
    return WithPrefix(attribute.ns, attribute.name);
}

std::string ValueOf(const xmlAttr& attribute) {
    const XmlString value(xmlNodeListGetString(attribute.doc, attribute.children, 1));
    return std::string(View(value.get()));
}

}  // namespace ventrix::desk
