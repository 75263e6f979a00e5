#include "desk/toolkit/page_numbers.h"

#include <string>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_document.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

struct Counter {
    const char* type;
    bool needsTitle;
    int count = 0;
};

}  // namespace

void AddPageNumbers(xmlDoc* document) {
    Counter counters[] = {{"topic/fig", true}, {"topic/table", true}, {"topic/fn", false}};
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        for (Counter& counter : counters) {
            if (HasType(node, counter.type) &&
                (!counter.needsTitle || ChildOfType(node, "topic/title") != nullptr)) {
                xmlSetProp(node, Xml("page-number"), Xml(std::to_string(++counter.count).c_str()));
            }
        }
    }
}

}  // namespace ventrix::desk
