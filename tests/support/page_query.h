// XPath queries on a page.
#pragma once

#include <gtest/gtest.h>
#include <libxml/xpath.h>

#include <string>
#include <vector>

#include "desk/xml/xml_handles.h"

namespace ventrix::test {

using Texts = std::vector<std::string>;

/// The string value of each node that the XPath finds, or the one value of an XPath that does not give nodes.
/// A page that is not well-formed fails the test.
inline Texts Found(const std::string& page, const std::string& xpath) {
    const desk::XmlDocument document(
        xmlReadMemory(page.data(), static_cast<int>(page.size()), "page", nullptr, XML_PARSE_NONET));
    if (document == nullptr) {
        ADD_FAILURE() << "not well-formed: " << page.substr(0, 200);
        return {};
    }
    xmlXPathContext* context = xmlXPathNewContext(document.get());
    xmlXPathObject* value = xmlXPathEvalExpression(desk::Xml(xpath.c_str()), context);
    Texts texts;
    if (value->type != XPATH_NODESET) {
        texts.emplace_back(desk::View(desk::XmlString(xmlXPathCastToString(value)).get()));
    }
    const xmlNodeSet* nodes = value->nodesetval;
    for (int i = 0; nodes != nullptr && i < nodes->nodeNr; ++i) {
        texts.emplace_back(desk::View(desk::XmlString(xmlXPathCastNodeToString(nodes->nodeTab[i])).get()));
    }
    xmlXPathFreeObject(value);
    xmlXPathFreeContext(context);
    return texts;
}

}  // namespace ventrix::test
