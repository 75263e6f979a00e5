#include "desk/documents/document_files.h"
#include "desk/folder_fixture.h"
#include "support/links.h"
#include "support/pipe.h"
#include "support/text_rows.h"

namespace ventrix::desk {
namespace {

class DocumentLister : public FolderFixture {
  protected:
    /// The list, one entry per line, relative to the test's folder, with a star before each graphic.
    std::string Listed(const std::string& name) {
        files_ = ListDocumentFiles({Native(name)});
        const std::string base = Native() + '/';
        std::string text;
        for (const DocumentFile& file : files_.files) {
            text += file.key == "graphicsType" ? "*" : "";
            const std::string& path = file.path.utf8;
            text += path.starts_with(base) ? path.substr(base.size()) : path + file.url;
            text += "\n";
        }
        return text;
    }
    DocumentFiles files_;
};

TEST_F(DocumentLister, ReferencesOfOneDocumentAreListed) {
    const struct {
        const char *what, *content, *listed;
    } rows[] = {
        {"map", "<map><topicref href='t.dita'/><topicref href='m.ditamap' format='ditamap'/></map>",
         "t.dita\nm.ditamap\n"},
        {"each once", "<map><topicref href='t.dita#a'/><topicref href='./t.dita#b'/></map>", "t.dita\n"},
        {"a code sample is not a topic", "<topic><coderef href='sample.xml'/></topic>", "sample.xml\n"},
        {"conref",
         "<topic><p conref='c.dita#x/y'/><p conref='#x/z'/><p conref='-dita-use-conref-target'/></topic>",
         "c.dita\n"},
        {"images", "<topic><image href='a.bin'/><xref href='b.PNG'/><object data='film.mp4'/></topic>",
         "*a.bin\n*b.PNG\nfilm.mp4\n"},
        {"data on other elements is not a reference", "<topic><x data='nothing.txt'/></topic>", ""},
        {"scopes",
         "<topic><xref href='e.pdf' scope='external'/><xref href='p.dita' scope='peer'/>"
         "<xref href='https://example.org/x' scope='external'/><xref href='mailto:a@example.org'/></topic>",
         "https://example.org/x\n"},
        {"inherited scope",
         "<map><topicgroup scope='peer'><topicref href='p.dita'/>"
         "<topicref href='l.dita' scope='local'/></topicgroup></map>",
         "l.dita\n"},
        {"an image in an external link is local",
         "<topic><xref href='https://example.org' scope='external' format='html'><image "
         "href='i.png'/></xref></topic>",
         "https://example.org\n*i.png\n"},
        {"docbook",
         "<book xmlns='http://docbook.org/ns/docbook' xmlns:xi='http://www.w3.org/2001/XInclude'"
         " xmlns:xlink='http://www.w3.org/1999/xlink'><xi:include href='c1.xml'/>"
         "<xi:include href='code.txt' parse='text'/><imagedata fileref='i.svg'/>"
         "<textdata fileref='t.txt'/><link xlink:href='notes.html'/></book>",
         "c1.xml\ncode.txt\n*i.svg\nt.txt\nnotes.html\n"},
        {"entity files",
         "<!DOCTYPE book [<!ENTITY one SYSTEM 'one.xml'><!NOTATION png SYSTEM 'png'>"
         "<!ENTITY pic SYSTEM 'pic.dat' NDATA png><!ENTITY dir 'sub'>]>"
         "<book>&one;<graphic entityref='pic'/><a href='&dir;/x.xml'/></book>",
         "one.xml\n*pic.dat\nsub/x.xml\n"},
        {"undefined entities",
         "<!DOCTYPE topic PUBLIC '-//X//DTD none//EN' 'none.dtd'>"
         "<topic>&nbsp;<p a='&product;'><image href='i.png'/></p></topic>",
         "*i.png\n"},
        {"undefined without a DOCTYPE", "<topic>&nbsp;<image href='i.png'/></topic>", "*i.png\n"},
        {"attributes of other namespaces are not references",
         "<r xmlns:o='urn:o' o:href='no.xml' href='yes.xml'/>", "yes.xml\n"},
        {"a DTD at an absolute path", "<!DOCTYPE r SYSTEM '/etc/hostname'><r/>", ""},
        {"missing local DTD", "<!DOCTYPE r SYSTEM 'absent.dtd'><r/>", ""},
        {"system notation", "<topic><image href='\\\\nowhere\\a.png'/><image href='i%20%C3%BC.png'/></topic>",
         "*i \xC3\xBC.png\n"},
    };
    for (const auto& row : rows) {
        Write("d.xml", row.content);
        EXPECT_EQ(Listed("d.xml"), std::string("d.xml\n") + row.listed) << row.what;
        EXPECT_FALSE(files_.refused) << row.what << files_.reason;
    }
}

TEST_F(DocumentLister, MapsTopicsAndIncludesAreFollowedInPlace) {
    Write("maps/g.ditamap",
          "<map><topicref href='../t/a.dita'/><mapref href='s.ditamap' format='ditamap'/>"
          "<topicref href='notes.html' format='html'/><topicref href='../t/z.dita'/></map>");
    Write("maps/s.ditamap", "<map><topicref href='../t/b.dita'/></map>");
    Write("maps/notes.html", "<html><img src='never.png'/></html>");
    Write("t/a.dita", "<topic><image href='../i/p.svg'/><p conref='lib.xml#l/p'/></topic>");
    Write("t/b.dita", "<topic><xref href='b.pdf' format='pdf'/><xref href='a.dita'/></topic>");
    Write("t/lib.xml", "<topic id='l'><p id='p'><image href='lib.png'/></p></topic>");
    Write("t/b.pdf", "%PDF");
    Write("i/p.svg", "<svg xmlns:xlink='http://www.w3.org/1999/xlink'><image xlink:href='inner.png'/></svg>");
    EXPECT_EQ(Listed("maps/g.ditamap"),
              "maps/g.ditamap\nt/a.dita\n*i/p.svg\nt/lib.xml\n*t/lib.png\nmaps/s.ditamap\nt/b.dita\nt/b.pdf\n"
              "maps/notes.html\nt/z.dita\n");
    EXPECT_TRUE(files_.dita);
}

TEST_F(DocumentLister, CyclesOfReferencesAndLinksAreFollowedOnce) {
    Write("a.dita", "<topic><xref href='a.dita'/><xref href='b.dita'/></topic>");
    Write("b.dita", "<topic><xref href='a.dita#x'/><xref href='loop/b.dita'/></topic>");
    test::MakeLink(".", Native("loop"));
    EXPECT_EQ(Listed("a.dita"), "a.dita\nb.dita\nloop/b.dita\n");
}

TEST_F(DocumentLister, LongChainsAreFollowed) {
    constexpr int kCount = 2000;
    for (int i = 0; i < kCount; ++i) {
        Write(std::to_string(i) + ".dita",
              "<topic><xref href='" + std::to_string(i + 1) + ".dita'/></topic>");
    }
    Listed("0.dita");
    EXPECT_EQ(files_.files.size(), kCount + 1U);
}

TEST_F(DocumentLister, DtdIsReadIfAnEntityNeedsIt) {
    Write("e.dtd", "<!ENTITY pics 'pictures'>");
    Write("d.xml", "<!DOCTYPE topic SYSTEM 'e.dtd'><topic><image href='&pics;/a.png'/></topic>");
    EXPECT_EQ(Listed("d.xml"), "d.xml\ne.dtd\n*pictures/a.png\n");
}

TEST_F(DocumentLister, ADtdIsListedWithTheFilesThatItPullsIn) {
    Write("dtd/e.dtd",
          "<!-- <!ENTITY % no SYSTEM 'no.ent'> --><!ENTITY % a SYSTEM \"sub/a.ent\"> %a;"
          "<!ENTITY % p PUBLIC '-//X//ENTITIES p//EN' 'p.ent'><!ENTITY n SYSTEM 'n.png' NDATA png>"
          "<!ENTITY % gone SYSTEM 'gone.ent'><!ENTITY t SYSTEM 't.xml'><!ELEMENT d ANY>");
    Write("dtd/sub/a.ent", "<!ENTITY % b SYSTEM '../b.ent'><!ENTITY % again SYSTEM '../e.dtd'>");
    Write("dtd/t.xml", "<t>text</t>");
    for (const char* name : {"dtd/b.ent", "dtd/no.ent", "dtd/p.ent", "dtd/n.png"}) {
        Write(name, "");
    }
    Write("d.xml", "<!DOCTYPE d SYSTEM 'dtd/e.dtd'><d/>");
    EXPECT_EQ(Listed("d.xml"), "d.xml\ndtd/e.dtd\ndtd/sub/a.ent\ndtd/b.ent\ndtd/t.xml\n");
}

TEST_F(DocumentLister, OmittedReferencesAreReported) {
    Write("d.xml",
          "<topic><image href='a\\b.png'/><image href='a%01.png'/>\n<image href='%ff.png'/>"
          "<image href='a\\b.png'/><image href='ok.png'/></topic>");
    EXPECT_EQ(Listed("d.xml"), "d.xml\n*ok.png\n");
    ASSERT_EQ(files_.remarks.size(), 3U);
    EXPECT_EQ(files_.remarks[0].what, "a\\b.png");
    EXPECT_EQ(files_.remarks[0].referrer.utf8, Native("d.xml"));
    EXPECT_EQ(files_.remarks[2].line, 2);
    EXPECT_NE(files_.remarks[0].reason.find("backslash"), std::string::npos);
    EXPECT_NE(files_.remarks[1].reason.find("control"), std::string::npos);
    EXPECT_NE(files_.remarks[2].reason.find("UTF-8"), std::string::npos);
}

TEST_F(DocumentLister, UnreadableDocumentsGiveTheirReason) {
    Write("broken.xml", "<topic>\n<p>\n</topic>");
    Write("text.xml", "no markup");
    Write("empty.xml", "");
    Write("a\\b.xml", "<r/>");
    struct Row {
        const char *name, *reason;
    };
    std::vector<Row> rows = {
        {"absent.xml", "No such file"},
        {"broken.xml", "line 3: "},
        {"text.xml", "line 1: "},
        {"empty.xml", ""},
        {"", "a folder"},
    };
    if (test::kHasAnyNames) {
        rows.push_back({"a\\b.xml", "backslash"});
    }
    if (test::MakePipe(Native("pipe.xml"))) {
        rows.push_back({"pipe.xml", "not a regular"});
    }
    for (const Row& row : rows) {
        EXPECT_EQ(Listed(row.name), "") << row.name;
        EXPECT_TRUE(files_.refused) << row.name;
        EXPECT_FALSE(files_.reason.empty()) << row.name;
        EXPECT_NE(files_.reason.find(row.reason), std::string::npos) << files_.reason;
        EXPECT_EQ(files_.reason.find('\n'), std::string::npos) << row.name;
    }
}

TEST_F(DocumentLister, MalformedTopicsAreListedWithTheirReferences) {
    Write("m.ditamap", "<map><topicref href='t.dita'/><topicref href='gone.dita'/></map>");
    Write("t.dita", "<topic><image href='i.png'/><p></topic>");
    EXPECT_EQ(Listed("m.ditamap"), "m.ditamap\nt.dita\n*i.png\ngone.dita\n");
}

TEST_F(DocumentLister, DitaIsRecognised) {
    const struct {
        const char* content;
        bool dita;
    } rows[] = {
        {"<concept id='c'/>", true},
        {"<machine class='- topic/topic task/task m/machine '/>", true},
        {"<!DOCTYPE x PUBLIC '-//OASIS//DTD DITA Composite//EN' 'x.dtd'><x/>", true},
        {"<t a:DITAArchVersion='1.2' xmlns:a='http://dita.oasis-open.org/architecture/2005/'/>", true},
        {"<book/>", false},
        {"<task xmlns='urn:other'/>", false},
    };
    for (const auto& row : rows) {
        Write("d.xml", row.content);
        EXPECT_EQ(ListDocumentFiles({Native("d.xml")}).dita, row.dita) << row.content;
    }
}

TEST_F(DocumentLister, TextFromOutsideTheDocumentsAreaIsRefused) {
    const test::TestFolder elsewhere;
    const std::string secret = elsewhere.Write("secret.xml", "<s/>");
    Write("docs/shared/ok.xml", "<p/>");
    Write("docs/guide/d.xml", "");
    test::MakeLink(secret, Native("docs/guide/link.xml"));
    const std::string include = "<b xmlns:xi='http://www.w3.org/2001/XInclude'>\n";
    const struct {
        const char* what;
        std::string content;
        int line;  ///< Of the refused reference; 0 if the document is accepted.
    } rows[] = {
        {"an entity", "<!DOCTYPE b [\n<!ENTITY e SYSTEM '" + secret + "'>]><b/>", 2},
        {"an entity by a file URL", "<!DOCTYPE b [<!ENTITY e SYSTEM '" + FileUri({secret}) + "'>]><b/>", 1},
        {"an entity through a link", "<!DOCTYPE b [<!ENTITY e SYSTEM 'link.xml'>]><b/>",
         test::kHasLinks ? 1 : 0},
        {"an entity above the document", "<!DOCTYPE b [<!ENTITY e SYSTEM '../shared/ok.xml'>]><b/>", 1},
        {"an inclusion as text", include + "<xi:include parse='text' href='" + secret + "'/></b>", 2},
        {"an entity that the references reach",
         "<!DOCTYPE b [<!ENTITY e SYSTEM '../shared/ok.xml'>]><b fileref='../shared/a.png'/>", 0},
        {"an entity below", "<!DOCTYPE b [<!ENTITY e SYSTEM 'sub/e.xml'>]><b/>", 0},
        {"references up to the root do not widen the area",
         "<!DOCTYPE b [<!ENTITY e SYSTEM '" + secret + "'>]><b fileref='../../../../../../a.png'/>", 1},
        {"an absolute reference does not widen it",
         "<!DOCTYPE b [<!ENTITY e SYSTEM '" + secret + "'>]><b fileref='" + elsewhere.Native("a.png") + "'/>",
         1},
        {"a DTD",
         "<!DOCTYPE b SYSTEM '" + elsewhere.Native("b.dtd") + "' [<!ENTITY % p SYSTEM '" +
             elsewhere.Native("p.ent") + "'>]><b/>",
         0},
    };
    for (const auto& row : rows) {
        const NativePath document{Write("docs/guide/d.xml", row.content)};
        const DocumentFiles files = ListDocumentFiles(document);
        EXPECT_EQ(files.refused, row.line > 0) << row.what << ": " << files.reason;
        const std::string place = document.utf8 + ", line " + std::to_string(row.line) + ": ";
        EXPECT_EQ(files.reason.starts_with(place), row.line > 0) << row.what << ": " << files.reason;
        EXPECT_EQ(files.reason.find("--allow-read") != std::string::npos, row.line > 0) << row.what;
        EXPECT_FALSE(ListDocumentFiles(document, {{elsewhere.Native()}, {Native("docs/shared")}}).refused)
            << row.what;
    }
}

TEST_F(DocumentLister, DocumentsBeyondTheLimitsAreRefused) {
    const auto nested = [](int levels) {
        return test::Repeated("<a>", levels) + test::Repeated("</a>", levels);
    };
    const auto withAttributes = [](int count) {
        std::string tag = "<a";
        for (int i = 0; i < count; ++i) {
            tag += " a" + std::to_string(i) + "='x = \"y\"'";
        }
        return tag + "/>";
    };
    std::string parameters = "<!ENTITY % a0 '<!-- -->'>";
    std::string entities = "<!ENTITY a0 'xxxxxxxxxx'>";
    for (int i = 1; i < 30; ++i) {
        const std::string name = "a" + std::to_string(i), former = "a" + std::to_string(i - 1);
        parameters.append("<!ENTITY % ").append(name).append(" '&#37;").append(former).append(";&#37;");
        parameters.append(former).append(";'>");
        entities.append("<!ENTITY ").append(name).append(" '&").append(former).append(";&");
        entities.append(former).append(";'>");
    }
    const struct {
        const char* what;
        std::string content;
        const char* limit;  ///< Null if the document is accepted.
    } rows[] = {
        {"300 levels", nested(300), nullptr},
        {"1,000 levels", nested(1'000), nullptr},
        {"1,001 levels", nested(1'001), "1000 levels"},
        {"a text node of 11 MB", "<a>" + std::string(11'000'000, 'x') + "</a>", nullptr},
        {"1,000 attributes", withAttributes(1'000), nullptr},
        {"100,000 attributes", withAttributes(100'000), "1000 attributes"},
        {"attributes in a comment", "<a><!-- " + withAttributes(1'001).substr(2) + " --></a>", nullptr},
        {"parameter entities", "<!DOCTYPE a [" + parameters + "%a29;]>\n<a/>", "64000000 bytes"},
        {"entities", "<!DOCTYPE a [" + entities + "]>\n<a>&a29;</a>", "64000000 bytes"},
        {"entities in an attribute", "<!DOCTYPE a [" + entities + "]>\n<a b='&a29;'/>", "64000000 bytes"},
    };
    for (const auto& row : rows) {
        Write("d.xml", row.content);
        Write("m.xml", "<map><topicref href='d.xml'/></map>");
        for (const char* name : {"d.xml", "m.xml"}) {
            const DocumentFiles files = ListDocumentFiles({Native(name)});
            EXPECT_EQ(files.refused, row.limit != nullptr) << row.what << ": " << files.reason;
            EXPECT_NE(files.reason.find(row.limit == nullptr ? "" : row.limit), std::string::npos)
                << row.what << ": " << files.reason;
            EXPECT_EQ(files.reason.find("line ") != std::string::npos, row.limit != nullptr) << row.what;
        }
    }
}

TEST_F(DocumentLister, PipesAndDevicesAreNotOpened) {
    std::vector<std::string> files = {Native()};
    if (test::MakePipe(Native("pipe"))) {
        files.insert(files.end(), {Native("pipe"), "/dev/zero"});
    }
    for (const std::string& file : files) {
        Write("d.xml", "<!DOCTYPE d SYSTEM '" + file + "'>\n<d>&undeclared;</d>");
        EXPECT_FALSE(ListDocumentFiles({Native("d.xml")}).refused) << file;
        Write("d.xml", "<map><topicref href='" + file + "' format='dita'/></map>");
        EXPECT_FALSE(ListDocumentFiles({Native("d.xml")}).refused) << file;
        EXPECT_TRUE(ListDocumentFiles({file}).refused) << file;
    }
}

TEST_F(DocumentLister, ColonInTheNameIsRefused) {
    EXPECT_TRUE(ListDocumentFiles({Write("a:b.dita", "<topic/>")}).refused);
    EXPECT_FALSE(ListDocumentFiles({Write("a:b/c.dita", "<topic/>")}).refused);
}

}  // namespace
}  // namespace ventrix::desk
