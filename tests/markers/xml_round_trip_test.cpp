// Unchanged content is saved byte for byte, in every encoding.
#include <iconv.h>

#include "markers/xml_fixture.h"

namespace ventrix::test {
namespace {

using XmlRoundTrip = XmlTest;
using namespace std::string_literals;

const char* const kDocuments[] = {
    R"(<a/>)",
    R"(<a></a>)",
    R"(<a ></a >)",
    "<a\n\tx = 'it\"'\r\n y=\"&#65;&lt;&quot;'\"  />",
    "\xEF\xBB\xBF<a>\xC3\xA4</a>\n\n",
    R"(<?xml version='1.0' encoding="utf-8" standalone = "yes" ?><a/>)",
    "<?xml version=\"1.0\"?>\r\n<a>\r\n  <b/>\r\r\n</a>\r\n",
    R"(<a>&#x41;&#65;&amp;&lt;&gt;&quot;&apos;]]&gt;</a>)",
    R"(<a>x<![CDATA[<b>&amp;]]]]><![CDATA[>]]>y<![CDATA[]]></a>)",
    R"(<!-- before --><?go <now>?><a><!-- <b> & -->x<?p?><?p  a>b ?></a><!-- after -->)",
    R"(<!DOCTYPE a><a/>)",
    R"(<!DOCTYPE a SYSTEM 'missing.dtd'><a/>)",
    R"(<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.0 Transitional//EN" "http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd">
<html xmlns="http://www.w3.org/1999/xhtml"><p>&#160;</p></html>)",
    R"(<!DOCTYPE a [ <!-- ]> ' --> <?p ]> " ?> <!ENTITY e "]&#62;"> <!ENTITY f '&e;"'>
   <!ELEMENT a ANY> <!ATTLIST a b CDATA "]>" > <!ENTITY % g "<!-- ' -->"> %g; ]  ><a>&f;</a>)",
    R"(<a xmlns="urn:a" xmlns:b="urn:b"><b:c b:d="e"/><c xmlns=""/></a>)",
    R"(<a><c:b d:e="f"/></a>)",
    "<\xC3\xA4 \xC3\xB6=\"\xF0\x9F\x98\x80\">\xE2\x82\xAC</\xC3\xA4>",
    "<a>\n\n<b>\t</b> <b> </b></a>",
};

TEST_F(XmlRoundTrip, PreservesEveryByte) {
    for (const std::string document : kDocuments) {
        EXPECT_EQ(RoundTrip(document), document);
    }
}

TEST_F(XmlRoundTrip, PreservesEveryByteAroundAChange) {
    for (const std::string document : kDocuments) {
        const auto loaded = Load(document);
        ASSERT_TRUE(loaded) << document << reason;
        xml::Node root = loaded->get_documentElement();
        xml::Node text = loaded->createTextNode("new");
        root.insertBefore(text, root.get_firstChild());
        root.removeChild(text);
        xml::Node attribute = loaded->createAttribute("new");
        attribute.put_value("1");
        EXPECT_EQ(Saved(*loaded), document);
        root.get_attributes().setNamedItem(attribute);
        const std::string saved = Saved(*loaded);
        const std::size_t at = saved.find(" new=\"1\"");
        ASSERT_NE(at, std::string::npos) << saved;
        EXPECT_EQ(saved.substr(0, at) + saved.substr(at + 8), document);
    }
}

std::string Converted(const std::string& text, const char* encoding) {
    const iconv_t converter = iconv_open(encoding, "UTF-8");
    std::string result(4 * text.size() + 8, '\0');
    char* in = const_cast<char*>(text.data());
    char* out = result.data();
    std::size_t inLeft = text.size();
    std::size_t outLeft = result.size();
    EXPECT_EQ(iconv(converter, &in, &inLeft, &out, &outLeft), 0U) << encoding;
    iconv_close(converter);
    result.resize(result.size() - outLeft);
    return result;
}

std::string Declared(const char* encoding) {
    return "<?xml version=\"1.0\" encoding=\""s + encoding +
           "\"?>\r\n<a b='\xC3\xA9'>\xC3\xA4\xC3\xB6&#8364;<c/>\n</a>\n";
}

struct Encoding {
    const char* declared;
    const char* converter;
    std::string mark;  ///< The byte-order mark.
};

TEST_F(XmlRoundTrip, WritesALargeDocumentInPieces) {
    // The number of nodes cannot be estimated from the beginning.
    std::string bytes = "<a>" + std::string(100000, '-');
    std::string expected = bytes;
    for (int i = 0; i < 20000; ++i) {
        const std::string rest = "text " + std::to_string(i) + "<c/></b>\n";
        bytes += "<b>" + rest;
        expected += "<b>new " + rest;
    }
    const auto document = Load(bytes + "</a>");
    ASSERT_TRUE(document) << reason;
    for (xml::Node node = document->get_documentElement().get_firstChild(); node;
         node = node.get_nextSibling()) {
        node.get_firstChild().prepend_text("new ");  // Ignored for the line feeds, which have no child.
    }
    EXPECT_TRUE(Saved(*document) == expected + "</a>");
}

TEST_F(XmlRoundTrip, SavesInTheOriginalEncoding) {
    const Encoding encodings[] = {
        {"UTF-16", "UTF-16LE", "\xFF\xFE"}, {"UTF-16", "UTF-16BE", "\xFE\xFF"},
        {"utf-16", "UTF-16LE", ""},         {"ISO-8859-1", "ISO-8859-1", ""},
        {"iso-8859-15", "ISO-8859-15", ""}, {"windows-1252", "CP1252", ""},
        {"Windows-1250", "CP1250", ""},     {"IBM850", "CP850", ""},
        {"UTF-8", "UTF-8", "\xEF\xBB\xBF"},
    };
    for (const Encoding& encoding : encodings) {
        SCOPED_TRACE(encoding.declared + " "s + encoding.converter);
        const std::string bytes = encoding.mark + Converted(Declared(encoding.declared), encoding.converter);
        const auto document = Load(bytes);
        ASSERT_TRUE(document) << reason;
        EXPECT_EQ(Saved(*document), bytes);
        xml::Node root = document->get_documentElement();
        EXPECT_EQ(NodeText(root.get_firstChild()), "\xC3\xA4\xC3\xB6\xE2\x82\xAC");
        EXPECT_EQ(AttributesOf(root), "b=\xC3\xA9");
        root.insertBefore(document->createTextNode("\xC3\xA4!"), root.get_firstChild());
        const std::string changed =
            encoding.mark +
            Converted(
                Declared(encoding.declared).insert(Declared(encoding.declared).find("'>") + 2, "\xC3\xA4!"),
                encoding.converter);
        EXPECT_EQ(Saved(*document), changed);
    }
}

TEST_F(XmlRoundTrip, WritesCharactersThatTheEncodingLacksAsReferences) {
    for (const char* encoding : {"US-ASCII", "windows-1250", "ibm-367", "x-mac-cyrillic", "macce"}) {
        const std::string declaration = "<?xml version='1.0' encoding='"s + encoding + "'?>";
        const auto document = Load(declaration + "<a b='&#20013;'>1</a>");
        ASSERT_TRUE(document) << reason;
        document->get_documentElement().get_firstChild().put_text("\xE4\xB8\xAD 2");
        document->get_documentElement().get_attributes().get_item(0).put_value("\xE4\xB8\xAD");
        EXPECT_EQ(Saved(*document), declaration + "<a b='&#20013;'>&#20013; 2</a>");
    }
    const auto document = Load("<?xml version='1.0' encoding='ISO-8859-1'?><a b=''>\xE4</a>");
    ASSERT_TRUE(document) << reason;
    xml::Node root = document->get_documentElement();
    root.get_firstChild().put_text("\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80");
    root.get_attributes().get_item(0).put_value("\xCE\xB1");
    EXPECT_EQ(Saved(*document),
              "<?xml version='1.0' encoding='ISO-8859-1'?><a b='&#945;'>\xE4 &#8364; &#128512;</a>");
}

/// A document, an element that is carried into it, and the saved bytes.
struct Carried {
    std::string document, element, saved;
};

TEST_F(XmlRoundTrip, SavesMarkupThatTheEncodingLacksAsUtf8AndCdataAsText) {
    const std::string ascii = "<?xml version='1.0' encoding='US-ASCII'?>";
    const std::string utf8 = "<?xml version='1.0' encoding='UTF-8'?>";
    const std::string latin = "<?xml version='1.0' encoding='iso-8859-1'?>";
    const Carried rows[] = {
        {ascii + "<p>&#246;</p>",
         "<i gr\xC3\xB6\xC3\x9F"
         "e=\"\xC3\xB6\"/>",
         utf8 + "<p>&#246;<i gr\xC3\xB6\xC3\x9F"
                "e=\"\xC3\xB6\"/></p>"},
        {ascii + "<p></p>", "<\xC3\xB6>'\"</\xC3\xB6>", utf8 + "<p><\xC3\xB6>'\"</\xC3\xB6></p>"},
        {latin + "<p>\xE4</p>", "<i><!--\xE4\xB8\xAD--></i>",
         utf8 + "<p>\xC3\xA4<i><!--\xE4\xB8\xAD--></i></p>"},
        {latin + "<p></p>", "<i><?p \xE4\xB8\xAD?></i>", utf8 + "<p><i><?p \xE4\xB8\xAD?></i></p>"},
        {latin + "<p></p>",
         "<gr\xC3\xB6\xC3\x9F"
         "e><!--\xC3\xB6-->\xE4\xB8\xAD</gr\xC3\xB6\xC3\x9F"
         "e>",
         latin + "<p><gr\xF6\xDF"
                 "e><!--\xF6-->&#20013;</gr\xF6\xDF"
                 "e></p>"},
        {ascii + "<p></p>",
         "<i a='&gt;'><![CDATA[<\n]]><![CDATA[\xE4\xB8\xAD]]]]><![CDATA[>&\xC3\xB6\r\n]]></i>",
         ascii + "<p><i a='&gt;'><![CDATA[<\n]]>&#20013;]]&gt;&amp;&#246;\r\n</i></p>"},
        {latin + "<html><META CharSet='iso-8859-1'/><meta name='x' content='a'/>"
                 "<meta http-equiv='Content-Type' content='text/html; charset = ISO-8859-1'/></html>",
         "<\xE4\xB8\xAD/>",
         utf8 +
             "<html><META CharSet='UTF-8'/><meta name='x' content='a'/>"
             "<meta http-equiv='Content-Type' content='text/html; charset = UTF-8'/><\xE4\xB8\xAD/></html>"},
        {latin + "<html><meta charset='iso-8859-1'/>\xE4</html>", "<i>\xE4\xB8\xAD</i>",
         latin + "<html><meta charset='iso-8859-1'/>\xE4<i>&#20013;</i></html>"},
    };
    for (const Carried& row : rows) {
        const auto document = Load(row.document);
        ASSERT_TRUE(document) << reason;
        const auto scratch = xml::CreateScratchDocument(*document);
        ASSERT_TRUE(scratch->loadXML(row.element)) << row.element;
        document->get_documentElement().insertBefore(scratch->get_documentElement(), {});
        EXPECT_EQ(Saved(*document), row.saved) << row.element;
        EXPECT_TRUE(Load(row.saved)) << row.saved << reason;
    }
}

TEST_F(XmlRoundTrip, BytesInvalidInTheEncodingFailTheLoad) {
    const std::string refused[] = {
        "<a>\xE4</a>",
        "<?xml version='1.0' encoding='UTF-8'?><a>\xE4</a>",
        "<?xml version='1.0' encoding='no-such-encoding'?><a/>",
        "<?xml version='1.0' encoding='ibm-367'?><a>x\x94y</a>",
        "<?xml version='1.0' encoding='utf-7'?><a/>",
        "<?xml version='1.0' encoding='UTF-16'?><a/>",
        "<?xml version='1.0' encoding='UtF-\n8'?><a/>",
        "\xFF\xFE<\0a\0/\0>"s,
        "\xFF\xFE<\0a\0>\0\0\xD8<\0/\0a\0>\0"s,
        "<a>x\0y</a>"s,
        "<a\0\0\0\0\0\0\0></a"s,
    };
    for (const std::string& document : refused) {
        EXPECT_FALSE(Load(document)) << document;
    }
}

}  // namespace
}  // namespace ventrix::test
