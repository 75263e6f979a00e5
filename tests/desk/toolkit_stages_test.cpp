// The stages of the built-in toolkit: filter, maps and keys, references, links, and what it leaves out.
#include <algorithm>

#include "desk/dita_fixture.h"
#include "desk/toolkit/subject_scheme.h"

namespace ventrix::desk {
namespace {

class BuiltinToolkit : public DitaClient {
  protected:
    /// The findings as "FILE:LINE: TEXT", in their order.
    std::string Findings() const {
        std::string text;
        for (const DitaFinding& finding : record_.findings) {
            text += FromFilesystem(ToFilesystem(finding.file).filename()).utf8 + ":" +
                    std::to_string(finding.line) + ": " + finding.text + "\n";
        }
        return text;
    }
    /// The links that a page has from its map, each as "ROLE:TEXT ".
    std::string LinksOf(const std::string& page) const {
        std::string links;
        for (const char* role : {"child", "parent", "previous", "next", "related"}) {
            const std::string name(role);
            const std::string place = name == "child"     ? "/ul[@class='ullinks']//a"
                                      : name == "related" ? "/div[@class='linklist']//a"
                                                          : "/div[@class='" + name + "link']/a";
            const int count = std::stoi(Query(page, "count(//div[@class='related-links']" + place + ")"));
            for (int i = 1; i <= count; ++i) {
                links += name + ":" +
                         Query(page, "string((//div[@class='related-links']" + place + ")[" +
                                         std::to_string(i) + "])") +
                         " ";
            }
        }
        return links;
    }
    void WriteTopicAt(const std::string& name, const std::string& title, const std::string& body) const {
        Write(name, "<topic id='t'><title>" + title + "</title><body>" + body + "</body></topic>");
    }
};

constexpr char kScheme[] =
    "<subjectScheme><subjectdef keys='users'><subjectdef keys='expert'><subjectdef keys='barista'/>"
    "<topicgroup><subjectdef keys='roaster'/></topicgroup></subjectdef><subjectdef "
    "keys='novice'/></subjectdef>"
    "<enumerationdef><attributedef name='audience'/><subjectdef "
    "keyref='users'/></enumerationdef></subjectScheme>";

TEST_F(BuiltinToolkit, ExcludingAValueExcludesItsKinds) {
    Write("s.ditamap", kScheme);
    Write("m.ditamap",
          "<map><topicref href='s.ditamap' type='subjectScheme' format='ditamap' "
          "processing-role='resource-only'/>"
          "<topicref href='t.dita'/></map>");
    EXPECT_EQ(ReadSubjectScheme({Native("m.ditamap")}), (SubjectScheme{{"audience",
                                                                        {{"expert", {"users"}},
                                                                         {"novice", {"users"}},
                                                                         {"barista", {"expert"}},
                                                                         {"roaster", {"expert"}}}}}));
    WriteTopic(
        "<p>all</p><p audience='barista'>b</p><p audience='roaster'>r</p><p audience='novice'>n</p>"
        "<p audience='barista novice'>bn</p>");
    const struct {
        const char *rules, *text;
    } rows[] = {
        {"<prop att='audience' val='expert' action='exclude'/>", "allnbn"},
        {"<prop att='audience' val='expert' action='exclude'/><prop att='audience' val='barista' "
         "action='include'/>",
         "allbnbn"},
        {"<prop att='audience' val='users' action='exclude'/>", "all"},
        {"<prop att='product' val='expert' action='exclude'/>", "allbrnbn"},
    };
    for (const auto& row : rows) {
        Write("f.ditaval", std::string("<val>") + row.rules + "</val>");
        ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0) << record_.reason;
        std::string text;
        for (const std::string& p : test::Found(Page("t.html"), "//*[local-name()='p']")) {
            text += p;
        }
        EXPECT_EQ(text, row.text) << row.rules;
    }
}

TEST_F(BuiltinToolkit, ASubjectIsExcludedByEachOfItsNames) {
    Write("s.ditamap",
          "<subjectScheme><subjectdef keys='ex expert'><subjectdef keys='barista'/></subjectdef>"
          "<subjectdef keys='users'><subjectdef keyref='ex'/></subjectdef><enumerationdef>"
          "<attributedef name='audience'/><subjectdef keyref='users'/></enumerationdef></subjectScheme>");
    Write("m.ditamap",
          "<map><mapref href='s.ditamap' type='subjectScheme' processing-role='resource-only'/>"
          "<topicref href='t.dita'/></map>");
    WriteTopic("<p>all</p><p audience='barista'>b</p>");
    for (const char* name : {"ex", "expert"}) {
        Write("f.ditaval",
              std::string("<val><prop att='audience' val='") + name + "' action='exclude'/></val>");
        ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0) << record_.reason;
        EXPECT_EQ(Query("t.html", "count(//p)"), "1") << name;
    }
}

TEST_F(BuiltinToolkit, TheDefaultRuleCountsForSpecialisedAttributesAndNotForRevisions) {
    Write("f.ditaval", "<val><prop action='exclude'/></val>");
    Write("t.dita",
          "<topic id='t' domains='(topic hi-d) a(props delivery)'><title>T</title><body><p delivery='x'>d</p>"
          "<p rev='1'>r</p><p other='y'>o</p><p product='z'>p</p></body></topic>");
    ASSERT_EQ(Run("t.dita", "f.ditaval"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "concat(count(//p), //p[1], //p[2])"), "2ro");
}

TEST_F(BuiltinToolkit, SpecialisedTypesAreKnownFromTheirDtd) {
    Write("m.dtd",
          "<!ELEMENT guide (chapter*)><!ATTLIST guide class CDATA '- map/map guide/guide '><!ELEMENT chapter "
          "EMPTY><!ATTLIST chapter href CDATA #IMPLIED class CDATA '- map/topicref guide/chapter '>");
    Write("r.dtd",
          "<!ELEMENT recipe (name, text)><!ATTLIST recipe id ID #REQUIRED class CDATA '- topic/topic "
          "r/recipe '><!ELEMENT name (#PCDATA)><!ATTLIST name class CDATA '- topic/title r/name '>"
          "<!ELEMENT text (step*)><!ATTLIST text class CDATA '- topic/body r/text '><!ELEMENT step (#PCDATA)>"
          "<!ATTLIST step class CDATA '- topic/p r/step '>");
    Write("m.ditamap", "<!DOCTYPE guide SYSTEM 'm.dtd'><guide><chapter href='r.dita'/></guide>");
    Write("r.dita",
          "<!DOCTYPE recipe SYSTEM 'r.dtd'><recipe "
          "id='r'><name>Tea</name><text><step>Boil</step></text></recipe>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("r.html", "concat(//h1, '|', //p[@class='p step'])"), "Tea|Boil");
    EXPECT_EQ(Findings(), "");
}

TEST_F(BuiltinToolkit, TheFileOfATopicIsNeverCopiedIntoTheResult) {
    WriteTopicAt("secret.dita", "Secret", "<p audience='staff'>hidden</p>");
    WriteTopic(
        "<lq href='secret.dita'>q</lq><p><data href='secret.dita'/>x</p><object data='secret.xml'/>"
        "<figgroup href='secret.dita'/>");
    Write("secret.xml", "<a/>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_FALSE(Exists("out/xhtml/secret.dita"));
    EXPECT_TRUE(Exists("out/xhtml/secret.xml"));
    EXPECT_NE(Findings().find("the link \"secret.dita\" of <figgroup> to a topic is not handled"),
              std::string::npos)
        << Findings();
}

TEST_F(BuiltinToolkit, GroupsInValuesAreFiltered) {
    Write("f.ditaval",
          "<val><prop att='db' val='a' action='exclude'/><prop att='db' val='b' action='include'/>"
          "<prop att='audience' val='c' action='exclude'/></val>");
    const struct {
        const char* value;
        bool stays;
    } rows[] = {
        {"db(a)", false}, {"db(a b)", true}, {"other(c)", false}, {"db(a) x", false}, {"db(b) x", true}};
    for (const auto& row : rows) {
        WriteTopic(std::string("<p>always</p><p audience='") + row.value + "'>x</p>");
        ASSERT_EQ(Run("t.dita", "f.ditaval"), 0) << record_.reason;
        EXPECT_EQ(Query("t.html", "count(//p)"), row.stays ? "2" : "1") << row.value;
    }
}

TEST_F(BuiltinToolkit, NothingIsPublishedWithoutAUsableFilter) {
    const struct {
        const char *filter, *reason;
    } rows[] = {
        {"<map/>", "its root element is <map>, not <val>"},
        {"<val>\n<prop att='a' val='b' action='exlude'/></val>", "line 2: unknown action \"exlude\""},
        {"<val><prop att='a' val='b'/></val>", "a rule without an action"},
        {"<val><property/></val>", "<property> is not a rule"},
    };
    WriteTopic("<p>x</p>");
    for (const auto& row : rows) {
        Write("f.ditaval", row.filter);
        EXPECT_EQ(Run("t.dita", "f.ditaval"), 1) << row.filter;
        EXPECT_NE(record_.reason.find(row.reason), std::string::npos) << record_.reason;
        EXPECT_FALSE(Exists("out/xhtml/t.html")) << row.filter;
    }
}

TEST_F(BuiltinToolkit, KeysGiveTopicsTextAndTargets) {
    Write("m.ditamap",
          "<map><title>The <keyword keyref='product'/></title><topicref keyref='intro'/>"
          "<mapref href='keys.ditamap' format='ditamap' processing-role='resource-only'/>"
          "<topicref href='t.dita'/></map>");
    Write("keys.ditamap",
          "<map><keydef keys='intro' href='intro.dita'/><keydef "
          "keys='product'><topicmeta><keywords><keyword>P40"
          "</keyword></keywords></topicmeta></keydef><keydef keys='alias' keyref='product'/><keydef "
          "keys='site' "
          "href='https://example.org' scope='external' format='html'><topicmeta><linktext>Site</linktext>"
          "</topicmeta></keydef><keydef keys='lib' href='lib.dita' processing-role='resource-only'/></map>");
    WriteTopicAt("intro.dita", "Intro", "<p>i</p>");
    Write("lib.dita",
          "<topic id='lib'><title>L</title><body><note id='n'>Hot!</note><ul><li id='a'>one</li>"
          "<li id='b'>two</li><li id='c'>three</li></ul></body></topic>");
    WriteTopic(
        "<p><ph keyref='alias'/> <term keyref='intro'/> <xref keyref='site'/></p><note conkeyref='lib/n'/>"
        "<ul><li conref='lib.dita#lib/a' conrefend='lib.dita#lib/b'/></ul><p conkeyref='none/x'>kept</p>"
        "<p><ph id='own'>own</ph></p><p><ph conref='#./own'/></p>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("index.html", "concat(//h1, '|', //li[1]/a, //li[1]/a/@href)"),
              "The P40|Introintro.html");
    EXPECT_EQ(Query("t.html", "concat(//p[1], '|', //p[1]/span/a/@href, '|', //p[1]/a/@href)"),
              "P40 Intro Site|intro.html|https://example.org");
    EXPECT_EQ(Query("t.html", "concat(//div[@class='note'], '|', count(//li), //li[2], '|', //p[2])"),
              "Note: Hot!|2two|kept");
    EXPECT_EQ(Query("t.html", "string((//p)[last()])"), "own");
    // Where another page shows a title, its keys have their text too.
    WriteTopicAt("intro.dita", "Intro to <keyword keyref='product'/>", "<p/>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(QueryFrame("t.html", "concat(//nav[@id='ventrix-contents']//li[1], '|', //p[1]/span/a)"),
              "Intro to P40|Intro to P40");
    EXPECT_EQ(Findings(),
              "t.dita:1: conkeyref=\"none/x\": the map does not define this key with a target; the "
              "element keeps its own content\n");
}

TEST_F(BuiltinToolkit, MapsAreFoundByKeysThatOtherKeysDefine) {
    Write("m.ditamap",
          "<map><mapref keyref='b'/><keydef keys='c' keyref='d'/><keydef keys='b' keyref='a'/>"
          "<keydef keys='a' href='one.xml'/></map>");
    Write("one.xml", "<map><keydef keys='d' href='two.xml'/><mapref keyref='c'/></map>");
    Write("two.xml",
          "<map><keydef keys='text'><topicmeta><keywords><keyword>T9</keyword></keywords>"
          "</topicmeta></keydef><topicref href='t.dita'/></map>");
    WriteTopic("<p><ph keyref='text'/></p>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Findings() + Query("t.html", "//p"), "T9");
}

TEST_F(BuiltinToolkit, SamplesShowTheLinesOfTheirFiles) {
    Write("s.xml", "<a>\r\n  <b/>\n</a>\n");
    WriteTopic(
        "<codeblock><coderef href='s.xml'/></codeblock><codeblock>x <coderef "
        "href='s.xml#line-range(2,2)'/> y</codeblock><codeblock><coderef href='gone.c'/></codeblock>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "concat(//pre[1], '|', //pre[2])"), "<a>\n  <b/>\n</a>|x   <b/> y");
    EXPECT_FALSE(Exists("out/xhtml/s.html"));
    EXPECT_NE(Findings().find("t.dita:1: coderef"), std::string::npos) << Findings();
}

TEST_F(BuiltinToolkit, SamplesShowTheLinesThatTheirReferencesName) {
    Write("s.txt", "1\n2 begin\n3\n4\n5 end\n6\n");
    const struct {
        const char *fragment, *lines;
        bool isFound = true;
    } rows[] = {{"line-range(2,3)", "2 begin\n3"},
                {"line-range(5)", "5 end\n6"},
                {"line-range(2, 2)", "2 begin"},
                {"line=1,3", "2 begin\n3"},
                {"line=,2", "1\n2 begin"},
                {"line=4,", "5 end\n6"},
                {"token=begin,end", "3\n4"},
                {"token=end", "6"},
                {"token=,begin", "1"},
                {"line=3", "1\n2 begin\n3\n4\n5 end\n6", false},
                {"line-range(0,2)", "1\n2 begin\n3\n4\n5 end\n6", false},
                {"token=begin,start", "1\n2 begin\n3\n4\n5 end\n6", false},
                {"part", "1\n2 begin\n3\n4\n5 end\n6", false}};
    for (const auto& row : rows) {
        WriteTopic(std::string("<codeblock><coderef href='s.txt#") + row.fragment + "'/></codeblock>");
        ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
        EXPECT_EQ(Query("t.html", "string(//pre)"), row.lines) << row.fragment;
        EXPECT_EQ(Findings().empty(), row.isFound) << row.fragment << Findings();
    }
}

TEST_F(BuiltinToolkit, MapsLinkTheirTopics) {
    Write(
        "m.ditamap",
        "<map><topicref href='t.dita' collection-type='sequence'><topicref href='a.dita'/>"
        "<topicref href='b.dita' navtitle='Nav B' locktitle='yes'/><topicref href='c.dita' linking='none'/>"
        "</topicref><reltable linking='normal'><relrow><relcell><topicref href='a.dita'/></relcell><relcell>"
        "<topicref href='r.dita'/><topicref href='https://example.org' scope='external' format='html' "
        "navtitle='Web'/></relcell></relrow></reltable></map>");
    for (const char* name : {"a", "b", "c", "r"}) {
        WriteTopicAt(std::string(name) + ".dita", std::string("Title ") + name, "<p/>");
    }
    WriteTopic("<p/>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("index.html", "concat(count(//li), //li/ul/li[2]/a)"), "4Nav B");
    EXPECT_EQ(Query("a.html",
                    "concat(//div[@class='nextlink']/a/@href, count(//div[@class='previouslink']), "
                    "//div[@class='parentlink']/a/@href)"),
              "b.html0t.html");
    EXPECT_EQ(
        Query("a.html", "concat(//div[@class='linklist']//li[1]/a, //div[@class='linklist']//li[2]/a/@href)"),
        "Title rhttps://example.org");
    EXPECT_EQ(Query("r.html", "//div[@class='linklist']//li/a/@href"), "a.html");
    EXPECT_EQ(Query("c.html", "count(//a)"), "0");
    EXPECT_EQ(Query("t.html", "count(//ul[@class='ullinks']/li)"), "2");
    EXPECT_EQ(Findings(), "");
}

TEST_F(BuiltinToolkit, MapsDescribeTheirLinks) {
    Write("m.ditamap",
          "<map><topicref href='t.dita'><topicref href='a.dita'><topicmeta><shortdesc>From map</shortdesc>"
          "</topicmeta></topicref><topicref href='b.dita'/><topicref href='https://example.org' "
          "scope='external' format='html'><topicmeta><linktext>Site</linktext><shortdesc>Web</shortdesc>"
          "</topicmeta></topicref></topicref></map>");
    for (const char* name : {"a.dita", "b.dita"}) {
        Write(name, "<topic id='t'><title>T</title><shortdesc>Own</shortdesc></topic>");
    }
    WriteTopic("<p/>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html",
                    "concat(//li[1]/div[@class='desc'], '|', //li[2]/div[@class='desc'], '|', "
                    "//li[3]/div[@class='desc'])"),
              "From map|Own|Web");
    EXPECT_EQ(Query("index.html", "//a[@href='https://example.org']"), "Site");
}

TEST_F(BuiltinToolkit, MapsLinkTopicsInGroupsAndTables) {
    const struct {
        const char *map, *page, *links;
    } rows[] = {
        {"<topicref href='p.dita'><topicref href='a.dita' toc='no'><topicref href='b.dita'/></topicref>"
         "</topicref>",
         "a.html", "child:b parent:p "},
        {"<topicref href='p.dita' toc='no'><topicref href='a.dita'/></topicref>", "p.html", "child:a "},
        {"<topicgroup collection-type='family'><topicref href='a.dita'/><topicref "
         "href='b.dita'/></topicgroup>",
         "a.html", "related:b "},
        {"<topicref href='p.dita'><topicgroup collection-type='sequence'><topicref href='a.dita'/>"
         "<topicref href='b.dita'/></topicgroup></topicref>",
         "a.html", "parent:p next:b "},
        {"<topicref href='p.dita' collection-type='sequence'><topicref href='a.dita'/><topicref "
         "href='b.dita' processing-role='resource-only'/><topicref href='c.dita'/></topicref>",
         "a.html", "parent:p next:c "},
        {"<topicref href='p.dita'><topicref href='http://x.org/' scope='external' format='html' "
         "navtitle='Web'/><topicref href='o.dita' scope='peer' navtitle='Peer'/></topicref>",
         "p.html", "child:Web child:Peer "},
        {"<topicref href='p.dita'><topicref href='a.dita'><topicmeta><linktext>Own</linktext></topicmeta>"
         "</topicref></topicref>",
         "p.html", "child:Own "},
        {"<reltable><relrow><relcell collection-type='family'><topicref href='a.dita'/><topicref "
         "href='b.dita'/></relcell><relcell><topicref href='c.dita'><topicmeta><linktext>Own</linktext>"
         "</topicmeta></topicref></relcell></relrow></reltable>",
         "a.html", "related:b related:Own "},
        {"<topicgroup collection-type='family'><topicref href='a.dita'/><topicref "
         "href='b.dita'/></topicgroup>"
         "<reltable><relrow><relcell><topicref href='a.dita'/></relcell><relcell><topicref href='b.dita'/>"
         "</relcell></relrow></reltable>",
         "a.html", "related:b "},
        {"<topicref href='p.dita'><topicref href='a.dita'/></topicref><topicref href='c.dita'><topicref "
         "href='a.dita'/></topicref>",
         "a.html", "parent:p parent:c "},
        {"<reltable><relrow><relcell><topicref href='p.dita'><topicref href='a.dita'/></topicref></relcell>"
         "<relcell><topicref href='b.dita'/></relcell></relrow></reltable>",
         "a.html", "parent:p related:b "},
        {"<reltable><relheader><relcolspec linking='targetonly'/><relcolspec/></relheader><relrow><relcell>"
         "<topicref href='a.dita'/></relcell><relcell><topicref "
         "href='b.dita'/></relcell></relrow></reltable>",
         "a.html", ""},
        {"<reltable><relheader><relcolspec linking='targetonly'/><relcolspec/></relheader><relrow><relcell>"
         "<topicref href='a.dita'/></relcell><relcell><topicref "
         "href='b.dita'/></relcell></relrow></reltable>",
         "b.html", "related:a "},
    };
    for (const char* name : {"p", "a", "b", "c"}) {
        WriteTopicAt(std::string(name) + ".dita", name, "<p/>");
    }
    for (const auto& row : rows) {
        Write("m.ditamap", std::string("<map>") + row.map + "</map>");
        ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
        EXPECT_EQ(LinksOf(row.page), row.links) << row.map;
        EXPECT_EQ(Findings(), "") << row.map;
    }
}

TEST_F(BuiltinToolkit, AMapMayReferToABranchOfAnother) {
    Write("s.ditamap",
          "<map id='s'><topicref href='a.dita'/><topicref id='b' href='b.dita'><topicref "
          "href='c.dita'/></topicref>"
          "</map>");
    for (const char* name : {"a", "b", "c"}) {
        WriteTopicAt(std::string(name) + ".dita", name, "<p/>");
    }
    for (const auto& [id, contents] : {std::pair("b", "bc"), std::pair("s", "abc"), std::pair("x", "abc")}) {
        Write("m.ditamap",
              std::string("<map><topicref format='ditamap' href='s.ditamap#") + id + "'/></map>");
        ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
        EXPECT_EQ(Query("index.html", "translate(//ul, '\n', '')"), contents) << id;
        EXPECT_EQ(Findings().empty(), id != std::string("x")) << Findings();
    }
}

TEST_F(BuiltinToolkit, AMapMayReuseABranchOfAnother) {
    const struct {
        const char *branch, *contents, *finding;
    } rows[] = {
        {"<topicref conref='s.ditamap#b'/>", "bc", ""},
        {"<topicref conref='s.ditamap#s/b'/>", "bc", ""},
        {"<topicref conkeyref='s/b'/>", "bc", ""},
        {"<mapref keyref='keyed'/>", "a", ""},
        {"<mapref keyref='keyed'/><topicref keyref='inner'/>", "ac", ""},
        {"<topicref conkeyref='s/none'/>", "", "conkeyref=\"s/none\" (s.ditamap) has no usable target"},
        {"<topicref conref='s.ditamap'/>", "",
         "conref=\"s.ditamap\" names a <map>, which is not a kind of <topicref>"},
    };
    Write("s.ditamap",
          "<map id='s'><topicref id='b' href='b.dita'><topicref href='c.dita'/></topicref></map>");
    Write("k.ditamap", "<map><topicref keyref='a'/><keydef keys='inner' href='c.dita'/></map>");
    for (const char* name : {"a", "b", "c", "d"}) {
        WriteTopicAt(std::string(name) + ".dita", name, "<p/>");
    }
    for (const auto& row : rows) {
        Write("m.ditamap",
              std::string("<map><keydef keys='s' href='s.ditamap' format='ditamap'/><keydef keys='a' "
                          "href='a.dita'/><keydef keys='keyed' href='k.ditamap' format='ditamap'/>"
                          "<topicref href='d.dita'/>") +
                  row.branch + "</map>");
        ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
        EXPECT_EQ(Query("index.html", "translate(//ul, '\n', '')"), std::string("d") + row.contents)
            << row.branch;
        EXPECT_EQ(Findings().empty(), *row.finding == '\0') << row.branch << Findings();
        EXPECT_NE(Findings().find(row.finding), std::string::npos) << row.branch << Findings();
    }
}

TEST_F(BuiltinToolkit, WhatKeysLeaveEmptyIsAFinding) {
    Write("sub.ditamap", "<map><keydef keys='k'/></map>");
    Write("f.ditaval", "<val><prop att='audience' val='x' action='exclude'/></val>");
    const char excluded[] = "the filter (f.ditaval) excludes the definition of this key";
    const struct {
        const char *keys, *body, *finding;
    } rows[] = {
        {"<keydef keys='j k' audience='x'/>", "<p><term keyref='k'/></p>", excluded},
        {"<keydef keys='k' audience='x'/>", "<p conkeyref='k/p'/>", excluded},
        {"<mapref href='sub.ditamap' audience='x'/>", "<p><term keyref='k'/></p>", excluded},
        {"<keydef keys='k' audience='x'/><topichead navtitle='h' keyref='k'/>", "", excluded},
        {"<keydef keys='k' audience='x'/><keydef keys='k' href='t.dita'/>", "<p><term keyref='k'/></p>", ""},
        {"", "<p conkeyref='k/p'/>", "conkeyref=\"k/p\": the map does not define this key with a target"},
        {"<keydef keys='k'/>", "<p><keyword keyref='k'/></p>",
         "keyref=\"k\": the key gives <keyword> neither"},
        {"<keydef keys='k' keyref='l'/><keydef keys='l' keyref='k'/>", "<p><term keyref='k'/></p>",
         "keyref=\"k\": the key gives <term> neither"},
        {"<keydef keys='k'/>", "<p><xref keyref='k'/></p>", "keyref=\"k\": the key gives <xref> neither"},
        {"<keydef keys='k'/>", "<p><xref keyref='k'>text</xref></p>", ""},
        {"<keydef keys='k'/>", "<image keyref='k'/>", "keyref=\"k\": the key gives <image> neither"},
        {"<keydef keys='k'/>", "</body><related-links><link keyref='k'/></related-links><body>",
         "keyref=\"k\": the key gives <link> neither"},
    };
    for (const auto& row : rows) {
        Write("m.ditamap", std::string("<map>") + row.keys + "<topicref href='t.dita'/></map>");
        WriteTopic(row.body);
        ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0) << record_.reason;
        EXPECT_EQ(Findings().empty(), *row.finding == '\0') << row.body << Findings();
        EXPECT_NE(Findings().find(row.finding), std::string::npos) << row.body << Findings();
    }
    WriteTopic("<p conkeyref='k/p'/>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_NE(Findings().find("conkeyref=\"k/p\": the map does not define"), std::string::npos) << Findings();
}

TEST_F(BuiltinToolkit, ContentReferencesSayWhatIsWrongWhereTheyAreWritten) {
    Write("lib.dita",
          "<topic id='lib'><title>L</title><body>\n<p id='out' audience='x'>out</p><ul><li id='a'>a</li><li "
          "id='b' audience='x'>b</li></ul>\n\n<ul id='ul'><li conref='#lib/a' conrefend='#lib/none'/></ul>"
          "</body></topic>");
    Write("out.dita", "<topic id='out' audience='x'><title>O</title><body><p id='p'>p</p></body></topic>");
    Write("f.ditaval", "<val><prop att='audience' val='x' action='exclude'/></val>");
    const struct {
        const char *body, *finding;
    } rows[] = {
        {"<p conref='lib.dita'/>",
         "t.dita:1: conref=\"lib.dita\" names a <topic>, which is not a kind of <p>;"},
        {"<p conref='lib.dita#lib/a'/>",
         "t.dita:1: conref=\"lib.dita#lib/a\" names a <li>, which is not a kind of <p>;"},
        {"<p conref='lib.dita#lib/out'/>",
         "t.dita:1: conref=\"lib.dita#lib/out\" is excluded by the filter (f.ditaval);"},
        {"<p conref='out.dita#out/p'/>", "t.dita:1: conref=\"out.dita#out/p\" is excluded by the filter"},
        {"<ul><li conref='lib.dita#lib/a' conrefend='lib.dita#lib/b'/></ul>",
         "t.dita:1: conrefend=\"lib.dita#lib/b\" is excluded by the filter (f.ditaval);"},
        {"<p conkeyref='lib/none'/>", "t.dita:1: conkeyref=\"lib/none\" (lib.dita) has no usable target;"},
        {"<ul conref='lib.dita#lib/ul'/>",
         "lib.dita:4: conrefend=\"#lib/none\" is no element after the target;"},
        {"<p>\n<ph conref='#t/no'/></p>", "t.dita:2: conref=\"#t/no\" has no usable target;"},
        {"<section id='s'><p id='in'/><section conref='#t/s'/></section>",
         "t.dita:1: conref=\"#t/s\" leads back to itself"},
    };
    Write("m.ditamap", "<map><keydef keys='lib' href='lib.dita'/><topicref href='t.dita'/></map>");
    for (const auto& row : rows) {
        WriteTopic(row.body);
        ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0) << record_.reason;
        EXPECT_EQ(record_.findings.size(), 1U) << row.body << Findings();
        EXPECT_NE(Findings().find(row.finding), std::string::npos) << row.body << Findings();
    }
}

TEST_F(BuiltinToolkit, TopicsThatTheFilterExcludesFromTheMapArePublishedWithAFindingOnly) {
    WriteTopicAt("x.dita", "X", "<p/>");
    Write("f.ditaval", "<val><prop att='audience' val='x' action='exclude'/></val>");
    const std::string published = "<topicref href='x.dita'/>";
    const struct {
        std::string map, body, finding;
    } rows[] = {
        {"", "<p>\n<xref href='x.dita'/></p>",
         "t.dita:2: the link \"x.dita\" leads to a topic whose topic reference the filter (f.ditaval) "
         "excludes"},
        {"", "<p>x</p>", ""},
        {published, "<p><xref href='x.dita'/></p>", ""},
        {"<reltable><relrow><relcell><topicref href='t.dita'/></relcell><relcell>" + published +
             "</relcell></relrow></reltable>",
         "<p>x</p>",
         "x.dita is published because a relationship table names it, although the filter (f.ditaval)"},
    };
    for (const auto& row : rows) {
        for (const char* reference : {"href='x.dita'", "keyref='x'"}) {
            Write("m.ditamap",
                  std::string("<map><keydef keys='x' href='x.dita'/><topicref href='t.dita'/><topicref "
                              "audience='x' ") +
                      reference + "/>" + row.map + "</map>");
            WriteTopic(row.body);
            ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0) << record_.reason;
            EXPECT_EQ(record_.findings.size(), row.finding.empty() ? 0U : 1U) << row.body << Findings();
            EXPECT_NE(Findings().find(row.finding), std::string::npos) << row.body << Findings();
        }
    }
}

TEST_F(BuiltinToolkit, TopicsInMapsThatTheFilterExcludesArePublishedWithAFindingOnly) {
    WriteTopicAt("x.dita", "X", "<p/>");
    Write("f.ditaval", "<val><prop att='audience' val='x' action='exclude'/></val>");
    Write("inner.ditamap", "<map><topicref href='x.dita'/><mapref href='inner.ditamap'/></map>");
    const char* excluded = "<mapref href='sub.ditamap' audience='x'/>";
    const struct {
        const char *reference, *root, *content;
        std::size_t findings;
    } rows[] = {
        {excluded, "<map>", "<topicref href='x.dita'/>", 1},
        {"<keydef keys='s' href='sub.ditamap' audience='x'/>", "<map>", "<topicref href='x.dita'/>", 1},
        {"<mapref href='sub.ditamap'/>", "<map audience='x'>", "<topicref keyref='k'/>", 1},
        {excluded, "<map>", "<topicref audience='x'><topicref href='x.dita'/></topicref>", 1},
        {excluded, "<map>", "<mapref href='inner.ditamap'/>", 1},
        {excluded, "<map>", "<topicref href='o.dita'/>", 0},
        {"<mapref href='sub.ditamap' audience='x'/><topicref href='x.dita'/>", "<map>",
         "<topicref href='x.dita'/>", 0},
    };
    for (const auto& row : rows) {
        Write("sub.ditamap", std::string(row.root) + row.content + "</map>");
        Write("m.ditamap", std::string("<map><keydef keys='k' href='x.dita'/><topicref href='t.dita'/>") +
                               row.reference + "</map>");
        WriteTopic("<p><xref href='x.dita'/></p>");
        ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0) << record_.reason;
        EXPECT_TRUE(Exists("out/xhtml/x.html"));
        ASSERT_EQ(record_.findings.size(), row.findings) << row.reference << row.content << Findings();
        EXPECT_EQ(Findings().find("t.dita:1: the link \"x.dita\" leads to a topic whose topic reference the "
                                  "filter (f.ditaval) excludes"),
                  row.findings == 0 ? std::string::npos : 0U)
            << Findings();
    }
}

TEST_F(BuiltinToolkit, TitlesContainTheContentThatTheyReuse) {
    Write("m.ditamap",
          "<map><keydef keys='lib' href='lib.dita'/><topicref href='t.dita'/><topicref href='u.dita'/>"
          "</map>");
    Write("lib.dita",
          "<topic id='lib'><title>L</title><body><p><ph id='name'>P40</ph></p></body><topic "
          "id='pulled'><title>Pulled</title><topic id='inner'><title>Inner</title></topic></topic></topic>");
    Write("u.dita",
          "<topic id='u'><title>The <ph conkeyref='lib/name'/></title><topic id='n' "
          "conref='lib.dita#pulled'><title>Placeholder</title></topic></topic>");
    WriteTopic("<p><xref href='u.dita'/>, <xref href='u.dita#n'/>, <xref href='u.dita#inner'/></p>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "//p"), "The P40, Pulled, Inner");
    EXPECT_EQ(Query("index.html", "//li[2]/a"), "The P40");
    EXPECT_EQ(Findings(), "");
}

TEST_F(BuiltinToolkit, AlternativeTitlesAreForTheContentsAndTheWindow) {
    Write("m.ditamap",
          "<map><topicref href='t.dita' navtitle='Map'/><topicref href='u.dita' navtitle='Map' "
          "locktitle='yes'/></map>");
    for (const char* name : {"t.dita", "u.dita"}) {
        Write(
            name,
            "<topic id='t'><title>Title</title><titlealts><navtitle>Short</navtitle>"
            "<searchtitle>Found</searchtitle></titlealts><body><p><xref href='u.dita'/></p></body></topic>");
    }
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("index.html", "concat(//li[1], '|', //li[2])"), "Short|Map");
    EXPECT_EQ(Query("t.html", "concat(//h1, '|', //p, '|', //title)"), "Title|Title|Found - m");
    Write("m.ditamap",
          "<map><topicref href='t.dita'><topicmeta><searchtitle>In map</searchtitle></topicmeta></topicref>"
          "<topicref href='u.dita'/></map>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "//title") + Query("u.html", "//title"), "In map - mFound - m");
}

TEST_F(BuiltinToolkit, TheTitleOfABookHasAllItsParts) {
    Write("m.ditamap",
          "<bookmap><booktitle><booklibrary>Library</booklibrary><mainbooktitle>Main</mainbooktitle>"
          "<booktitlealt>One</booktitlealt>\n<booktitlealt>Two</booktitlealt></booktitle><chapter "
          "href='t.dita'/></bookmap>");
    WriteTopic("<p/>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("index.html", "concat(//title, '|', //h1)"), "Library Main One Two|Library Main One Two");
}

TEST_F(BuiltinToolkit, EachLanguageWithoutWordsIsOneFinding) {
    Write("m.ditamap", "<map xml:lang='fr'><topicref href='a.dita'/><topicref href='t.dita'/></map>");
    WriteTopicAt("a.dita", "A", "<note>n</note>");
    WriteTopic("<p><ph xml:lang='it'>i</ph></p><note xml:lang='de'>d</note><note xml:lang='es'>e</note>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(record_.findings.size(), 2U) << Findings();
    EXPECT_NE(Findings().find("a.dita:1: the language \"fr\" is not handled"), std::string::npos)
        << Findings();
    EXPECT_NE(Findings().find("t.dita:1: the language \"es\" is not handled"), std::string::npos)
        << Findings();
    EXPECT_EQ(Query("t.html", "concat(//div[@class='note'][1], //div[@class='note'][2])"),
              "Anmerkung: dNote: e");
    Write("m.ditamap", "<map xml:lang='fr'><topicref href='a.dita'/></map>");
    Write("a.dita", "<topic id='t' xml:lang='en'><title>T</title></topic>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Findings().find("m.ditamap:0: the language \"fr\" is not handled"), 0U) << Findings();
}

TEST_F(BuiltinToolkit, LinksWithoutATextNameTheirTargets) {
    const struct {
        const char *target, *text;
    } rows[] = {
        {"<table id='x'><title>A</title><tgroup cols='1'><tbody><row><entry/></row></tbody></tgroup></table>",
         "Table 1"},
        {"<fig><title/></fig><fig id='x'><title>A</title></fig>", "Figure 2"},
        {"<fig conref='o.dita#o/f'/><fig id='x'><title>A</title></fig>", "Figure 2"},
        {"<ol><li/><li><ol><li/><li><ol><li/><li/><li/><li id='x'/></ol></li></ol></li></ol>", "2.b.iv"},
        {"<ul><li><ol><li id='x'/></ol></li></ul>", "1"},
        {"<p>a<fn>n</fn><fn id='x'>m</fn></p>", "2"},
        {"<p><fn id='x' callout='*'>m</fn></p>", "*"},
        {"<section id='x'><title>S</title></section>", "S"},
        {"<dl><dlentry id='x'><dt>D</dt><dd/></dlentry></dl>", "D"},
    };
    Write("o.dita", "<topic id='o'><title>O</title><body><fig id='f'><title>F</title></fig></body></topic>");
    for (const auto& row : rows) {
        WriteTopic(std::string("<p><xref href='#t/x'/></p>") + row.target);
        ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
        EXPECT_EQ(Query("t.html", "concat(//a[@class='xref'], //a[@class='xref']/@href)"),
                  row.text + std::string("#t__x"))
            << row.target;
        EXPECT_EQ(Findings(), "") << row.target;
    }
    Write("o.dita",
          "<topic id='o'><title>O</title><topic id='n'><title>N</title><body><p "
          "id='p'/></body></topic></topic>");
    WriteTopic("<p><xref href='o.dita#n/p'/></p>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "//p"), "N") << "the title of the topic that contains the target";
    EXPECT_NE(Findings().find("the link \"o.dita#n/p\" has no text"), std::string::npos) << Findings();
    Write("o.dita", "<topic id='o'><title>O</title><body><fig id='f'><title>F</title></fig></body></topic>");
    Write(
        "t.dita",
        "<topic id='t' xml:lang='de'><title>T</title><body><p><xref href='o.dita#o/f'/></p></body></topic>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "//p"), "Abbildung 1") << "in the language of the link";
}

TEST_F(BuiltinToolkit, PagesAreToldApart) {
    Write("m.ditamap",
          "<map><title>M</title><topicref href='index.dita'/><topicref href='a.dita'/>"
          "<topicref href='a.xml'/></map>");
    WriteTopicAt("index.dita", "", "<p>i</p>");
    WriteTopicAt("a.dita", "D", "<p>d</p>");
    WriteTopicAt("a.xml", "X", "<p>x</p>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("index.html", "//p"), "i");
    EXPECT_EQ(Query("a.html", "//p") + Query("a-2.html", "//p"), "dx");
    EXPECT_EQ(Query("index-2.html", "concat(//h1, '|', //li[1]/a, '|', //li[3]/a/@href)"),
              "M|index|a-2.html");
}

TEST_F(BuiltinToolkit, MoreElementsAreRendered) {
    const struct {
        const char *source, *xpath, *value;
    } rows[] = {
        {"<dl><dlentry id='e'><dt>a</dt><dd>b</dd></dlentry></dl><p><xref href='#t/e'/></p>",
         "concat(//dt/@id, //p/a/@href, //p/a)", "t__e#t__ea"},
        {"<ol><li>x</li><li id='l'>y</li></ol><p>step <xref href='#t/l'/></p>", "//p", "step 2"},
        {"<imagemap><image href='i.png'/><area><shape>rect</shape><coords>1,2</coords><xref href='o.dita'/>"
         "</area></imagemap>",
         "concat(//img/@usemap, //map/@id, //area/@shape, //area/@coords, //area/@href, //area/@alt)",
         "#imagemap1imagemap1rect1,2o.htmlOther"},
        {"<p>a<fn callout='*'>b</fn></p>", "concat(//p, '|', //div[@class='fn'])", "a*|* b"},
        {"<p>a<fn id='f'>b</fn><xref href='#t/f'/></p>", "concat(//p, '|', //div[@id='t__f'])", "a1|1 b"},
        {"<p><xref href='o.dita'>x<desc>more</desc></xref><xref href='o.dita'><desc>more</desc></xref></p>",
         "concat(//a[1], //a[1]/@title, //a[2], //a[2]/@title)", "xmoreOthermore"},
        {"<choicetable><chrow><choption>a</choption><chdesc>b</chdesc></chrow></choicetable>",
         "concat(//th[1], //th[2], //td[1])", "OptionDescriptiona"},
        {"<choicetable><chhead><choptionhd>O</choptionhd><chdeschd>D</chdeschd></chhead></choicetable>",
         "concat(count(//th), //th[1])", "2O"},
        {"<fig><title/></fig><fig><title>A</title></fig>",
         "concat(//div[1]/div[1]/span, '|', (//div[@class='fig'])[2])", "Figure 1. |Figure 2. A"},
        {"<ol><li><ol><li><ol><li/></ol></li></ol></li></ol>", "concat(//ol/@type, ',', //ol//ol//ol/@type)",
         "a,i"},
        {"<p><xref href='peer.dita#t/x' scope='peer'/></p>", "concat(//a/@href, ' ', //a)",
         "peer.html#t__x peer.html#t__x"},
        {"<p><tm tmtype='reg'>V</tm><xmlelement>e</xmlelement></p>", "//p", "V\u00aee"},
    };
    Write("i.png", "png");
    WriteTopicAt("o.dita", "Other", "<p/>");
    for (const auto& row : rows) {
        WriteTopic(row.source);
        EXPECT_EQ(Run("t.dita"), 0) << row.source << record_.reason;
        EXPECT_EQ(Query("t.html", row.xpath), row.value) << row.source;
        EXPECT_EQ(Findings(), "") << row.source;
    }
    Write("t.dita",
          "<topic id='t'><title>T</title><body/><related-links><linklist><title>See</title><link "
          "href='o.dita'/><linkinfo>info</linkinfo></linklist></related-links></topic>");
    ASSERT_EQ(Run("t.dita"), 0);
    EXPECT_EQ(Query("t.html", "concat(//strong, //li/a, //div[@class='linkinfo'], count(//a))"),
              "SeeOtherinfo1");
}

TEST_F(BuiltinToolkit, TheVocabularyIsKnownWithoutItsDtd) {
    Write(
        "m.ditamap",
        "<!DOCTYPE bookmap SYSTEM 'none.dtd'><bookmap><booktitle><mainbooktitle>B</mainbooktitle></booktitle>"
        "<bookmeta><authorinformation><personinfo><namedetails><personname><firstname>A</firstname></"
        "personname>"
        "</namedetails></personinfo></authorinformation><publisherinformation><person>P</person><published>"
        "<publishtype value='general'/><started><day>1</day></started></published></publisherinformation>"
        "<bookid><isbn>1</isbn></bookid><bookrights><copyrfirst><year>2020</year></copyrfirst><summary>S"
        "</summary></bookrights></bookmeta><chapter href='t.dita'/><topicsubject keyref='s'/>"
        "<learningObject><learningContentRef href='l.xyz'/></learningObject></bookmap>");
    Write("l.xyz",
          "<learningAssessment "
          "id='l'><title>L</title><learningAssessmentbody><lcIntro>i</lcIntro><lcInteraction>"
          "<lcSingleSelect "
          "id='s'><lcQuestion>q</lcQuestion><lcAnswerOptionGroup><lcAnswerOption><lcAnswerContent>a"
          "</lcAnswerContent><lcCorrectResponse/></lcAnswerOption></lcAnswerOptionGroup></lcSingleSelect>"
          "<lcOpenQuestion2 id='o'><lcQuestion2>q2</lcQuestion2></lcOpenQuestion2></lcInteraction>"
          "</learningAssessmentbody></learningAssessment>");
    Write("t.dita",
          "<task id='t'><title>T</title><prolog><metadata><change-historylist><change-item><change-person>no"
          "</change-person></change-item></change-historylist></metadata></"
          "prolog><taskbody><prelreqs><reqconds>"
          "<reqcond>c</reqcond></reqconds></prelreqs></taskbody></task>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Findings(), "m.ditamap:1: keyref=\"s\": the map does not define this key\n");
    EXPECT_EQ(Query("index.html", "translate(//ul, '\n', '')"), "TL");
    EXPECT_EQ(Query("t.html", "concat(normalize-space(//main), //div/ol[@class='ol ol reqconds']/li)"),
              "T cc");
    EXPECT_EQ(Query("l.html",
                    "concat(//div[contains(@class, 'section')]/div/p[1], //ul/li/p, //div/div/div/div/div)"),
              "qaq2");
    Write("t.dita", "<topic id='t'><title>T</title><body><summary>s</summary></body></topic>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_NE(Findings().find("<summary> is not known"), std::string::npos) << "metadata of a book";
}

TEST_F(BuiltinToolkit, TheHeadOfAPageHasTheMetadataOfTopicAndMap) {
    Write("m.ditamap",
          "<map><topicmeta><author>Map</author><publisher>House</publisher><critdates><created date='2001'/>"
          "</critdates><keywords><keyword>map</keyword></keywords></topicmeta><topicref "
          "href='t.dita'><topicmeta>"
          "<author>Ref</author><source "
          "href='https://example.org/map'/><keywords><keyword>ref</keyword></keywords><othermeta name='o' "
          "content='c'/>"
          "</topicmeta><topicref href='u.dita'/></topicref></map>");
    Write("s.pdf", "pdf");
    Write(
        "t.dita",
        "<topic id='t'><title>T</title><prolog><author type='contributor'>Own\n "
        "<ph>Author</ph></author><source href='s.pdf'/><publisher>"
        "P</publisher><copyright><copyryear year='2020'/><copyrholder>H</copyrholder></copyright><critdates>"
        "<created date='2020'/></critdates><metadata><keywords><keyword>k</keyword><indexterm>i<indexterm>j"
        "</indexterm></indexterm><keyword>ref</keyword></keywords><audience type='other' othertype='expert'/>"
        "<prodinfo><prodname>N</prodname><vrmlist><vrm version='3'/></vrmlist></prodinfo></metadata></prolog>"
        "</topic>");
    Write("u.dita", "<topic id='u'><title>U</title><prolog><source href='s.pdf'/></prolog></topic>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    const auto metadataOf = [this](const std::string& page) {
        std::string text;
        for (int i = 1; i <= std::stoi(Query(page, "count(//meta[@name])")); ++i) {
            const std::string meta = "//meta[@name][" + std::to_string(i) + "]";
            text += Query(page, "concat(" + meta + "/@name, '=', " + meta + "/@content)") + "\n";
        }
        return text.substr(text.find('\n') + 1);  // After the viewport.
    };
    EXPECT_EQ(
        metadataOf("t.html"),
        "DC.Source=https://example.org/map\nDC.subject=ref, k, i, j\nkeywords=ref, k, i, "
        "j\nDC.Audience.Type=expert\nprodname=N\nversion=3\n"
        "DC.Creator=Ref\nDC.Creator=Map\nDC.Contributor=Own Author\nDC.Publisher=House\ncopyright=H 2020\n"
        "DC.Rights.Owner=H 2020\nDC.Date.Created=2001\no=c\n");
    EXPECT_EQ(metadataOf("u.html"),
              "DC.Source=s.pdf\nDC.Creator=Ref\nDC.Creator=Map\nDC.Publisher=House\nDC.Date.Created=2001\n");
}

TEST_F(BuiltinToolkit, ImagesAreScaledAndAligned) {
    const std::string png = std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\1\4\0\0\0\x0b", 24);
    Write("i.png", png);
    Write("i.gif", std::string("GIF89a\x04\1\x0b\0", 10));
    Write("i.jpg", std::string("\xff\xd8\xff\xe0\0\4ab\xff\xc2\0\x0b\x08\0\x0b\1\4\0", 18));
    Write("cut.jpg", "\xff\xd8\xff\xe0");
    const struct {
        const char *attributes, *size;
        bool isScaled = true;
    } rows[] = {
        {"href='i.png' scale='50'", "130x5"},
        {"href='i.gif' scale='200'", "520x22"},
        {"href='i.jpg' scale='100'", "260x11"},
        {"href='i.png' width='7' scale='50'", "7x"},
        {"href='cut.jpg' scale='50'", "x", false},
        {"href='i.png' scale='50%'", "x", false},
        {"href='https://example.org/i.png' scope='external' scale='50'", "x", false},
    };
    for (const auto& row : rows) {
        WriteTopic(std::string("<image ") + row.attributes + "/>");
        ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
        EXPECT_EQ(Query("t.html", "concat(//img/@width, 'x', //img/@height)"), row.size) << row.attributes;
        EXPECT_EQ(Findings().empty(), row.isScaled) << row.attributes << Findings();
    }
    WriteTopic("<image href='i.png' align='right' placement='break'/><image href='i.png' align='left'/>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "concat(count(//span), //span[img]/@class)"), "1imageblock imageright");
    WriteTopic("<object classid='c' name='n'><param name='p' value='v' valuetype='data'/></object>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Query("t.html", "concat(//object/@classid, //object/@name, //param/@valuetype)"), "cndata");
}

TEST_F(BuiltinToolkit, SyntaxDiagramsHaveBracketsAndTablesKeepTheirOrder) {
    const struct {
        const char *body, *text;
    } rows[] = {
        {"<syntaxdiagram><groupseq><kwd>A</kwd><kwd importance='optional'>B</kwd></groupseq><groupchoice "
         "importance='optional'><title>T</title><kwd>X</kwd><kwd importance='default'>Y</kwd></groupchoice>"
         "</syntaxdiagram>",
         "A[ B ] [ { TX | Y } ]"},
        {"<table><tgroup cols='1'><thead><row><entry>H1</entry></row></thead><tbody><row><entry>a</entry>"
         "</row></tbody></tgroup><tgroup cols='1'><thead><row><entry>H2</entry></row></thead><tbody><row>"
         "<entry>b</entry></row></tbody></tgroup></table>",
         "H1 a H2 b"},
        {"<simpletable><strow><stentry specentry='S'/><stentry specentry='S'>own</stentry></strow>"
         "</simpletable>",
         "Sown"},
        {"<fig><svg-container><svgref href='x.svg'/></svg-container></fig>", ""},
    };
    for (const auto& row : rows) {
        WriteTopic(row.body);
        ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
        EXPECT_EQ(Query("t.html", "normalize-space(//div[@class='body'])"), row.text) << row.body;
        EXPECT_EQ(Query("t.html", "count(//xref | //thead[preceding-sibling::tbody])"), "0") << row.body;
    }
}

TEST_F(BuiltinToolkit, ATopicWithoutATitleHasNoHeading) {
    WriteTopicAt("o.dita", "", "<p/>");
    WriteTopicAt("t.dita", "T", "<p/>");
    Write("m.ditamap", "<map><topicref href='t.dita'><topicref href='o.dita'/></topicref></map>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Query("o.html", "concat(count(//h1), //title)"), "0o - m");
    EXPECT_EQ(LinksOf("t.html"), "child:o ");
}

TEST_F(BuiltinToolkit, WhatReusedContentLacksIsReportedOnceInItsFile) {
    Write("m.ditamap",
          "<map><topicref href='t.dita'/><topicref href='u.dita'/><topicref href='lib.dita'/></map>");
    Write("lib.dita",
          "<topic id='l'><title>L</title><body>\n<p id='p'><ph keyref='none'/></p>\n<ul><li id='a'/>"
          "<li id='b'><state name='a' value='b'/></li></ul></body></topic>");
    for (const char* name : {"t.dita", "u.dita"}) {
        WriteTopicAt(
            name, "T",
            "<p conref='lib.dita#l/p'/><ul><li conref='lib.dita#l/a' conrefend='lib.dita#l/b'/></ul>");
    }
    const std::string expected =
        "lib.dita:3: <state> is not handled: its name and value are left out; the DITA Open Toolkit handles "
        "it "
        "(--toolkit)\nlib.dita:2: keyref=\"none\": the map does not define this key\n";
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Findings(), expected);
    Write("m.ditamap",
          "<map><topicref href='t.dita'/><topicref href='lib.dita' processing-role='resource-only'/></map>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Findings(), expected) << "the file has no page of its own";
}

TEST_F(BuiltinToolkit, DeadLinksAreFindings) {
    WriteTopicAt("o.dita", "Other", "<p id='p'>p</p>");
    WriteTopic("<p>\n<xref href='o.dita#t/p'>a</xref><xref href='o.dita#t/q'>b</xref></p>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Findings(), "t.dita:2: the link \"o.dita#t/q\" leads to nothing in o.html\n");
    WriteTopic("<p><xref href='#t/none'/></p>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(Findings(), "t.dita:1: the link \"#t/none\" leads to nothing in t.html\n")
        << "one for one fault";
    Write("f.ditaval", "<val><prop att='audience' val='x' action='exclude'/></val>");
    WriteTopicAt("o.dita", "Other", "<p id='p' audience='x'>p</p>");
    WriteTopic("<p><xref href='o.dita#t/p'>a</xref></p>");
    ASSERT_EQ(Run("t.dita", "f.ditaval"), 0) << record_.reason;
    EXPECT_EQ(Findings(),
              "t.dita:1: the link \"o.dita#t/p\" leads to nothing in o.html, because the filter "
              "(f.ditaval) excludes its target; exclude the link too\n");
    Write("o.dita", "<topic id='o' audience='x'><title>O</title></topic>");
    Write("m.ditamap", "<map><keydef keys='k' href='o.dita'/><topicref href='t.dita'/></map>");
    WriteTopic("<p><xref href='o.dita'>a</xref>\n<xref href='o.dita'/>\n<term keyref='k'/></p>");
    ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0) << record_.reason;
    EXPECT_EQ(record_.findings.size(), 2U) << Findings();
    for (const char* line : {"t.dita:2: ", "t.dita:3: "}) {
        EXPECT_NE(Findings().find(std::string(line) + "the link \"o.dita\" leads to a topic that the filter "
                                                      "(f.ditaval) excludes, and has no text"),
                  std::string::npos)
            << Findings();
    }
}

TEST_F(BuiltinToolkit, EachConstructThatIsNotHandledIsAFinding) {
    const struct {
        const char *map, *body, *name;
    } rows[] = {
        {"<topicref href='t.dita' keyscope='k'/>", "", "m.ditamap:1: keyscope=\"k\" of <topicref>"},
        {"<topicref href='t.dita' copy-to='u.dita'/>", "", "copy-to=\"u.dita\""},
        {"<topicref href='t.dita' chunk='to-content'/>", "", "chunk=\"to-content\""},
        {"<topicref href='t.dita'><ditavalref href='f.ditaval'/></topicref>", "", "<ditavalref>"},
        {"<topicref href='t.dita'/><anchor id='a'/>", "", "<anchor>"},
        {"<topicref href='t.dita'/><navref mapref='x.ditamap'/>", "", "<navref>"},
        {"<topicref href='t.dita'/>", "<p conaction='pushafter' conref='o.dita#o/p'>x</p>",
         "t.dita:1: conaction=\"pushafter\" of <p>"},
        {"<topicref href='t.dita'/>", "<p><abbreviated-form keyref='a'/></p>", "<abbreviated-form>"},
        {"<topicref href='t.dita'/>", "<image href='i.png'><longdescref href='l.html'/></image>",
         "<longdescref>"},
        {"<topicref href='t.dita'/><reltable><relheader><relcolspec><topicref href='t.dita'/></relcolspec>"
         "</relheader></reltable>",
         "", "<relheader>"},
        {"<topicref href='t.dita'/>", "<p><state name='a' value='b'/></p>", "<state>"},
        {"<topicref href='t.dita'/>", "<p><boolean state='yes'/></p>", "<boolean>"},
        {"<topicref href='t.dita'/>", "<section spectitle='S'>x</section>", "spectitle=\"S\" of <section>"},
        {"<topicref href='t.dita'/>", "<lq>x<longquoteref href='l.html'/></lq>", "<longquoteref>"},
        {"<topicref href='t.dita'/>", "<p>x<indextermref keyref='k'/></p>", "<indextermref>"},
        {"<topicref href='t.dita'/>", "<section><unknown>x</unknown></section>", "<unknown>"},
        {"<topicref href='t.dita'/><anchorref href='t.dita'/>", "", "<anchorref>"},
        {"<topicref href='t.dita'/><topicref href='a.md' format='markdown'/>", "",
         "m.ditamap:1: \"a.md\" is not a topic in XML"},
        {"<topicref href='t.dita'/><topicref href='a.md'/>", "", "\"a.md\" is not a topic in XML"},
        {"<topicref href='t.dita'/>", "<p><xref href='a.md' format='mdita'>a</xref></p>",
         "t.dita:1: \"a.md\" is not a topic in XML"},
        {"<topicref href='t.dita'/><booklists><toc/></booklists>", "", "<toc>"},
        {"<topicref href='t.dita'/><booklists><figurelist/></booklists>", "", "<figurelist>"},
        {"<topicref href='t.dita'/><booklists><tablelist/></booklists>", "", "<tablelist>"},
        {"<topicref href='t.dita'/><booklists><indexlist/></booklists>", "", "<indexlist>"},
        {"<topicref href='t.dita'/><booklists><glossarylist/></booklists>", "", "<glossarylist>"},
        {"<topicref href='t.dita'/><booklists><trademarklist/></booklists>", "", "<trademarklist>"},
        {"<topicref href='t.dita'/><booklists><bibliolist/></booklists>", "", "<bibliolist>"},
        {"<topicref href='t.dita'/><booklists><abbrevlist/></booklists>", "", "<abbrevlist>"},
        {"<topicref href='t.dita'/>", "<lq href='https://example.org'>x</lq>",
         "href=\"https://example.org\" of <lq>"},
        {"<topicref href='t.dita'/>", "<steps><step importance='optional'><cmd>x</cmd></step></steps>",
         "importance=\"optional\" of <step>"},
        {"<topicref href='t.dita'/>", "<mathml><mathmlref href='l.html'/></mathml>", "<mathmlref>"},
        {"<topicref href='t.dita'/>", "<svg-container><svgref href='l.html'/></svg-container>", "<svgref>"},
        {"<topicref href='t.dita'/>", "<lq keyref='k'>x</lq>", "keyref=\"k\" of <lq>"},
        {"<topicref href='t.dita'/>", "<image href='i.png' longdescref='l.html'/>",
         "longdescref=\"l.html\" of <image>"},
        {"<topicref href='t.dita'/>", "<object datakeyref='k'><param name='p' keyref='j'/></object>",
         "datakeyref=\"k\" of <object>"},
        {"<topicref href='t.dita'/>", "<object data='i.png'><param name='p' keyref='j'/></object>",
         "keyref=\"j\" of <param>"},
    };
    Write("i.png", "png");
    Write("l.html", "<p/>");
    Write("a.md", "# A");
    for (const auto& row : rows) {
        Write("m.ditamap", std::string("<map>") + row.map + "</map>");
        WriteTopic(row.body);
        ASSERT_EQ(Run("m.ditamap"), 0) << row.map << record_.reason;
        EXPECT_NE(Findings().find(row.name), std::string::npos) << row.map << row.body << "\n" << Findings();
        EXPECT_NE(Findings().find("the DITA Open Toolkit handles it"), std::string::npos);
    }
    WriteTopic("<p>\n<xref href='#t/p'/></p><p id='p'>x</p><strange>s</strange>");
    ASSERT_EQ(Run("t.dita"), 0);
    EXPECT_NE(Findings().find("t.dita:2: the link \"#t/p\" has no text and its target no title"),
              std::string::npos)
        << Findings();
    EXPECT_NE(Findings().find("<strange> is not known"), std::string::npos) << Findings();
    Write("m.ditamap",
          "<map><topicref href='t.dita'/><reltable><relheader><relcolspec/></relheader></reltable></map>");
    WriteTopic("<p>x</p>");
    ASSERT_EQ(Run("m.ditamap"), 0);
    EXPECT_EQ(Findings(), "") << "a heading without links loses none";
    Write("f.ditaval", "<val>\n<prop att='a' val='b' action='flag'/></val>");
    ASSERT_EQ(Run("m.ditamap", "f.ditaval"), 0);
    EXPECT_NE(Findings().find("f.ditaval:2: flagging is not handled"), std::string::npos) << Findings();
}

}  // namespace
}  // namespace ventrix::desk
