// What a run with a stylesheet reports, and what it does around the stylesheet.
#include <algorithm>

#include "desk/command_line.h"
#include "desk/folder_fixture.h"
#include "support/scripts.h"

namespace ventrix::desk {
namespace {

class StylesheetRun : public FolderFixture {
  protected:
    test::Finished Publish(const std::vector<std::string>& further = {},
                           const std::string& stylesheet = "s.xsl") {
        std::vector<std::string> arguments{"publish",      "d.xml", "-o",         "out", "--xslt", stylesheet,
                                           "--attributes", "a",     "--elements", "b",   "--force"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return test::RunVentrix(*this, arguments);
    }
    static std::string Sheet(const std::string& body, const char* version = "1.0") {
        return std::string("<xsl:stylesheet version='") + version +
               "' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' xmlns:exsl='http://exslt.org/common' "
               "extension-element-prefixes='exsl'><xsl:template match='/'>" +
               body + "</xsl:template></xsl:stylesheet>";
    }
};

TEST_F(StylesheetRun, AnExternalEntityMayUseTheEntitiesOfTheDtd) {
    Write("catalog.xml",
          "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
          "<public publicId='-//ACME//DTD D//EN' uri='dtds/d.dtd'/>"
          "<public publicId='-//OASIS//DTD DITA Topic//EN' uri='dtds/d.dtd'/></catalog>");
    Write("dtds/d.dtd", "<!ENTITY product 'P40'>");
    Write("d.xml",
          "<!DOCTYPE d PUBLIC '-//ACME//DTD D//EN' 'http://none.example/d.dtd' "
          "[<!ENTITY two SYSTEM 'two.xml'>]>\n<d><p a='1'>one <b>b</b> &product;</p>&two;</d>");
    Write("two.xml", "<?xml version='1.0' encoding='UTF-8'?>\n<topic a='2'>two &product;</topic>\n");
    Write("s.xsl", Sheet("<html><xsl:for-each select='d/*'><p><xsl:value-of select='.'/></p>"
                         "</xsl:for-each></html>"));
    const test::Finished finished = Publish({"--catalog", "catalog.xml"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    EXPECT_NE(finished.out.find("preserved: 3 of 3"), std::string::npos) << finished.out;
    EXPECT_NE(Read("out/d.html").find("aQL_SEP2QL_SEP\">two P40</p>"), std::string::npos)
        << Read("out/d.html");
}

TEST_F(StylesheetRun, AnExternalEntityMayUseTheEntitiesOfItsDocument) {
    const std::string two = "<!ENTITY two SYSTEM 'two.xml'>", ents = "<!ENTITY % e SYSTEM 'ents.xml'> %e;";
    Write("two.xml", "<topic a='2'>two &product;&three;</topic>");
    Write("three.xml", "<b>3</b>");
    Write("ents.xml",
          "<!ENTITY name 'P&#38;amp;&#37;\"'><!ENTITY % dash '-'><!ENTITY product '&name;%dash;40'>"
          "<!ENTITY three SYSTEM 'three.xml'>");
    Write("d.dtd", two + ents);
    Write("s.xsl", Sheet("<html><xsl:for-each select='d/*'><p><xsl:value-of select='.'/></p>"
                         "</xsl:for-each></html>"));
    for (const std::string& doctype :
         {"d [" + two + ents + "]", "d SYSTEM 'ents.xml' [" + two + "]", std::string("d SYSTEM 'd.dtd'"),
          "d PUBLIC '-//NO//ONE//EN' 'no.dtd' [" + two + ents + "]"}) {
        Write("d.xml", "<!DOCTYPE " + doctype + ">\n<d><p a='1'>one &product;</p>&two;</d>");
        const test::Finished finished = Publish();
        EXPECT_EQ(finished.error.find("could not be read"), std::string::npos) << doctype << finished.error;
        EXPECT_NE(Read("out/d.html").find("aQL_SEP2QL_SEP\">two P&amp;%\"-403</p>"), std::string::npos)
            << doctype << Read("out/d.html") << finished.error;
    }
    EXPECT_EQ(Read("two.xml"), "<topic a='2'>two &product;&three;</topic>");
}

TEST_F(StylesheetRun, ADocumentThatMentionsDocBookIsNone) {
    Write("s.xsl", Sheet("<!-- not for DocBook --><html><p><xsl:value-of select='d/p'/></p></html>"));
    Write("d.xml", "<?xml version='1.0'?><!-- A --><d><p a='1'>In DocBook, <quote>docbook</quote></p></d>");
    const std::string sheet = Read("s.xsl");
    Write("docbook tests/s.xsl", sheet);
    Write("package/VERSION.xsl", "<x/>");
    Write("package/html/s.xsl", sheet);
    Write("docbook.xsl", sheet);
    const struct {
        const char* stylesheet;
        bool isDocBooks;
    } rows[] = {{"s.xsl", false},
                {"docbook tests/s.xsl", false},
                {"package/html/s.xsl", true},
                {"docbook.xsl", true}};
    for (const auto& row : rows) {
        const test::Finished finished = Publish({"--elements", "quote"}, row.stylesheet);
        EXPECT_EQ(finished.status, row.isDocBooks ? 1 : 0) << row.stylesheet << finished.error;
        EXPECT_EQ(Read("out/d.html").find("<quote>docbook</quote>") == std::string::npos, row.isDocBooks)
            << row.stylesheet << Read("out/d.html");
    }
}

TEST_F(StylesheetRun, AnElementInTheTitleOfAPageIsText) {
    Write("d.xml", "<d><t a='1'>T <b>bold &lt; x</b></t><p>P <b>kept</b></p></d>");
    const std::string title = "<html><head><title><xsl:value-of select='d/t'/></title></head><body>";
    const std::string body = "<p><xsl:value-of select='d/p'/></p></body></html>";
    const struct {
        std::string heading;
        const char* preserved;
    } rows[] = {{"", "preserved: 2 of 3"}, {"<h1><xsl:value-of select='d/t'/></h1>", "preserved: 3 of 3"}};
    for (const auto& row : rows) {
        Write("s.xsl", Sheet(title + row.heading + body));
        const test::Finished finished = Publish();
        EXPECT_EQ(finished.status, 0) << finished.error;
        const std::string page = Read("out/d.html");
        EXPECT_NE(page.find("\">T bold &lt; x</title>"), std::string::npos) << page;
        EXPECT_NE(page.find("P <b>kept</b>"), std::string::npos) << page;
        EXPECT_NE(finished.out.find(row.preserved), std::string::npos) << finished.out;
    }
}

TEST_F(StylesheetRun, AnElementInTheTitleIsTextWhateverWroteThePageAndKeptMarkers) {
    Write("d.xml", "<d><p>T <b>bold</b></p></d>");
    WriteScript(
        *this, "pages",
        "overwrite <html><head><title>T\\x20QL_ELEM_S&amp;lt;b&amp;gt;bold&amp;lt;/b&amp;gt;QL_ELEM_E</title>"
        "</head><body/></html> $here/out/p.html\n");
    const test::Finished finished =
        RunVentrix(*this, {"publish", "d.xml", "-o", "out", "--elements", "b", "--keep-markers",
                           "--post-script", test::ScriptFile("pages")});
    EXPECT_EQ(finished.status, 0) << finished.error;
    EXPECT_NE(Read("out/p.html").find("<title>T bold</title>"), std::string::npos) << Read("out/p.html");
}

TEST_F(StylesheetRun, IncludedFilesAreInTheResultWhateverTheirNames) {
    const std::string open = "<xi:include xmlns:xi='http://www.w3.org/2001/XInclude' href=";
    Write("d.xml", "<d>" + open + "'a b.xml'/>" + open + "\"ü/中.xml\"/>" + open + "'latin.xml'/>" + open +
                       "'gone.xml'><xi:fallback><p>fallback</p></xi:fallback></xi:include></d>");
    Write("a b.xml", "<p a='1'>spaces" + open + "'in ner.xml'/></p>");
    Write("in ner.xml", "<b>inner</b>");
    Write("latin.xml", "<?xml version='1.0' encoding='ISO-8859-1'?><p>other" + open + "'\xE4.xml'/></p>");
    Write("ä.xml", "<b>encoding</b>");
    Write("ü/中.xml", "<p>letters</p>");
    Write("s.xsl", Sheet("<html><xsl:copy-of select='d/p'/></html>"));
    const test::Finished finished = Publish();
    EXPECT_EQ(finished.status, 0) << finished.error;
    EXPECT_EQ(finished.error, "");
    const std::string page = Read("out/d.html");
    for (const char* text : {">spaces<b>inner</b><", ">letters<", ">other<b>encoding</b><", ">fallback<"}) {
        EXPECT_NE(page.find(text), std::string::npos) << text << page;
    }
}

TEST_F(StylesheetRun, PathsOfInclusionsMayBeEscapedAndInUtf16) {
    const std::string open = "<xi:include xmlns:xi='http://www.w3.org/2001/XInclude' href=";
    Write("d.xml", "<d>" + open + "\"a'b.xml\"/>" + open + "'&#xfc;&#38;.xml'/>" + open + "'wide.xml'/></d>");
    Write("a'b.xml", "<p a='1'>apostrophe</p>");
    Write("ü&.xml", "<p>reference</p>");
    Write("in ner.xml", "<i>inner</i>");
    std::string wide = "\xFF\xFE";
    for (const char c :
         "<?xml version='1.0' encoding='UTF-16'?>\n<p>wide <b/>x" + open + "'in ner.xml'/></p>") {
        wide.append({c, '\0'});
    }
    Write("wide.xml", wide);
    Write("s.xsl", Sheet("<html><xsl:copy-of select='d/p'/></html>"));
    const test::Finished finished = Publish();
    EXPECT_NE(finished.error.find("wide.xml:2: <b> is not preserved"), std::string::npos) << finished.error;
    EXPECT_EQ(finished.error.find("xi:include"), std::string::npos) << finished.error;
    const std::string page = Read("out/d.html");
    for (const char* text : {">apostrophe<", ">reference<", "<i>inner</i>"}) {
        EXPECT_NE(page.find(text), std::string::npos) << text << page;
    }
}

TEST_F(StylesheetRun, InclusionsThatFailAreReported) {
    const std::string open = "\n<xi:include xmlns:xi='http://www.w3.org/2001/XInclude' href=";
    Write("part.xml", "<p>\n" + open + "'ok.xml' xpointer='none'/></p>");
    Write("ok.xml", "<p>ok</p>");
    Write("s.xsl", Sheet("<html><xsl:copy-of select='d'/></html>"));
    const struct {
        std::string href;
        const char* finding;
    } rows[] = {
        {"'d.xml'", "d.xml:2:56: xi:include href=\"d.xml\" is not in the result: it includes the file"},
        {"'http://127.0.0.1:9/x.xml'", "d.xml:2:56: xi:include href=\"http://127.0.0.1:9/x.xml\" is not"},
        {"'ok.xml' xpointer='none'", "d.xml:2:56: xi:include href=\"ok.xml\" xpointer=\"none\" is not"},
        {"'gone.xml'", "gone.xml, which is missing or unreadable"},
        {"'part.xml'", "part.xml:3:56: xi:include href=\"ok.xml\" xpointer=\"none\" is not"},
    };
    for (const auto& row : rows) {
        Write("d.xml", "<d a='1'>text <b>b</b>" + open + row.href + "/></d>");
        const test::Finished finished = Publish();
        EXPECT_EQ(finished.status, 1) << row.href;
        EXPECT_NE(finished.error.find(row.finding), std::string::npos) << row.finding << finished.error;
        EXPECT_EQ(std::ranges::count(finished.error, '['), 1) << "one finding each: " << finished.error;
        EXPECT_EQ(Read("out/d.html").find(":include"), std::string::npos) << Read("out/d.html");
    }
}

TEST_F(StylesheetRun, DocumentsThatAStylesheetDoesNotGetAreReported) {
    Write("d.xml", "<d a='1'><p>one</p><p>two <b>b</b></p></d>");
    Write("beside.xml", "<d/>");
    Write("broken.xml", "<d>");
    Write("part.xsl",
          "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>\n"
          "<xsl:template match='p'>\n<p><xsl:value-of select=\"document('none.xml')\"/></p>"
          "</xsl:template></xsl:stylesheet>");
    const auto get = [](const std::string& arguments) {
        return "<xsl:value-of select=\"document(" + arguments + ")\"/>";
    };
    const struct {
        std::string content, place, finding;
    } rows[] = {
        {get("'beside.xml'"), "", ""},
        {get("'none.xml'"),
         "s.xsl:1:", "get " + Native("none.xml") + ": the file is missing or unreadable [dead-reference]"},
        {get("'broken.xml'"),
         "s.xsl:1:", "get " + Native("broken.xml") + ": the file is not well-formed XML (line 1: "},
        {get("'beside.xml', /"), "s.xsl:1:",
         "get beside.xml: the file is missing or unreadable; beside the document, a stylesheet can read"},
        {"<xsl:apply-templates select='d/p'/>", "part.xsl:3:", "get " + Native("none.xml")},
    };
    for (const auto& row : rows) {
        std::string sheet = Sheet("<html><p>t</p>" + row.content + "</html>");
        Write("s.xsl", sheet.insert(sheet.find('>') + 1, "<xsl:include href='part.xsl'/>"));
        const test::Finished finished = Publish();
        EXPECT_EQ(finished.status, row.finding.empty() ? 0 : 1) << row.content;
        EXPECT_NE(finished.error.find(row.place), std::string::npos) << row.place << finished.error;
        EXPECT_NE(finished.error.find(row.finding), std::string::npos) << row.finding << finished.error;
        EXPECT_EQ(std::ranges::count(finished.error, '['), row.finding.empty() ? 0 : 1) << finished.error;
    }
}

TEST_F(StylesheetRun, MarkerTextThatReadersSeeIsReported) {
    Write("d.xml", "<d><p a='MYSQL_PORT'>one SQL_HOST two</p></d>");
    const struct {
        std::string select;
        const char* shown;  ///< Null if nothing is.
    } rows[] = {
        {"d/p", nullptr},
        {"substring-after(d/p, 'QL_END')", nullptr},
        {"substring-after(d/p, 'QL_TARGET')", nullptr},
        {"substring(d/p, 1, 8)", nullptr},
        {"'SQL_X'", nullptr},
        {"substring(d/p, 1, 5)", "QL_ST\""},
        {"substring(d/p, 1, 24)", "aMYSQL_PORT\""},
        {"substring(d/p, 15)", "MYSQL_PORT\""},
        {"substring(d/p, 9, 16)", "aMYSQL_PORT\""},
        {"concat(substring(d/p, 41), ' …')", "L_ENDone SQL_HOST"},
        {"concat(substring(d/p, 42), '.')", "_ENDone SQL_HOST"},
        {"translate(d/p, 'QLSTARENDEQ', 'qlstarendeq')", "ql_start"},
    };
    for (const auto& row : rows) {
        Write("s.xsl", Sheet("<html><head><title>T</title></head><body><p><xsl:value-of select=\"" +
                             row.select + "\"/></p></body></html>"));
        const test::Finished finished = Publish();
        const std::string page = Read("out/d.html");
        if (row.shown == nullptr) {
            EXPECT_EQ(finished.status, 0) << row.select << finished.error << page;
            continue;
        }
        EXPECT_EQ(finished.status, 1) << row.select;
        EXPECT_NE(finished.error.find("warning: " + Native("out/d.html") + ":1:"), std::string::npos)
            << finished.error;
        EXPECT_NE(finished.error.find(std::string("shows marker text: \"") + row.shown), std::string::npos)
            << row.select << '\n'
            << finished.error << page;
        EXPECT_EQ(std::ranges::count(finished.error, '['), 1) << finished.error;
    }
}

TEST_F(StylesheetRun, AFailureNamesTheDocumentAndNotItsCopy) {
    Write("d.xml", "<d><p a='1'>one</p></d>");
    Write("s.xsl", Sheet("<xsl:message terminate='yes'>no</xsl:message>"));
    const test::Finished finished = Publish();
    EXPECT_EQ(finished.status, 6);
    EXPECT_NE(finished.error.find("failed on " + Native("d.xml") + ": no"), std::string::npos)
        << finished.error;
}

TEST_F(StylesheetRun, AQueryThatSelectsNothingGetsANote) {
    Write("d.xml", "<d><p a='1'>one</p></d>");
    Write("s.xsl", Sheet("<html><p><xsl:value-of select='d/p'/></p></html>"));
    const std::string note = "--preserve-xpath: '//q' selects no element in any file of the document";
    const test::Finished finished = Publish({"--preserve-xpath", "//q", "--preserve-xpath", "//p"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_NE(finished.error.find(note), std::string::npos) << finished.error;
    EXPECT_EQ(finished.error.find("'//p'"), std::string::npos) << finished.error;
}

TEST_F(StylesheetRun, WhatIsNotDecodedIsReported) {
    const std::string text = "<p><xsl:value-of select='d/p'/></p>";
    const struct {
        std::string stylesheet;
        std::vector<std::string> options;
        int status;
        const char* report;
    } rows[] = {
        {Sheet("<exsl:document href='1.xhtml'><html>" + text + "</html></exsl:document>"),
         {},
         6,
         "but 1 in .xhtml; let the stylesheet write .html"},
        {Sheet(text + text),
         {},
         1,
         "so that its text was not decoded and what it preserved is lost; let the"},
        {Sheet(text + text), {"--keep-markers"}, 1, "so that its text was not decoded and shows marker text"},
        {Sheet("<html>" + text + "</html>", "3.0"),
         {"--xslt-engine", "libxslt"},
         1,
         "s.xsl: asks for XSLT 3.0, but libxslt processes 1.0"},
        {Sheet("<html>" + text + "</html>", "1.1"), {"--xslt-engine", "libxslt"}, 0, ""},
    };
    Write("d.xml", "<d><p a='1'>one</p></d>");
    for (const auto& row : rows) {
        Write("s.xsl", row.stylesheet);
        const test::Finished finished = Publish(row.options);
        EXPECT_EQ(finished.status, row.status) << finished.error;
        EXPECT_NE(finished.error.find(row.report), std::string::npos) << row.report << '\n' << finished.error;
        EXPECT_EQ(std::ranges::count(finished.error, '['), row.status == 1 ? 1 : 0)
            << "one finding each: " << finished.error;
    }
}

}  // namespace
}  // namespace ventrix::desk
