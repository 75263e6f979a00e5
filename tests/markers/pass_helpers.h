// Runs a pass over a temporary file: the XML before it in, the XML after it out.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "markers/document_pass.h"
#include "support/test_folder.h"

inline std::string Pass(const std::string& xml, bool decode, ventrix::PublishParams& params) {
    const ventrix::test::TestFolder tree;
    tree.Write("docs/guide.xml", xml);
    params.packageBase = tree.System("map.xml");
    std::string errorText;
    EXPECT_TRUE(ventrix::ProcessXmlFile(tree.System("docs/guide.xml"), decode, params, errorText))
        << errorText;
    return tree.Read("docs/guide.xml");
}

inline std::string Encoded(const std::string& xml, ventrix::PublishParams params) {
    return Pass(xml, false, params);
}

inline std::string Decoded(const std::string& xml, ventrix::PublishParams params = {}) {
    return Pass(xml, true, params);
}

/// An attribute group that holds one entry.
inline std::string Group(const std::string& name, const std::string& value, const std::string& target = "") {
    return "QL_START" + name + "QL_EQ" + value + "QL_TARGET" + target + "QL_SEPQL_END";
}
