#include "desk/dita_fixture.h"
#include "support/text_rows.h"

namespace ventrix::desk {
namespace {

TEST_F(DitaClient, EachKindOfElementIsRendered) {
    const struct {
        const char* source;  // inside a body, in a topic with the id t
        const char *xpath, *value;
    } rows[] = {
        {"<p>a <b>b</b> c</p>", "//p[@class='p']", "a b c"},
        {"<p>QL_STARTaQL_EQbQL_TARGETQL_SEPQL_ENDText</p>", "//p",
         "QL_STARTaQL_EQbQL_TARGETQL_SEPQL_ENDText"},
        {"<p>x<ul><li>y</li></ul></p>", "count(//div[@class='p']/ul[@class='ul']/li[@class='li'])", "1"},
        {"<p id='i'>x</p>", "//p/@id", "t__i"},
        {"<p outputclass='big'>x</p>", "//p/@class", "p big"},
        {"<p><uicontrol>Größe</uicontrol></p>", "//span[@class='ph uicontrol']", "Größe"},
        {"<p><menucascade><uicontrol>A</uicontrol><uicontrol>B</uicontrol></menucascade></p>",
         "//span[@class='ph menucascade']", "A > B"},
        {"<p><menucascade>QL_ELEM_Sa QL_ELEM_E</menucascade></p>", "//span[@class='ph menucascade']",
         "QL_ELEM_Sa QL_ELEM_E"},
        {"<p><codeph>a</codeph><i>b</i><filepath>c</filepath></p>",
         "concat(//code, //em, //span[@class='ph filepath'])", "abc"},
        {"<section><title>S</title>x</section>", "//div[@class='section']/h2[@class='title sectiontitle']",
         "S"},
        {"<note type='tip'>n</note>", "//div[@class='note tip']", "Tip: n"},
        {"<note>n</note>", "//div[@class='note']", "Note: n"},
        {"<codeblock>a\n  b &lt;</codeblock>", "//pre[@class='pre codeblock']", "a\n  b <"},
        {"<ol><li>a<ol><li>b</li></ol></li></ol>", "//ol/li/ol/@type", "a"},
        {"<dl><dlentry><dt>a</dt><dd>b</dd></dlentry></dl>", "concat(//dl/dt, //dl/dd)", "ab"},
        {"<fig><title>F</title><image href='i.png' alt='A'/></fig>", "//div[@class='fig']/span",
         "Figure 1. F"},
        {"<image href='i.png'><alt>QL_STARTxQL_ENDA</alt></image>", "concat(//img/@src, //img/@alt)",
         "i.pngA"},
        {"<table><title>T</title><tgroup cols='2'><colspec colname='a'/><colspec "
         "colname='b'/><thead><row><entry>h"
         "</entry></row></thead><tbody><row><entry namest='a' nameend='b' "
         "morerows='1'>c</entry></row></tbody>"
         "</tgroup></table>",
         "concat(//caption, '|', //th, '|', //td, //td/@colspan, //td/@rowspan)", "Table 1. T|h|c22"},
        {"<simpletable keycol='1'><strow><stentry>k</stentry><stentry>v</stentry></strow></simpletable>",
         "concat(//th[@class='stentry'], //td)", "kv"},
        {"<properties><property><proptype>t</proptype><propdesc>d</propdesc></property></properties>",
         "count(//tr[@class='strow property']/td)", "2"},
        {"<steps><step><cmd>a</cmd></step><step><cmd>b</cmd><info>i</info></step></steps>",
         "concat(//ol[@class='ol steps']/li[2]/span[@class='ph cmd'], //li[2]/div[@class='itemgroup info'])",
         "bi"},
        {"<p>x<fn>foot</fn></p>", "concat(//sup/a[@class='fnref'], '|', //div[@class='fn']/span)", "1|foot"},
        {"<p>x<indexterm>no</indexterm><draft-comment>no</draft-comment></p>", "//p", "x"},
        {"<xref href='https://example.org' format='html' scope='external'/>", "//a/@href",
         "https://example.org"},
        {"<xref href='other.dita'/>", "concat(//a/@href, '|', //a)", "other.html|Other"},
        {"<xref href='other.dita#o/s'>here</xref>", "concat(//a/@href, '|', //a)", "other.html#o__s|here"},
        {"<xref href='#t/i'/><p id='i'/>", "//a/@href", "#t__i"},
        {"<xref href='manual.pdf' format='pdf'>m</xref>", "//a/@href", "manual.pdf"},
        {"<p conref='other.dita#o/p'/>", "concat(//p[1], //p[1]/a/@href)", "See here.other.html#o__s"},
        {"<machine class='+ topic/ph m-d/machine '>m</machine>", "//span[@class='ph machine']", "m"},
        {"<strange>s</strange>", "//div[@class='']", "s"},
        {"<steps><stepsection>s</stepsection><step><cmd>a</cmd></step><step "
         "id='b'><cmd>b</cmd></step></steps>"
         "<p><xref href='#t/b'/></p>",
         "concat(//li[2]/@value, //li[3]/@value, //p/a)", "122"},
        {"<section><title/>x</section>", "count(//h2)", "0"},
        {"<foreign><svg xmlns='http://www.w3.org/2000/svg'><use href='#x'/></svg></foreign>",
         "string(//*[local-name()='use']/@href)", "#x"},
        {"<syntaxdiagram><groupseq><kwd>k</kwd><synnote>n</synnote></groupseq></syntaxdiagram>",
         "//div[@class='fn']/span", "n"},
    };
    Write("i.png", "png");
    Write("manual.pdf", "pdf");
    Write("other.dita",
          "<topic id='o'><title>Other</title><body><section id='s'><title>Part</title></section>"
          "<p id='p'>See <xref href='#o/s'>here</xref>.</p></body></topic>");
    for (const auto& row : rows) {
        WriteTopic(row.source);
        EXPECT_EQ(Run("t.dita"), 0) << row.source << record_.reason;
        EXPECT_EQ(Query("t.html", row.xpath), row.value) << row.source;
    }
    EXPECT_EQ(Page("i.png") + Page("manual.pdf"), "pngpdf");
}

TEST_F(DitaClient, PagesShowTitleShortDescriptionAndLanguage) {
    Write("t.dita",
          "<topic id='t' xml:lang='de'><title>Über</title><shortdesc>Kurz</shortdesc><body><note>n</note>"
          "</body><topic id='n'><title>Innen</title><body/></topic></topic>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "concat(/html/@lang, //title, //h1, //p[@class='shortdesc'], //h2)"),
              "deÜberÜberKurzInnen");
    EXPECT_EQ(Query("t.html", "//div[@class='note']"), "Anmerkung: n");
}

TEST_F(DitaClient, ContentsComeFromMapsAndSubmaps) {
    Write("m/g.ditamap",
          "<map title='Guide'><topicref href='a.dita'><topicref href='../t/b%20%C3%A4.dita' "
          "navtitle='ignored'/>"
          "</topicref><mapref href='s.ditamap' format='ditamap'/><topichead navtitle='Head'><topicref "
          "href='d.dita'/>"
          "</topichead><topicref href='hidden.dita' toc='no'/><keydef keys='k' href='key.dita'/>"
          "<topicref href='gone.dita'/><topicref href='https://example.org' scope='external' format='html'"
          " navtitle='Web'/></map>");
    Write("m/s.ditamap",
          "<map><topicgroup><topicref href='c.dita'/></topicgroup>"
          "<topicref href='s.ditamap' format='ditamap'/></map>");
    for (const char* name : {"m/a", "t/b ä", "m/c", "m/d", "m/hidden", "m/key"}) {
        Write(std::string(name) + ".dita",
              std::string("<topic id='x'><title>") + name +
                  "</title>"
                  "<shortdesc>About</shortdesc><body><xref keyref='k'/></body></topic>");
    }
    ASSERT_EQ(Run("m/g.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("m/index.html", "//h1"), "Guide");
    EXPECT_EQ(Query("m/index.html", "/html/body/main/ul/li[1]/ul/li/a/@href"), "../t/b%20%C3%A4.html");
    EXPECT_EQ(
        Query("m/index.html",
              "concat(//li[1]/ul/li/a, '|', /html/body/main/ul/li[2]/a, '|', /html/body/main/ul/li[3]/span,"
              " '|', /html/body/main/ul/li[3]/ul/li/a, '|', /html/body/main/ul/li[4]/a/@href)"),
        "t/b ä|m/c|Head|m/d|https://example.org");
    EXPECT_EQ(Query("m/index.html", "count(//li)"), "6");
    EXPECT_EQ(Query("m/a.html", "concat(//ul[@class='ullinks']/li/a/@href, '|', //div[@class='desc'])"),
              "../t/b%20%C3%A4.html|About");
    EXPECT_EQ(Query("t/b ä.html", "//div[@class='parentlink']/a/@href"), "../m/a.html");
    EXPECT_EQ(Query("m/hidden.html", "//div[@class='body']/a/@href"),
              "key.html");  // linked, so it gets a page
    EXPECT_NE(Log().find("s.ditamap: the map contains itself"), std::string::npos) << Log();
    EXPECT_NE(Log().find("gone.dita: No such file"), std::string::npos) << Log();
}

TEST_F(DitaClient, DitavalExcludesElementsAndTopics) {
    Write("f.ditaval",
          "<val><prop att='audience' val='expert' action='exclude'/><prop att='audience' val='both' "
          "action='include'/>"
          "<prop att='product' action='exclude'/><prop att='product' val='P40' action='include'/>"
          "<prop att='platform' val='us' action='flag'/><revprop val='2' action='exclude'/></val>");
    const struct {
        const char* attributes;
        bool stays;
    } rows[] = {
        {"", true},
        {"audience='expert'", false},
        {"audience='novice'", true},
        {"audience='expert novice'", true},
        {"audience=' expert\n expert '", false},
        {"audience=''", true},
        {"product='X9'", false},
        {"product='P40'", true},
        {"product='P40' audience='expert'", false},
        {"platform='us'", true},
        {"rev='2'", false},
        {"props='audience(expert) platform(us)'", false},
        {"otherprops='audience(expert both)'", true},
        {"otherprops='free words'", true},
    };
    for (const auto& row : rows) {
        WriteTopic(std::string("<p>always</p><p ") + row.attributes + ">x</p>");
        ASSERT_EQ(Run("t.dita", "f.ditaval"), 0) << record_.reason;
        EXPECT_EQ(Query("t.html", "count(//p)"), row.stays ? "2" : "1") << row.attributes;
    }
    Write("f.ditaval",
          "<val><prop action='exclude'/><prop att='audience' val='novice' action='include'/></val>");
    Write("m.ditamap",
          "<map><topicref href='t.dita'/><topicref href='e.dita' audience='expert'/>"
          "<topicref href='w.dita'/></map>");
    WriteTopic(
        "<p audience='novice'>n<xref href='w.dita'>w</xref></p>"
        "<p platform='eu'>e</p>");
    Write("e.dita", "<topic id='e'><title>E</title></topic>");
    Write("w.dita", "<topic id='w' audience='expert'><title>W</title></topic>");
    std::filesystem::remove_all(Native("out"));
    ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "concat(//p, count(//p), count(//a[@href]))"), "nw10");
    EXPECT_EQ(Query("index.html", "count(//li)"), "1");
    EXPECT_FALSE(std::filesystem::exists(Native("out/xhtml/e.html")));
    EXPECT_FALSE(std::filesystem::exists(Native("out/xhtml/w.html")));
}

TEST_F(DitaClient, UndeclaredEntitiesAreReported) {
    WriteTopic("<p>a&none;b</p>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "//p"), "ab");
    EXPECT_NE(Log().find("t.dita: line 1: Entity 'none' not defined"), std::string::npos) << Log();
}

TEST_F(DitaClient, ContentThatReusesItselfIsCopiedOnce) {
    WriteTopic(
        "<p id='a'>a<ph conref='#t/b'/></p>"
        "<p><ph id='b'>b<ph conref='#t/b'/><ph conref='u.dita#u/c'/></ph></p>");
    Write("u.dita",
          "<topic id='u'><title>U</title><body><p><ph id='c'>c<ph "
          "conref='t.dita#t/b'/></ph></p></body></topic>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "//p[1]"), "abc");
    EXPECT_NE(Log().find("leads back to itself;"), std::string::npos);
}

TEST_F(DitaClient, ContentThatMultipliesIsLimited) {
    std::string body = "<p><ph id='p0'>x</ph></p>";
    for (int level = 1; level < 7; ++level) {
        const std::string phrase = "<ph conref='#t/p" + std::to_string(level - 1) + "'/>";
        body += "<p><ph id='p" + std::to_string(level) + "'>" + test::Repeated(phrase, 10) + "</ph></p>";
    }
    WriteTopic(body);
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "string-length(//p[3])"), "100");
    EXPECT_NE(Log().find("is one of more than 20000;"), std::string::npos);
}

TEST_F(DitaClient, MapSetsPropertiesOfItsTopics) {
    const struct {
        const char *map, *xpath, *value;
    } rows[] = {
        {"<bookmap><booktitle><mainbooktitle>Book</mainbooktitle></booktitle><frontmatter><preface "
         "href='a.dita'/>"
         "</frontmatter><chapter href='b.dita'/><appendix href='c.dita'/></bookmap>",
         "concat(//h1, count(//li), //li[3]/a)", "Book3C"},
        {"<map title='M'><topicref href='a.dita' collection-type='sequence'/><reltable><relrow><relcell>"
         "<topicref href='b.dita'/></relcell></relrow></reltable></map>",
         "concat(//h1, count(//li))", "M1"},
        {"<map><topicref href='a.dita'><topicmeta><navtitle>Nav</navtitle></topicmeta></topicref></map>",
         "//a", "A"},
        {"<map><topichead><topicmeta><navtitle>Nav</navtitle></topicmeta><topicref "
         "href='a.dita#a'/></topichead></map>",
         "concat(//span[@class='heading'], //a/@href)", "Nava.html#a"},
        {"<map><topicref href='m.pdf' format='pdf' navtitle='Manual'/><topicref href='a.dita'/></map>",
         "concat(//li[1]/a, //li[1]/a/@href)", "Manualm.pdf"},
        {"<map><topicgroup toc='no'><topicref href='a.dita'/><topicref href='b.dita' "
         "toc='yes'/></topicgroup></map>",
         "concat(count(//li), //a)", "1B"},
        {"<!DOCTYPE map [<!ENTITY name 'Named'>]><map><title>&name;</title><topicref href='a.dita'/></map>",
         "//h1", "Named"},
        {"<course class='- map/map c/course '><lesson class='- map/topicref c/lesson ' "
         "href='a.dita'/></course>",
         "//a", "A"},
    };
    Write("m.pdf", "pdf");
    for (const char* name : {"a", "b", "c"}) {
        std::string title = name;
        title[0] = static_cast<char>(title[0] - 32);
        Write(std::string(name) + ".dita",
              std::string("<topic id='") + name + "'><title>" + title + "</title></topic>");
    }
    for (const auto& row : rows) {
        std::filesystem::remove_all(Native("out"));
        Write("m.ditamap", row.map);
        EXPECT_EQ(Run("m.ditamap"), 0) << row.map << record_.reason;
        EXPECT_EQ(Query("index.html", row.xpath), row.value) << row.map;
    }
    EXPECT_FALSE(std::filesystem::exists(Native("out/xhtml/b.html")));
}

TEST_F(DitaClient, KeysGiveTextAndTarget) {
    Write(
        "m.ditamap",
        "<map><topicref href='t.dita'/><keydef keys='name "
        "other'><topicmeta><keywords><keyword>P40</keyword></keywords>"
        "</topicmeta></keydef><keydef keys='name'><topicmeta><linktext>later</linktext></topicmeta></keydef>"
        "<keydef keys='site' href='https://example.org' scope='external' "
        "format='html'><topicmeta><linktext>Site"
        "</linktext></topicmeta></keydef><keydef keys='pic' href='i.png' format='png'/></map>");
    Write("i.png", "png");
    WriteTopic(
        "<p><ph keyref='name'/>|<keyword keyref='other'>own</keyword>|"
        "<xref keyref='site'/>|<ph keyref='none'>kept</ph></p><image keyref='pic'/>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "concat(//p, //p/a/@href, //img/@src)"),
              "P40|own|Site|kepthttps://example.orgi.png");
    EXPECT_NE(Log().find("keyref=\"none\""), std::string::npos) << Log();
}

TEST_F(DitaClient, FailuresGiveTheirReason) {
    Write("broken.ditamap", "<map><topicref></map>");
    Write("empty.ditamap", "<map/>");
    Write("gone.ditamap", "<map><topicref href='gone.dita'/></map>");
    Write("t.dita", "<topic id='t' audience='x'><title>T</title></topic>");
    Write("bad.ditaval", "<val>");
    Write("none.ditaval", "<val><prop action='exclude'/></val>");
    const struct {
        const char *document, *ditaval, *reason;
    } rows[] = {
        {"broken.ditamap", "", "broken.ditamap: line 1: "},
        {"empty.ditamap", "", "none of its topics"},
        {"gone.ditamap", "", "none of its topics"},
        {"absent.dita", "", "absent.dita: No such file"},
        {"t.dita", "bad.ditaval", "bad.ditaval: line 1: "},
        {"t.dita", "absent.ditaval", "absent.ditaval: No such"},
        {"t.dita", "none.ditaval", "excludes the whole"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Run(row.document, row.ditaval), 1) << row.document;
        EXPECT_NE(record_.reason.find(row.reason), std::string::npos) << record_.reason;
        EXPECT_EQ(record_.logFile.utf8, Native("out/buildlog-xhtml.txt"));
        EXPECT_NE(Log().find("failed: " + record_.reason), std::string::npos) << Log();
    }
}

TEST_F(DitaClient, TextFromOutsideFailsTheTransformation) {
    const test::TestFolder elsewhere;
    const std::string secret = elsewhere.Write("secret.xml", "<p>secret</p>");
    Write("e.dtd", "<!ENTITY e SYSTEM '" + secret + "'>");
    Write("t.dita",
          "<!DOCTYPE topic SYSTEM 'e.dtd'>\n<topic id='t'><title>T</title><body>\n&e;</body></topic>");
    EXPECT_EQ(Run("t.dita"), 1);
    EXPECT_NE(record_.reason.find("line 3: " + secret), std::string::npos) << record_.reason;
    EXPECT_EQ(Page("t.html").find("secret"), std::string::npos);
    access_.readable = {{elsewhere.Native()}};
    EXPECT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_NE(Page("t.html").find("secret"), std::string::npos);
}

TEST_F(DitaClient, LongNamesAndDeepTopicsArePublished) {
    WriteTopic("<p><xref href='" + std::string(255, 'n') + ".dita'>long</xref></p>" +
               test::Repeated("<ul><li>", 200) + "deep" + test::Repeated("</li></ul>", 200));
    EXPECT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_NE(Page("t.html").find("deep"), std::string::npos);
}

TEST_F(DitaClient, IncompleteCommandsAreRefused) {
    const struct {
        const char *command, *reason;
    } rows[] = {
        {"Save -docId 8 -transtype xhtml -outFilePath \"Z:\\x\\\"", "open document"},
        {"Save -docId 7 -transtype xhtml", "-outFilePath"},
        {"Save -docId 7 -transtype pdf -outFilePath \"Z:\\x\\\"", "expected xhtml"},
    };
    for (const auto& row : rows) {
        record_ = {};
        HostServices host;
        host.documentPath = [](std::uint32_t id) { return SystemPath{id == 7 ? "Z:\\d.dita" : ""}; };
        EXPECT_EQ(MakeDitaOtClient(settings_, access_, record_)(row.command, host).status, 1);
        EXPECT_NE(record_.reason.find(row.reason), std::string::npos) << record_.reason;
    }
}

}  // namespace
}  // namespace ventrix::desk
