// The tree of a document, and what is saved after changes.
#include <random>

#include "markers/marker_format.h"
#include "markers/xml_fixture.h"

/// The bytes allocated now; part of the address sanitizer, with which all tests are built but those for
/// Windows.
#ifdef _WIN32
static std::size_t __sanitizer_get_current_allocated_bytes() {
    return 0;  // The test that asks for it is left out (tests/windows_left_out.txt).
}
#else
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace ventrix::test {
namespace {

using XmlTree = XmlTest;

struct Row {
    const char* document;
    const char* expected;
};

TEST_F(XmlTree, ShowsEachKindOfNode) {
    const Row rows[] = {
        {"<a/>", ""},
        {"<a></a>", ""},
        {"<a>x</a>", "'x'"},
        {"<a>\n <b/>\t<c:d/></a>", "'\n ' b() '\t' c:d()"},
        {"<a>x<!-- c -->y<?p q?>z</a>", "'x' 8 'y' 7 'z'"},
        {"<a>x<![CDATA[c]]>y<![CDATA[]]></a>", "'x' 4 'y' 4"},
        {"<a>1\r\n2\r3\n4&#13;5</a>", "'1\n2\n3\n4\r5'"},
        {"<a>&#65;&#x1F600;&lt;&amp;amp;&gt;&quot;&apos;</a>", "'A\xF0\x9F\x98\x80<&amp;>\"''"},
        {"<!DOCTYPE a [<!ENTITY e 'x<b/>'>]><a>1&e;2&e;&e;&lt;3</a>", "'1' 5 '2' 5 5 '<3'"},
        {"<!DOCTYPE a [<!ENTITY lt '&#38;#60;'>]><a>1&lt;2</a>", "'1<2'"},
        {"<a><b><c>x</c>y</b><b/>z</a>", "b(c('x') 'y') b() 'z'"},
    };
    for (const Row& row : rows) {
        const auto document = Load(row.document);
        ASSERT_TRUE(document) << row.document << reason;
        EXPECT_EQ(Outline(document->get_documentElement()), row.expected) << row.document;
    }
}

TEST_F(XmlTree, ExpandsAndNormalisesAttributeValues) {
    const Row rows[] = {
        {"<a/>", ""},
        {"<a x='1' b:y = \"2\"\n z=''/>", "x=1 b:y=2 z="},
        {"<a x=' 1\t2\n3\r\n4\r5 '/>", "x= 1 2 3 4 5 "},
        {"<a x='&#9;&#10;&#x20AC;&lt;&amp;&quot;>'/>", "x=\t\n\xE2\x82\xAC<&\">"},
        {"<!DOCTYPE a [<!ENTITY e 'E&f;'><!ENTITY f 'F\n&#38;#60;'>]><a x='1&e;2'/>", "x=1EF <2"},
        {"<!DOCTYPE a [<!ATTLIST a x NMTOKENS #IMPLIED y CDATA #IMPLIED>]><a x='  1 \n 2 ' y=' 1 '/>",
         "x=1 2 y= 1 "},
        {"<!DOCTYPE a [<!ATTLIST a x CDATA 'one' y CDATA 'two' p:z CDATA 'three'>]><a y='2'/>",
         "y=2 x=one p:z=three"},
        {"<!DOCTYPE a [<!ENTITY e '1'><!ATTLIST a x CDATA '&e;&amp;' x CDATA 'late'>]><a/>", "x=1&"},
        {"<!DOCTYPE a [<!ATTLIST a x CDATA #FIXED 'f' y CDATA #IMPLIED>]><a/>", "x=f"},
    };
    for (const Row& row : rows) {
        const auto document = Load(row.document);
        ASSERT_TRUE(document) << row.document << reason;
        EXPECT_EQ(AttributesOf(document->get_documentElement()), row.expected) << row.document;
    }
}

TEST_F(XmlTree, LinksSiblingsBothWays) {
    const auto document = Load("<!-- c --><a>x<b/><!-- c --><d>y</d></a><?p?>");
    ASSERT_TRUE(document) << reason;
    const xml::Node root = document->get_documentElement();
    for (xml::Node node = root.get_firstChild(); node; node = node.get_nextSibling()) {
        EXPECT_EQ(node.get_parentNode(), root);
        if (xml::Node next = node.get_nextSibling()) {
            EXPECT_EQ(next.get_previousSibling(), node);
        }
    }
    EXPECT_FALSE(root.get_firstChild().get_previousSibling());
    EXPECT_EQ(root.get_parentNode().get_nodeType(), xml::NODE_DOCUMENT);
    EXPECT_FALSE(root.get_parentNode().get_parentNode());
}

/// Checks the children both from the first one by next siblings and from the last one by previous siblings.
void ExpectChildren(xml::Node parent, const std::vector<xml::Node>& expected) {
    std::vector<xml::Node> forwards;
    for (xml::Node node = parent.get_firstChild(); node; node = node.get_nextSibling()) {
        EXPECT_EQ(node.get_parentNode(), parent);
        forwards.push_back(node);
    }
    EXPECT_EQ(forwards, expected);
    std::vector<xml::Node> backwards;
    for (xml::Node node = forwards.empty() ? xml::Node() : forwards.back(); node;
         node = node.get_previousSibling()) {
        backwards.insert(backwards.begin(), node);
    }
    EXPECT_EQ(backwards, expected);
}

TEST_F(XmlTree, LinksStayConsistentUnderRandomChanges) {
    const auto document = Load("<a>x<b/><c/><!-- c --></a>");
    ASSERT_TRUE(document) << reason;
    xml::Node root = document->get_documentElement();
    std::vector<xml::Node> children;
    for (xml::Node node = root.get_firstChild(); node; node = node.get_nextSibling()) {
        children.push_back(node);
    }
    std::minstd_rand random(1);
    for (int step = 0; step < 500 && !HasFailure(); ++step) {
        const std::size_t place = random() % (children.size() + 1);
        const xml::Node reference = place == children.size() ? xml::Node() : children[place];
        const auto at = children.begin() + static_cast<std::ptrdiff_t>(place);
        if (random() % 2 == 0) {
            children.insert(at, document->createTextNode(std::to_string(step)));
            root.insertBefore(children[place], reference);
        } else if (reference) {
            root.removeChild(reference);
            EXPECT_FALSE(reference.get_parentNode() || reference.get_previousSibling());
            children.erase(at);
        }
        ExpectChildren(root, children);
    }
}

TEST_F(XmlTree, NullNodeAnswersNothingAndIgnoresChanges) {
    xml::Node none;
    none.put_text("x");
    none.insertBefore(none, none);
    none.removeChild(none);
    EXPECT_FALSE(none.get_firstChild() || none.get_nextSibling() || none.get_previousSibling() ||
                 none.get_parentNode());
    EXPECT_EQ(none.get_nodeType(), xml::NODE_INVALID);
    EXPECT_EQ(NodeText(none) + none.get_xml() + std::string(none.get_nodeName()), "");
    none.get_attributes().setNamedItem(none);
    EXPECT_FALSE(none.get_attributes().get_item(0));
    EXPECT_FALSE(xml::CreateDocument()->get_documentElement());
}

/// A document, a change to it, and the bytes that are saved then.
struct Change {
    const char* document;
    void (*change)(xml::Document& document, xml::Node root);
    const char* saved;
};

void SetFirstText(xml::Node root, std::string_view text) {
    root.get_firstChild().put_text(text);
}

void AddAttribute(xml::Document& document, xml::Node element, std::string_view name, std::string_view value) {
    xml::Node attribute = document.createAttribute(name);
    attribute.put_value(value);
    element.get_attributes().setNamedItem(attribute);
}

const Change kChanges[] = {
    {"<a x='1'>1<b />2</a>", [](auto&, xml::Node a) { SetFirstText(a, "<&>\"'\r\n"); },
     "<a x='1'>&lt;&amp;&gt;\"'&#13;\n<b />2</a>"},
    {"<a>1<b/></a>", [](auto&, xml::Node a) { SetFirstText(a, ""); }, "<a><b/></a>"},
    {"<a>1</a>", [](auto&, xml::Node a) { SetFirstText(a, std::string_view("x\0y", 3)); }, "<a>x</a>"},
    {"<a>1</a>", [](auto&, xml::Node a) { SetFirstText(a, "\x01\xFF\xEF\xBF\xBE\xED\xA0\x80\t"); },
     "<a>\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\t</"
     "a>"},
    {"<a>\r\n1\r\n</a>", [](auto&, xml::Node a) { SetFirstText(a, NodeText(a.get_firstChild()) + "2\n"); },
     "<a>\r\n1\r\n2\r\n</a>"},
    {"<a>&#65;\r\n&gt;'</a>",
     [](auto&, xml::Node a) {
         a.get_firstChild().prepend_text("<\n");
         a.get_firstChild().prepend_text("2");
     },
     "<a>2&lt;\r\n&#65;\r\n&gt;'</a>"},
    {"<a>1</a>",
     [](auto&, xml::Node a) {
         SetFirstText(a, "2");
         a.get_firstChild().prepend_text("x");
     },
     "<a>x2</a>"},
    {"<a><![CDATA[1]]><!-- c --><?p q?></a>",
     [](auto&, xml::Node a) {
         for (xml::Node child = a.get_firstChild(); child; child = child.get_nextSibling()) {
             child.put_text("x");
         }
     },
     "<a><![CDATA[1]]><!-- c --><?p q?></a>"},
    {"<a x = '1'  y=\"2\" >1</a>",
     [](auto&, xml::Node a) { a.get_attributes().get_item(0).put_text("<'\"&\t\n\r>"); },
     "<a x = '&lt;&#39;\"&amp;&#9;&#10;&#13;&gt;'  y=\"2\" >1</a>"},
    {"<a x='1'>2 &lt;<b/></a>",
     [](auto&, xml::Node a) {
         for (xml::Node node : {a.get_attributes().get_item(0), a.get_firstChild(), a}) {
             node.append_text("'");
             node.append_text("3");
             node.append_text(std::string_view("4\0005", 3));
         }
     },
     "<a x='1&#39;34'>2 &lt;'34<b/></a>"},
    {"<a x='1'/>", [](auto& d, xml::Node a) { AddAttribute(d, a, "b:y", "\""); },
     "<a x='1' b:y=\"&quot;\"/>"},
    {"<a x='1' z='3'/>", [](auto& d, xml::Node a) { AddAttribute(d, a, "x", "2"); }, "<a x=\"2\" z='3'/>"},
    {"<a><b/></a>", [](auto& d, xml::Node a) { AddAttribute(d, a.get_firstChild(), "n", ""); },
     "<a><b n=\"\"/></a>"},
    {"<a x = '1' ><b y='2'><c>3</c ></b></a>",
     [](auto&, xml::Node a) {
         FindElement(a, "b").get_attributes();
         SetFirstText(FindElement(a, "c"), std::string(a.get_attributes().get_length(), '4'));
     },
     "<a x = '1' ><b y='2'><c>4</c ></b></a>"},
    {"<a/>", [](auto& d, xml::Node a) { a.insertBefore(d.createTextNode("<"), {}); }, "<a>&lt;</a>"},
    {"<a x='1' />", [](auto& d, xml::Node a) { a.insertBefore(d.createTextNode("1"), {}); },
     "<a x='1' >1</a>"},
    {"<a>2</a>", [](auto& d, xml::Node a) { a.insertBefore(d.createTextNode("1"), a.get_firstChild()); },
     "<a>12</a>"},
    {"<a>1<b>2</b>3</a>", [](auto&, xml::Node a) { a.removeChild(a.get_firstChild().get_nextSibling()); },
     "<a>13</a>"},
    {"<a><b/><c>1</c></a>",
     [](auto&, xml::Node a) { a.insertBefore(FindElement(a, "c"), FindElement(a, "b")); },
     "<a><c>1</c><b/></a>"},
    {"<a><b><c/></b></a>",
     [](auto&, xml::Node a) { FindElement(a, "c").insertBefore(FindElement(a, "b"), {}); },
     "<a><b><c/></b></a>"},
    {"<a><b/><c/></a>",
     [](auto&, xml::Node a) { FindElement(a, "c").insertBefore(FindElement(a, "b"), FindElement(a, "b")); },
     "<a><b/><c/></a>"},
    {"<a><b/><c/></a>", [](auto&, xml::Node a) { FindElement(a, "c").removeChild(FindElement(a, "b")); },
     "<a><b/><c/></a>"},
    {"<!DOCTYPE a [<!ATTLIST a x CDATA '1' y CDATA '2'>]><a/>",
     [](auto&, xml::Node a) { a.get_attributes().get_item(1).put_text("3"); },
     "<!DOCTYPE a [<!ATTLIST a x CDATA '1' y CDATA '2'>]><a y=\"3\"/>"},
    {"<!DOCTYPE a [<!ENTITY e 'E'>]><a>1&e;2</a>", [](auto&, xml::Node a) { SetFirstText(a, "3"); },
     "<!DOCTYPE a [<!ENTITY e 'E'>]><a>3&e;2</a>"},
};

TEST_F(XmlTree, SavesChangesAndNothingElse) {
    for (const Change& row : kChanges) {
        const auto document = Load(row.document);
        ASSERT_TRUE(document) << row.document << reason;
        row.change(*document, document->get_documentElement());
        EXPECT_EQ(Saved(*document), row.saved) << row.document;
    }
}

TEST_F(XmlTree, KeepsAdjacentTextNodesApart) {
    const auto document = Load("<a>1<b/>2</a>");
    ASSERT_TRUE(document) << reason;
    xml::Node root = document->get_documentElement();
    const xml::Node element = FindElement(root, "b");
    const xml::Node inserted = document->createTextNode("x");
    root.insertBefore(inserted, element);
    root.removeChild(element);
    EXPECT_EQ(Outline(root), "'1' 'x' '2'");
    EXPECT_EQ(inserted.get_previousSibling(), root.get_firstChild());
    EXPECT_EQ(inserted.get_parentNode(), root);
    EXPECT_FALSE(element.get_parentNode() || element.get_nextSibling());
}

TEST_F(XmlTree, InvalidAttributeNameYieldsNoNode) {
    const auto document = xml::CreateDocument();
    for (const char* name : {"", "1a", "a b", "a=", "<", "a:", ":a", "a:b:c", "\xFF"}) {
        EXPECT_FALSE(document->createAttribute(name)) << name;
    }
    for (const char* name : {"a", "a:b", "data-x.y_1", "\xC3\xA4"}) {
        EXPECT_EQ(document->createAttribute(name).get_nodeName(), name);
    }
}

TEST_F(XmlTree, InsertsFromAReleasedScratchDocument) {
    const auto document = Load("<html><p>1</p></html>");
    ASSERT_TRUE(document) << reason;
    xml::Node paragraph = FindElement(document->get_documentElement(), "p");
    for (int i = 0; i < 3; ++i) {
        const auto scratch = xml::CreateScratchDocument(*document);
        ASSERT_TRUE(scratch->loadXML("<ui x='&lt;'>OK &amp; <b/>\n</ui>"));
        paragraph.insertBefore(scratch->get_documentElement(), paragraph.get_firstChild());
        EXPECT_FALSE(scratch->get_documentElement());
    }
    xml::Node inserted = paragraph.get_firstChild();
    EXPECT_EQ(inserted.get_parentNode(), paragraph);
    inserted.get_firstChild().put_text("No");
    EXPECT_EQ(Saved(*document),
              "<html><p><ui x='&lt;'>No<b/>\n</ui><ui x='&lt;'>OK &amp; <b/>\n</ui>"
              "<ui x='&lt;'>OK &amp; <b/>\n</ui>1</p></html>");
}

TEST_F(XmlTree, MalformedScratchXmlYieldsNoElement) {
    const auto document = Load("<html/>");
    for (const char* text : {"", "x", "<a>", "<a/><b/>", "<a>&nbsp;</a>"}) {
        const auto scratch = xml::CreateScratchDocument(*document);
        EXPECT_FALSE(scratch->loadXML(text)) << text;
        EXPECT_FALSE(scratch->get_documentElement()) << text;
        EXPECT_NE(scratch->get_parseError().get_reason(), "") << text;
    }
    EXPECT_TRUE(
        xml::CreateScratchDocument(*document)->loadXML("<?xml version='1.0' encoding='UTF-16'?><a/>"));
}

TEST_F(XmlTree, ElementXmlParsesOnItsOwn) {
    const Row rows[] = {
        {"<a><b x='1'>2<c/></b>3</a>", "<b x='1'>2<c/></b>"},
        {"<a><b>&amp;<![CDATA[<]]><!-- c --></b></a>", "<b>&amp;<![CDATA[<]]><!-- c --></b>"},
        {"<a xmlns='u'><b/></a>", "<b xmlns=\"u\"/>"},
        {"<a xmlns='u' xmlns:p='v'><b/></a>", "<b xmlns=\"u\"/>"},
        {"<a xmlns:p='v' xmlns:q='&amp;\"'><b p:x='1'><q:c/></b></a>",
         "<b xmlns:p=\"v\" xmlns:q=\"&amp;&quot;\" p:x='1'><q:c/></b>"},
        {"<a xmlns:p='v'><b xmlns:p='w'><p:c/></b></a>", "<b xmlns:p='w'><p:c/></b>"},
        {"<a xmlns='u'><x xmlns=''><b/></x></a>", "<b/>"},
        {"<a xmlns:p='v'><b><c xmlns:p='w'><p:d/></c></b></a>",
         "<b xmlns:p=\"v\"><c xmlns:p='w'><p:d/></c></b>"},
        {"<!DOCTYPE a [<!ENTITY e 'E<c/>&f;'><!ENTITY f 'F&#38;#38;'>]><a><b x='&f;'>1&e;</b></a>",
         "<b x='F&amp;'>1E<c/>F&#38;</b>"},
        {"<!DOCTYPE a [<!ENTITY e '&f;>2<![CDATA[3]]>'><!ENTITY f '1]]'>]><a><b>&e;</b></a>",
         "<b>1]]&gt;2<![CDATA[3]]></b>"},
        {"<!DOCTYPE a [<!ATTLIST a xmlns:p CDATA 'v'>]><a><b p:x='1'/></a>", "<b xmlns:p=\"v\" p:x='1'/>"},
        {"<!DOCTYPE a [<!ENTITY e '<c d=\"k:l\">&f;</c>'><!ENTITY f '<p:d q:x=\"1\"/>'>]>"
         "<a xmlns:p='v' xmlns:q='w' xmlns:k='z'><b>&e;</b></a>",
         "<b xmlns:p=\"v\" xmlns:q=\"w\"><c d=\"k:l\"><p:d q:x=\"1\"/></c></b>"},
        {"<!DOCTYPE a [<!ATTLIST b x NMTOKENS #IMPLIED y CDATA #IMPLIED z ID #IMPLIED>]>"
         "<a><b x=' 1 \n 2 ' y = ' 3  4 '  z='i'/></a>",
         "<b x='1 2' y = ' 3  4 '  z='i'/>"},
    };
    for (const Row& row : rows) {
        const auto document = Load(row.document);
        ASSERT_TRUE(document) << row.document << reason;
        const std::string xml = FindElement(document->get_documentElement(), "b").get_xml();
        EXPECT_EQ(xml, row.expected) << row.document;
        EXPECT_TRUE(xml::CreateScratchDocument(*document)->loadXML(xml)) << xml;
        EXPECT_EQ(Saved(*document), row.document);
    }
    const auto changed = Load("<a><b x='1'>2<c/></b></a>");
    xml::Node element = FindElement(changed->get_documentElement(), "b");
    element.get_firstChild().put_text("<");
    EXPECT_EQ(element.get_xml(), "<b x='1'>&lt;<c/></b>");
}

/// A change to a text node that quotes an element, or to the element, once the text node is in the tree.
using Afterwards = void(xml::Node text, xml::Node element);

TEST_F(XmlTree, QuotedElementEqualsATextNodeOfItsEscapedXml) {
    const std::pair<const char*, bool> documents[] = {
        {"<a>1<b x=\"&lt;\">'2' &amp;<c/>\r\n</b>3\r\n</a>", true},
        {"<a>1<b/></a>", true},
        {"<!DOCTYPE a>\n<a>1<b>\xC3\xA4&#39;</b></a>", true},
        {"<a xmlns='u'>1<b>\xC3\xA4</b></a>", false},
        {"<!DOCTYPE a [<!ENTITY e 'E'>]><a>1<b>&e;</b></a>", false},
    };
    Afterwards* const afterwards[] = {
        [](xml::Node, xml::Node) {},
        [](xml::Node text, xml::Node) { text.prepend_text("<"); },
        [](xml::Node text, xml::Node) { text.put_text("new"); },
        [](xml::Node, xml::Node element) { element.get_firstChild().put_text("new"); },
    };
    const auto savedWith = [&](const char* bytes, Afterwards* change, bool quoted) {
        const auto document = Load(bytes);
        xml::Node root = document->get_documentElement();
        const xml::Node element = FindElement(root, "b");
        std::string escaped = element.get_xml();
        EscapeMarkup(escaped);
        const std::string content = "S\n" + escaped + "<E";
        const xml::Node text =
            quoted ? document->createQuotedXml("S\n", element, "<E") : document->createTextNode(content);
        EXPECT_EQ(NodeText(text), content);
        EXPECT_TRUE(text.IsFilledText() && text.StartsWith("S\n") && !text.StartsWith("E"));
        root.insertBefore(text, element);
        root.removeChild(element);
        change(text, element);
        return Saved(*document);
    };
    for (const auto& [bytes, isHeld] : documents) {
        if (!isHeld) {
            const auto document = Load(bytes);
            const xml::Node element = FindElement(document->get_documentElement(), "b");
            EXPECT_FALSE(document->createQuotedXml("S", element, "E")) << bytes;
            continue;
        }
        for (Afterwards* change : afterwards) {
            EXPECT_EQ(savedWith(bytes, change, true), savedWith(bytes, change, false)) << bytes;
        }
    }
    const auto changed = Load("<a><b>1</b></a>");
    const xml::Node element = FindElement(changed->get_documentElement(), "b");
    element.get_firstChild().put_text("2");
    EXPECT_FALSE(changed->createQuotedXml("S", element, "E")) << "the element differs from its source";
    EXPECT_FALSE(changed->createQuotedXml("S", element.get_firstChild(), "E"));
}

TEST_F(XmlTree, ReplacedTextReleasesItsMemory) {
    const auto document = Load("<a x='1'>1<b/>2</a>");
    ASSERT_TRUE(document) << reason;
    const xml::Node root = document->get_documentElement();
    xml::Node text = root.get_firstChild();
    xml::Node prefixed = text.get_nextSibling().get_nextSibling();
    xml::Node attribute = root.get_attributes().get_item(0);
    const std::string piece(1000, 'x');
    const std::size_t before = __sanitizer_get_current_allocated_bytes();
    for (int i = 0; i < 1000; ++i) {
        attribute.put_text(NodeText(attribute) + piece);
        text.put_text(NodeText(text) + piece);
        prefixed.prepend_text(piece);
    }
    EXPECT_LT(__sanitizer_get_current_allocated_bytes() - before, 20 * piece.size() * 1000);
    const std::string whole(1000 * piece.size(), 'x');
    EXPECT_TRUE(Saved(*document) == "<a x='1" + whole + "'>1" + whole + "<b/>" + whole + "2</a>");
}

TEST_F(XmlTree, TextNodeIsFilledByMoreThanWhitespace) {
    const std::pair<const char*, bool> rows[] = {
        {" \t\r\n", false}, {"&#32;&#x9;&#10;&#13;", false}, {" x", true},
        {"\n]", true},      {" \xC2\xA0\n", true},           {" &#160;", true},
        {" &amp;\n", true}, {"<![CDATA[x]]>", false},
    };
    for (const auto& [content, filled] : rows) {
        const auto document = Load("<a>" + std::string(content) + "</a>");
        ASSERT_TRUE(document) << reason;
        xml::Node text = document->get_documentElement().get_firstChild();
        EXPECT_EQ(text.IsFilledText(), filled) << content;
        if (text.get_nodeType() == xml::NODE_TEXT) {
            text.prepend_text("\n");
            EXPECT_EQ(text.IsFilledText(), filled) << content;
            text.prepend_text("x");
            EXPECT_TRUE(text.IsFilledText()) << content;
            text.put_text(" \t\r\n");
            EXPECT_FALSE(text.IsFilledText()) << content;
        }
    }
    EXPECT_FALSE(xml::Node().IsFilledText());
}

}  // namespace
}  // namespace ventrix::test
