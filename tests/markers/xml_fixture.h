// A fixture that loads and saves documents as files on temporary drives, as the passes do.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "markers/dom_helpers.h"
#include "support/test_drives.h"

namespace ventrix::test {

inline constexpr char kDocumentPath[] = R"(C:\docs\topic.xml)";

/// The tree below a node in one line: elements as name(...), text nodes as 'text', other kinds as their
/// number.
inline std::string Outline(xml::Node node) {
    std::string outline;
    for (xml::Node child = node.get_firstChild(); child; child = child.get_nextSibling()) {
        outline += outline.empty() ? "" : " ";
        switch (child.get_nodeType()) {
            case xml::NODE_ELEMENT:
                outline.append(child.get_nodeName()).append("(").append(Outline(child)).append(")");
                break;
            case xml::NODE_TEXT:
                outline.append("'").append(NodeText(child)).append("'");
                break;
            default:
                outline += std::to_string(static_cast<int>(child.get_nodeType()));
        }
    }
    return outline;
}

/// name=value for each attribute, in order.
inline std::string AttributesOf(xml::Node element) {
    std::string list;
    const xml::NamedNodeMap attributes = element.get_attributes();
    for (std::size_t i = 0; i < attributes.get_length(); ++i) {
        const xml::Node attribute = attributes.get_item(i);
        list += i == 0 ? "" : " ";
        list.append(attribute.get_nodeName()).append("=").append(NodeText(attribute));
    }
    return list;
}

/// The first element of this name below `top`, in document order; null without one.
inline xml::Node FindElement(xml::Node top, std::string_view name) {
    for (xml::Node child = top.get_firstChild(); child; child = child.get_nextSibling()) {
        if (child.get_nodeName() == name) {
            return child;
        }
        if (xml::Node found = FindElement(child, name)) {
            return found;
        }
    }
    return {};
}

class XmlTest : public ::testing::Test {
  protected:
    XmlTest() { drives.MakeFolder(R"(C:\docs)"); }

    /// The document of these bytes; on failure null, with the reason in `reason`.
    std::unique_ptr<xml::Document> Load(const std::string& bytes, bool resolveExternals = false) {
        drives.Write(kDocumentPath, bytes);
        auto document = xml::CreateDocument();
        document->put_resolveExternals(resolveExternals);
        const bool loaded = document->load(kDocumentPath);
        reason = document->get_parseError().get_reason();
        EXPECT_EQ(loaded, reason.empty()) << reason;
        EXPECT_EQ(loaded, bool(document->get_documentElement()));
        EXPECT_EQ(reason.find_first_of("\r\n"), std::string::npos) << reason;
        return loaded ? std::move(document) : nullptr;
    }

    std::string Saved(xml::Document& document) {
        EXPECT_TRUE(document.save(kDocumentPath));
        return drives.Read(kDocumentPath);
    }

    /// The bytes after a load and a save; the reason if they do not load.
    std::string RoundTrip(const std::string& bytes) {
        const auto document = Load(bytes);
        return document ? Saved(*document) : reason;
    }

    TestDrives drives;
    std::string reason;
};

}  // namespace ventrix::test
