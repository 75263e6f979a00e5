// What queries select in the current document.
#include <random>

#include "markers/xml_fixture.h"

namespace ventrix::test {
namespace {

using XmlSelectNodes = XmlTest;

/// The selected nodes in one line: elements by name and text of the first child, text nodes and attributes in
/// quotes, other kinds by number.
std::string Selected(xml::Document& document, std::string_view query) {
    const auto list = document.selectNodes(query);
    if (!list) {
        return "no list";
    }
    std::string line;
    for (std::size_t i = 0; i < list->get_length(); ++i) {
        const xml::Node node = list->get_item(i);
        line += i == 0 ? "" : " ";
        if (node.get_nodeType() == xml::NODE_ELEMENT) {
            line.append(node.get_nodeName()).append(":").append(NodeText(node.get_firstChild()));
        } else if (node.get_nodeType() == xml::NODE_TEXT || node.get_nodeType() == xml::NODE_ATTRIBUTE) {
            line.append(node.get_nodeName()).append("'").append(NodeText(node)).append("'");
        } else {
            line += std::to_string(static_cast<int>(node.get_nodeType()));
        }
    }
    return line;
}

std::string RandomElement(std::minstd_rand& random, int depth) {
    const std::string name(1, "abc"[random() % 3]);
    std::string xml = "<" + name;
    for (const char* attribute : {" x='1'", " y='2'", " x:x='1'", " xml:lang='en'"})
        xml += random() % 4 == 0 ? attribute : "";
    xml += random() % 8 == 0 ? " z='&#49;'>" : ">";
    for (auto children = random() % 4; children > 0 && depth < 6; --children)
        xml += RandomElement(random, depth + 1) + (random() % 2 == 0 ? "text" : "<!-- c -->");
    return xml + "</" + name + ">";
}

struct Query {
    const char* query;
    const char* selected;
};

TEST_F(XmlSelectNodes, SelectsInDocumentOrder) {
    const auto document = Load(
        "<?go?><!DOCTYPE a [<!ENTITY e 'E'><!ATTLIST s d CDATA 'D'>]><!-- c -->"
        "<a xmlns:n='urn:n'><p id='1'>one</p><p k='&e;&lt;'>two</p><s>three<p>&amp;<![CDATA[<]]></p></s>"
        "<n:p>four</n:p><q xmlns='urn:q'><p>five</p></q><t>x&e;y</t><u:p>six</u:p></a><!-- d -->");
    ASSERT_TRUE(document) << reason;
    const Query queries[] = {
        {"/a/p", "p:one p:two"},
        {"//p", "p:one p:two p:&"},
        {"//s/p | /a/p[2] | //p[@id]", "p:one p:two p:&"},
        {"/a/s/preceding-sibling::p", "p:one p:two"},
        {"(//p)[last()]", "p:&"},
        {"//p[. = '&<']", "p:&"},
        {"//p/text()", "'one' 'two' '&' 4"},
        {"//p/@id | //@k | //s/@d", "id'1' k'E<' d'D'"},
        {"//t[. = 'xEy']", "t:x"},
        {"//*[local-name() = 'p' and namespace-uri() = 'urn:q']", "p:five"},
        {"//*[name() = 'n:p']", "n:p:four"},
        {"//*[name() = 'u:p']", "u:p:six"},
        {"/", "9"},
        {"//nothing", ""},
        {"//n:p", "no list"},
        {"//p[", "no list"},
        {"", "no list"},
        {"count(//p)", "no list"},
        {"//p[$x]", "no list"},
        {"//p[no-such-function()]", "no list"},
    };
    for (const Query& row : queries) {
        EXPECT_EQ(Selected(*document, row.query), row.selected) << row.query;
    }
}

TEST_F(XmlSelectNodes, KnowsLanguagesIdsAndTheContentOfEntities) {
    const auto document = Load(
        "<!DOCTYPE a [<!ATTLIST p k ID #IMPLIED m:k ID #IMPLIED><!ENTITY e 'x<b n:c=\"1\">&f;</b>y'>"
        "<!ENTITY f '<i/>in&#38;lt;'>]><a xml:lang='de' xmlns:n='urn:n'><p k=' i1 '>one</p><p "
        "m:k='i2'>two</p>"
        "<q xml:lang='en-GB'>three</q><t>&e;</t><xml:x>four</xml:x><p k='i1'>late</p></a>");
    ASSERT_TRUE(document) << reason;
    const Query queries[] = {
        {"//p[lang('de')]", "p:one p:two p:late"},
        {"//*[lang('en')]", "q:three"},
        {"//@*[local-name() = 'lang']", "xml:lang'de' xml:lang'en-GB'"},
        {"//@*[name() = 'xml:lang' and namespace-uri() != ''][. = 'de']", "xml:lang'de'"},
        {"//*[local-name() = 'x']", "xml:x:four"},
        {"id('i1')", "p:one"},
        {"id('i2 none i1')", "p:one p:two"},
        {"//t[b/i]", "t:"},
        {"//b", "0"},
        {"//t[. = 'xin<y'][node()[2][self::b]]", "t:"},
        {"//t[b/@*[namespace-uri() = 'urn:n']]", "t:"},
    };
    for (const Query& row : queries) {
        EXPECT_EQ(Selected(*document, row.query), row.selected) << row.query;
    }
    FindElement(document->get_documentElement(), "p").get_attributes().get_item(0).put_value("i3");
    EXPECT_EQ(Selected(*document, "id('i3')"), "p:one");
    EXPECT_EQ(Selected(*document, "id('i1')"), "");
}

// A query with a leading space is not a simple path, so that libxml2 evaluates it.
TEST_F(XmlSelectNodes, SimplePathsSelectWhatLibxml2Selects) {
    const char* const queries[] = {
        "/a",
        "/a/b",
        "//b",
        "//b//c",
        "//b/c",
        "/a//c/b",
        "//*",
        "/*/*",
        "//b/*/c",
        "//b[@x]",
        "//b[@x='1']",
        "//*[@x]//c",
        "//c[@y=\"2\"]",
        "/a/b[@x]/b",
        "//b[@lang]",
        "//a//a[@x='1']",
        "//b[@x='']",
        "/b",
        "//nothing",
        "//b//b//b",
        "/a[@x]/*[@y]",
    };
    std::minstd_rand random(7);
    for (int turn = 0; turn < 60; ++turn) {
        const auto document = Load(RandomElement(random, 0));
        ASSERT_TRUE(document) << reason;
        for (const std::string query : queries) {
            EXPECT_EQ(Selected(*document, query), Selected(*document, " " + query)) << query;
        }
    }
}

TEST_F(XmlSelectNodes, SeesEarlierChanges) {
    const auto document = Load("<a x='1'>one<b/>two</a>");
    ASSERT_TRUE(document) << reason;
    xml::Node root = document->get_documentElement();
    EXPECT_EQ(Selected(*document, "/a[text() = 'one']"), "a:one");
    root.get_firstChild().put_text("<1>");
    root.get_attributes().get_item(0).put_value("2");
    EXPECT_EQ(Selected(*document, "/a[@x = '2'][text() = '<1>']"), "a:<1>");
    EXPECT_EQ(Selected(*document, "//text()[. = 'one']"), "");
    root.insertBefore(document->createTextNode("new"), FindElement(root, "b"));
    EXPECT_EQ(Selected(*document, "//text()"), "'<1>' 'new' 'two'");
    root.removeChild(FindElement(root, "b"));
    EXPECT_EQ(Selected(*document, "//b"), "");
    xml::Node attribute = document->createAttribute("y");
    attribute.put_value("3");
    root.get_attributes().setNamedItem(attribute);
    EXPECT_EQ(Selected(*document, "//@y"), "y'3'");
    const auto scratch = xml::CreateScratchDocument(*document);
    ASSERT_TRUE(scratch->loadXML("<ui>x</ui>"));
    root.insertBefore(scratch->get_documentElement(), {});
    EXPECT_EQ(Selected(*document, "/a/ui[. = 'x']"), "ui:x");
    EXPECT_EQ(Selected(*scratch, "//ui"), "no list");
}

TEST_F(XmlSelectNodes, ExtremelyNestedExpressionYieldsNoList) {
    const auto document = Load("<a>x</a>");
    std::string nested = "/a";
    for (int i = 0; i < 100000; ++i) {
        nested += "[/a";
    }
    EXPECT_FALSE(document->selectNodes(nested));
    EXPECT_FALSE(document->selectNodes(std::string(100000, '(')));
    EXPECT_EQ(Selected(*xml::CreateDocument(), "//a"), "no list");
}

}  // namespace
}  // namespace ventrix::test
