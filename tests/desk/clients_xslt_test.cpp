#include "desk/clients/xslt_client.h"

#include "desk/clients/saxon.h"
#include "desk/folder_fixture.h"
#include "support/links.h"
#include "support/page_query.h"
#include "support/text_rows.h"

namespace ventrix::desk {
namespace {

class XsltClient : public FolderFixture {
  protected:
    std::int32_t Run(const std::string& source, const std::string& stylesheet, const std::string& output) {
        record_ = {};
        console_.clear();
        HostServices host;
        host.console = [this](const std::string& text) { console_ += text; };
        return MakeXsltClient(settings_, access_, record_)("XSLTRunTrScenario -dontuseqlconsole -file \"" +
                                                               source + "\" -xslfilepath \"" + stylesheet +
                                                               "\" -outputfilepath \"" + output + "\"",
                                                           host)
            .status;
    }
    std::int32_t RunHere() { return Run(System("d ü.xml"), System("s ü.xsl"), System("out/p ü.html")); }
    static std::string Sheet(const std::string& content) {
        return "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'"
               " xmlns:str='http://exslt.org/strings' xmlns:exsl='http://exslt.org/common'"
               " extension-element-prefixes='exsl str'>" +
               content + "</xsl:stylesheet>";
    }
    static std::string TextSheet(const std::string& body) {
        return Sheet("<xsl:output method='text'/><xsl:template match='/'>" + body + "</xsl:template>");
    }
    XsltSettings settings_;
    FileAccess access_;
    TransformationRecord record_;
    std::string console_;
};

TEST_F(XsltClient, StylesheetsRun) {
    Write("part.xsl", Sheet("<xsl:template name='part'>imported</xsl:template>"));
    Write("other ü.xml", "<o>other</o>");
    Write("e.dtd", "<!ENTITY product 'P40'><!ATTLIST d kind CDATA 'default'>");
    Write("e ü.dtd", "<!ENTITY product 'P40'>");
    const struct {
        const char* what;
        std::string document, stylesheet;
        const char* output;
    } rows[] = {
        {"xsl:output", "<d/>",
         Sheet("<xsl:output method='xml' encoding='ISO-8859-1' omit-xml-declaration='yes'/>"
               "<xsl:template match='/'><p>ä</p></xsl:template>"),
         "<p>\xE4</p>\n"},
        {"an imported part", "<d/>",
         Sheet("<xsl:import href='part.xsl'/><xsl:output method='text'/>"
               "<xsl:template match='/'><xsl:call-template name='part'/></xsl:template>"),
         "imported"},
        {"document()", "<d/>", TextSheet("<xsl:value-of select=\"document('other%20%C3%BC.xml', /)\"/>"),
         "other"},
        {"document() beside the stylesheet", "<d/>",
         TextSheet("<xsl:value-of select=\"document('other%20%C3%BC.xml')\"/>"), "other"},
        {"EXSLT", "<d/>", TextSheet("<xsl:value-of select=\"str:replace('abc', 'b', '-')\"/>"), "a-c"},
        {"the DTD's entities and attributes", "<!DOCTYPE d SYSTEM 'e.dtd'><d>&product;</d>",
         TextSheet("<xsl:value-of select=\"concat(d, ' ', d/@kind)\"/>"), "P40 default"},
        {"a DTD by a path in system notation, with spaces",
         "<!DOCTYPE d SYSTEM \"" + System("e ü.dtd") + "\"><d>&product;</d>",
         TextSheet("<xsl:value-of select='d'/>"), "P40"},
        {"a DTD by a native path, with spaces",
         "<!DOCTYPE d SYSTEM \"" + Native("e ü.dtd") + "\"><d>&product;</d>",
         TextSheet("<xsl:value-of select='d'/>"), "P40"},
        {"an absent DTD", "<!DOCTYPE d SYSTEM 'http://127.0.0.1:9/none.dtd'><d>text</d>",
         TextSheet("<xsl:value-of select='d'/>"), "text"},
        {"nothing from a network", "<d/>",
         TextSheet("<xsl:value-of select=\"concat('[', document('http://127.0.0.1:9/x.xml'), ']')\"/>"),
         nullptr},
        {"a message", "<d/>", TextSheet("<xsl:message>note\nwell</xsl:message>done"), "done"},
    };
    for (const auto& row : rows) {
        Write("d ü.xml", row.document);
        Write("s ü.xsl", row.stylesheet);
        Remove("out/p ü.html");
        EXPECT_EQ(RunHere(), row.output == nullptr ? 1 : 0) << row.what << ": " << record_.reason;
        EXPECT_EQ(Read("out/p ü.html"), row.output == nullptr ? "" : row.output) << row.what;
        EXPECT_EQ(record_.started, 1) << row.what;
    }
    EXPECT_EQ(console_, "note\nwell\n");
}

TEST_F(XsltClient, IncludedFilesAreProcessedWithoutAnAddedBase) {
    Write("d ü.xml",
          "<!DOCTYPE d PUBLIC '-//Nobody//DTD D//EN' 'no-such.dtd'><d "
          "xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include href='sub/part%20%C3%BC.xml'/>"
          "<xi:include href='sub/lines.txt' parse='text'/><xi:include href='gone.xml'>"
          "<xi:fallback>fallback</xi:fallback></xi:include></d>");
    Write("sub/part ü.xml",
          "<part xmlns:xi='http://www.w3.org/2001/XInclude'>part<xi:include href='inner.xml'/></part>");
    Write("sub/inner.xml", "<inner>inner</inner>");
    Write("sub/lines.txt", "a<b");
    Write("s ü.xsl", TextSheet("<xsl:value-of select=\"concat(d/part, '|', d, count(//@*))\"/>"));
    EXPECT_EQ(RunHere(), 0) << record_.reason;
    EXPECT_EQ(Read("out/p ü.html"), "partinner|partinnera<bfallback0");
}

TEST_F(XsltClient, HtmlIsWrittenAsXhtml) {
    const struct {
        const char *body, *page;
    } rows[] = {
        {"<p>a<br/><a name='x'/>&#160;&lt;&amp;</p>", "<p>a<br /><a name=\"x\"></a>\u00a0&lt;&amp;</p>"},
        {"<img src='a&amp;b' alt='&quot;'/>", "<img src=\"a&amp;b\" alt=\"&quot;\" />"},
        {"<script>if (a &lt; b &amp;&amp; c[d[0]]&gt;1) {}</script>",
         "<script>/*<![CDATA[*/if (a < b && c[d[0]] >1) {}/*]]>*/</script>"},
        {"<script type='application/ld+json'>{\"a\": \"&lt;&amp;\"}</script>",
         "<script type=\"application/ld+json\">{\"a\": \"\\u003c\\u0026\"}</script>"},
        {"<style>a { b: c }</style><script src='s.js'/>",
         "<style>a { b: c }</style><script src=\"s.js\"></script>"},
        {"<xsl:text disable-output-escaping='yes'>&amp;nbsp;&amp;amp;&lt;b>x&lt;/b></xsl:text>",
         "&#160;&amp;<b>x</b>"},
        {"<xsl:comment>c</xsl:comment><input checked='checked'/>", "<!--c--><input checked=\"checked\" />"},
    };
    Write("d ü.xml", "<d/>");
    for (const auto& row : rows) {
        const std::string html = std::string(
                                     "<html><head><meta http-equiv='content-type' "
                                     "content='text/html; charset=ISO-8859-1'/><title>T</title></head>"
                                     "<body>") +
                                 row.body + "</body></html>";
        const std::string written = std::string(
                                        "<html><head><meta http-equiv=\"Content-Type\" content=\"text/"
                                        "html; charset=UTF-8\" /><title>T</title></head><body>") +
                                    row.page + "</body></html>\n";
        Write("s ü.xsl",
              Sheet("<xsl:output method='html' encoding='ISO-8859-1'/><xsl:template match='/'>" + html +
                    "<exsl:document href='sub/c.html' method='html' doctype-public='P' "
                    "doctype-system='S'>" +
                    html + "</exsl:document></xsl:template>"));
        EXPECT_EQ(RunHere(), 0) << record_.reason;
        EXPECT_EQ(Read("out/p ü.html"), written);
        EXPECT_EQ(Read("out/sub/c.html"), "<!DOCTYPE html PUBLIC \"P\" \"S\">\n" + written);
        EXPECT_FALSE(test::Found(Read("out/p ü.html"), "//body").empty()) << row.body;
    }
}

TEST_F(XsltClient, AStylesheetMayWriteNothingButFurtherPages) {
    Write("d ü.xml", "<d><c>one</c><c>two</c></d>");
    Write("s ü.xsl",
          Sheet("<xsl:template match='/'><xsl:for-each select='d/c'><exsl:document href='{.}.html' "
                "encoding='ISO-8859-1' omit-xml-declaration='yes'><p>&#228;<xsl:value-of select='.'/></p>"
                "</exsl:document></xsl:for-each></xsl:template>"));
    EXPECT_EQ(RunHere(), 0) << record_.reason;
    EXPECT_EQ(Read("out/one.html") + Read("out/two.html"), "<p>\xE4one</p><p>\xE4two</p>");
    EXPECT_FALSE(Exists("out/p ü.html"));
}

TEST_F(XsltClient, ParametersReachTheStylesheet) {
    settings_.strings = {{"s", "it's \"1 + 1\""}};
    settings_.expressions = {{"e", "1 + 1"}};
    Write("d ü.xml", "<d/>");
    Write("s ü.xsl",
          Sheet("<xsl:output method='text'/><xsl:param name='s'/><xsl:param name='e'/>"
                "<xsl:template match='/'><xsl:value-of select=\"concat($s, '|', $e)\"/></xsl:template>"));
    EXPECT_EQ(RunHere(), 0) << record_.reason;
    EXPECT_EQ(Read("out/p ü.html"), "it's \"1 + 1\"|2");
    settings_.expressions = {{"e", "1 +"}};
    EXPECT_EQ(RunHere(), 1);
    EXPECT_NE(record_.reason.find("the parameter e "), std::string::npos) << record_.reason;
}

TEST_F(XsltClient, NewerStylesheetsRunThroughSaxon) {
    if (!SaxonProblem().empty()) {
        GTEST_SKIP() << "the package libsaxonhe-java is not installed";
    }
    settings_.engine = "saxon";
    settings_.strings = {{"s", "it's"}};
    settings_.expressions = {{"e", "1 to 2"}};
    Write("d ü.xml",
          "<!DOCTYPE d PUBLIC '-//Nobody//DTD D//EN' 'no-such.dtd'><d "
          "xmlns:xi='http://www.w3.org/2001/XInclude'><c g='a'>x1</c><c g='b'>y22</c>"
          "<xi:include href='i.xml'/></d>");
    Write("i.xml", "<c g='a'>z333</c>");
    const std::string head =
        "<xsl:stylesheet version='2.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
        "<xsl:output method='html'/><xsl:param name='s'/><xsl:param name='e'/>"
        "<xsl:template match='/'>";
    Write("s ü.xsl",
          head +
              "<html><body><br/><xsl:for-each-group select='d/c' group-by='@g'><p><xsl:value-of "
              "select=\"current-grouping-key(), current-group()/replace(., '[0-9]+', '#')\"/></p>"
              "<xsl:result-document "
              "href='{current-grouping-key()}.html'><html><head><title>T</title></head><body>"
              "<p><xsl:value-of select='$s, $e'/></p><br/><script>a &amp;&amp; b</script></body></html>"
              "</xsl:result-document></xsl:for-each-group></body></html></xsl:template></xsl:stylesheet>");
    EXPECT_EQ(RunHere(), 0) << record_.reason;
    EXPECT_EQ(test::Found(Read("out/p ü.html"), "//p"), (test::Texts{"a x# z#", "b y#"}));
    EXPECT_EQ(test::Found(Read("out/a.html"), "//p"), (test::Texts{"it's 1 2"})) << Read("out/a.html");
    EXPECT_NE(Read("out/a.html").find("<br /><script>/*<![CDATA[*/a && b/*"), std::string::npos);
    Write("s ü.xsl",
          head + "<xsl:message terminate='yes'>no more</xsl:message></xsl:template></xsl:stylesheet>");
    EXPECT_EQ(RunHere(), 1);
    EXPECT_NE(record_.reason.find("no more"), std::string::npos) << record_.reason;
    settings_.expressions.emplace_back("f", "1 +");
    EXPECT_EQ(RunHere(), 1);
    EXPECT_TRUE(record_.reason.starts_with("the parameter f cannot be evaluated: ")) << record_.reason;
}

TEST_F(XsltClient, FailureLeavesTheOutputUnchanged) {
    std::string entities = "<!ENTITY a 'aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa'>";
    for (char name = 'b'; name <= 'f'; ++name) {
        const char reference[] = {'&', static_cast<char>(name - 1), ';', '\0'};
        entities += std::string("<!ENTITY ") + name + " '" + test::Repeated(reference, 30) + "'>";
    }
    const struct {
        const char* what;
        std::string document, stylesheet;
        const char* reason;
    } rows[] = {
        {"a broken document", "<d>\n<e></d>", TextSheet("x"), "line 2: "},
        {"a broken stylesheet", "<d/>", "<xsl:stylesheet", "cannot be used"},
        {"an invalid stylesheet", "<d/>", TextSheet("<xsl:value-of select='('/>"), "cannot be used"},
        {"a stop", "<d/>", TextSheet("half<xsl:message terminate='yes'>no more</xsl:message>"), "no more"},
        {"a recursion without end", "<d/>", TextSheet("<xsl:apply-templates select='/'/>"), "failed on"},
        {"an unknown function", "<d/>", TextSheet("<xsl:value-of select='none()'/>"), "failed on"},
        {"no output", "<d/>", TextSheet(""), "wrote nothing"},
        {"an entity bomb", "<!DOCTYPE d [" + entities + "]><d>&f;&f;&f;</d>", TextSheet("x"),
         "cannot be read"},
    };
    for (const auto& row : rows) {
        Write("d ü.xml", row.document);
        Write("s ü.xsl", row.stylesheet);
        Write("out/p ü.html", "former");
        EXPECT_EQ(RunHere(), 1) << row.what;
        EXPECT_EQ(Read("out/p ü.html"), "former") << row.what;
        EXPECT_EQ(record_.failed, 1) << row.what;
        EXPECT_NE(record_.reason.find(row.reason), std::string::npos) << row.what << ": " << record_.reason;
        EXPECT_EQ(record_.reason.find('\n'), std::string::npos) << row.what;
    }
}

TEST_F(XsltClient, MissingFilesAreNamed) {
    Write("d.xml", "<d/>");
    Write("s.xsl", TextSheet("x"));
    EXPECT_EQ(Run(System("absent.xml"), System("s.xsl"), System("o")), 1);
    EXPECT_NE(record_.reason.find("absent.xml"), std::string::npos);
    EXPECT_EQ(Run(System("d.xml"), System("absent.xsl"), System("o")), 1);
    EXPECT_NE(record_.reason.find("absent.xsl"), std::string::npos);
    EXPECT_EQ(Run(System("d.xml"), "", System("o")), 1);
    EXPECT_NE(record_.reason.find("-xslfilepath"), std::string::npos);
}

TEST_F(XsltClient, FurtherOutputFilesAreRelativeToTheOutput) {
    Write("d ü.xml", "<d/>");
    Write("s ü.xsl", TextSheet("main<exsl:document href='sub/part.txt' method='text'>part</exsl:document>"));
    EXPECT_EQ(RunHere(), 0) << record_.reason;
    EXPECT_EQ(Read("out/sub/part.txt"), "part");
}

TEST_F(XsltClient, FilesAreWrittenInTheOutputFolderOnly) {
    Write("d ü.xml", "<d/>");
    Write("out/inside.txt", "");
    test::MakeLink(Native(), Native("out/link"));
    const struct {
        const char *element, *href;
    } rows[] = {
        {"exsl:document", "../victim.txt"},        {"exsl:document", "link/victim.txt"},
        {"exsl:document", "sub/../../victim.txt"}, {"exsl:document", "../new/victim.txt"},
        {"exsl:document", "%2e%2e/victim.txt"},
    };
    for (const auto& row : rows) {
        if (!test::kHasLinks && std::string(row.href).starts_with("link/")) {
            continue;
        }
        Write("victim.txt", "kept");
        Write("s ü.xsl", TextSheet(std::string("<xsl:message>Writing</xsl:message>main<") + row.element +
                                   " href='" + row.href + "' method='text'>gone</" + row.element + ">"));
        EXPECT_EQ(RunHere(), 1) << row.href;
        EXPECT_EQ(Read("victim.txt"), "kept") << row.href;
        EXPECT_FALSE(Exists("new")) << row.href;
        EXPECT_NE(record_.reason.find("victim.txt, which is outside"), std::string::npos) << record_.reason;
        EXPECT_FALSE(Exists("out/p ü.html")) << row.href;
    }
    access_.outputFolder = {Native("out")};
    EXPECT_EQ(Run(System("d ü.xml"), System("s ü.xsl"), System("out/deep/p.html")), 0) << record_.reason;
    EXPECT_EQ(Read("out/victim.txt"), "gone");
    Write("s ü.xsl", TextSheet("main"));
    EXPECT_EQ(Run(System("d ü.xml"), System("s ü.xsl"), System("apart/p.html")), 0) << record_.reason;
}

TEST_F(XsltClient, TextComesFromThePermittedFoldersOnly) {
    const test::TestFolder elsewhere;
    elsewhere.Write("secret.xml", "<s>secret</s>");
    const std::string uri = FileUri({elsewhere.Native("secret.xml")});
    Write("e.dtd", "<!ENTITY e SYSTEM '" + uri + "'>");
    test::MakeLink(elsewhere.Native("secret.xml"), Native("link.xml"));
    const struct {
        const char* what;
        std::string document, select;
    } rows[] = {
        {"an entity", "<!DOCTYPE d [<!ENTITY e SYSTEM '" + uri + "'>]>\n<d>&e;</d>", "d"},
        {"an entity of the DTD", "<!DOCTYPE d SYSTEM 'e.dtd'>\n<d>&e;</d>", "d"},
        {"an entity through a link", "<!DOCTYPE d [<!ENTITY e SYSTEM 'link.xml'>]>\n<d>&e;</d>", "d"},
        {"document()", "<d/>", "document('" + uri + "')"},
    };
    for (const auto& row : rows) {
        if (!test::kHasLinks && row.document.find("link.xml") != std::string::npos) {
            continue;
        }
        Write("d ü.xml", row.document);
        Write("s ü.xsl", TextSheet("x<xsl:value-of select=\"" + row.select + "\"/>"));
        access_.readable.clear();
        EXPECT_EQ(RunHere(), 1) << row.what;
        EXPECT_NE(record_.reason.find("--allow-read " + elsewhere.Native()), std::string::npos)
            << row.what << ": " << record_.reason;
        EXPECT_FALSE(Exists("out/p ü.html")) << row.what;
        access_.readable = {{elsewhere.Native()}};
        EXPECT_EQ(RunHere(), 0) << row.what << ": " << record_.reason;
        EXPECT_EQ(Read("out/p ü.html"), "xsecret") << row.what;
        Remove("out/p ü.html");
    }
}

TEST_F(XsltClient, DoctypeIsRewrittenAndTheRestKept) {
    const std::string prolog = "<?xml version='1.0'?>\r\n<!DOCTYPE t PUBLIC \"-//X//DTD t//EN\" ";
    const std::string rest =
        " [<!ENTITY own 'o'>]>\r\n<t a='&product;'>&nbsp;&own;<b></b>&#xA0;<![CDATA[&x;]]></t>\n";
    const std::string stylesheet = platform::ToSystem(VENTRIX_DATA_FOLDER "/Ventrix.xsl").value();
    Write("t.xml", prolog + "'t.dtd'" + rest);
    ASSERT_EQ(Run(System("t.xml"), stylesheet, System("t.xml.ql.temp")), 0) << console_;
    EXPECT_EQ(Read("t.xml.ql.temp"), prolog + "\"$qldtdpath$\"" + rest);
    EXPECT_EQ(record_.started, 0);

    Write("n.xml", "<t>&nbsp;</t>");
    ASSERT_EQ(Run(System("n.xml"), stylesheet, System("n.temp")), 0) << console_;
    EXPECT_EQ(Read("n.temp"), "<!DOCTYPE t SYSTEM \"$qldtdpath$\">\n<t>&nbsp;</t>");

    Write("cut.xml", "<t>&nbsp;");
    EXPECT_EQ(Run(System("cut.xml"), stylesheet, System("cut.temp")), 1);
    EXPECT_FALSE(std::filesystem::exists(Native("cut.temp")));
}

}  // namespace
}  // namespace ventrix::desk
