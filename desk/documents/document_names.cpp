#include "desk/documents/document_names.h"

#include <string_view>

#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

void Add(std::set<std::string, std::less<>>& names, const xmlNs* space, const xmlChar* localName) {
    if (space != nullptr && space->prefix != nullptr) {
        names.insert(std::string(View(space->prefix)) + ':' + std::string(View(localName)));
    } else if (!names.contains(View(localName))) {
        names.emplace(View(localName));
    }
}

}  // namespace

void CollectNames(xmlDoc* document, DocumentNames& names) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type != XML_ELEMENT_NODE) {
            continue;
        }
        Add(names.elements, node->ns, node->name);
        for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
            Add(names.attributes, attribute->ns, attribute->name);
        }
    }
}

}  // namespace ventrix::desk
