// Loads that must fail and their reasons, the external DTD subset, and the limits on size and depth.
#include <chrono>

#include "markers/xml_fixture.h"

namespace ventrix::test {
namespace {

using XmlLoad = XmlTest;

TEST_F(XmlLoad, UndeclaredEntityFailsTheLoad) {
    const std::string doctypes[] = {
        "",
        "<!DOCTYPE a>",
        "<!DOCTYPE a SYSTEM 'missing.dtd'>",
        R"(<!DOCTYPE a PUBLIC "-//W3C//DTD XHTML 1.0 Transitional//EN" "http://www.w3.org/TR/xhtml1/DTD/x.dtd">)",
        "<!DOCTYPE a SYSTEM 'missing.dtd' [<!ENTITY % p SYSTEM 'missing.ent'> %p;]>",
        "<?xml version='1.0' standalone='no'?><!DOCTYPE a SYSTEM 'missing.dtd' [<!ENTITY e 'E'>]>",
    };
    for (const std::string& doctype : doctypes) {
        for (const char* content : {"<a>&nbsp;</a>", "<a b='x&nbsp;'/>", "<a b='&nbsp;'>&nbsp;</a>"}) {
            EXPECT_FALSE(Load(doctype + content)) << doctype << content;
            EXPECT_NE(reason.find("undefined entity"), std::string::npos) << reason;
            EXPECT_NE(reason.find("nbsp"), std::string::npos) << reason;
        }
    }
    const char* const hidden[] = {
        "<!DOCTYPE a SYSTEM 'm.dtd' [<!ENTITY e 'x&nbsp;'>]><a>&e;</a>",
        "<!DOCTYPE a SYSTEM 'm.dtd' [<!ENTITY e 'x&nbsp;'>]><a b='&e;'/>",
        "<!DOCTYPE a SYSTEM 'm.dtd' [<!ENTITY e '<b c=\"&nbsp;\"/>'>]><a>&e;</a>",
        "<!DOCTYPE a SYSTEM 'm.dtd' [<!ENTITY e '&f;'><!ENTITY f '&nbsp;'>]><a>&e;</a>",
        "<!DOCTYPE a SYSTEM 'm.dtd' [<!ATTLIST a b CDATA '&nbsp;'>]><a/>",
        "<!DOCTYPE a [<!ATTLIST a b CDATA '&late;'><!ENTITY late 'x'>]><a/>",
    };
    for (const char* document : hidden) {
        EXPECT_FALSE(Load(document)) << document;
        EXPECT_NE(reason.find("undefined entity"), std::string::npos) << document << reason;
    }
    EXPECT_TRUE(Load("<!DOCTYPE a SYSTEM 'm.dtd' [<!ENTITY e 'x&nbsp;'>]><a>unused</a>")) << reason;
}

TEST_F(XmlLoad, MalformedDocumentFailsWithAReason) {
    const char* const documents[] = {
        "",
        " ",
        "x",
        "<a>",
        "</a>",
        "<a></b>",
        "<a/><b/>",
        "<a/>x",
        "<a b=1/>",
        "<a b='<'/>",
        "<a b='1' b='2'/>",
        "<a>]]></a>",
        "<a>&#0;</a>",
        "<a>&#xFFFF;</a>",
        "<a>\x01</a>",
        "<a>&amp</a>",
        "<a><!-- -- --></a>",
        "<a><?xml version='1.0'?></a>",
        "<!DOCTYPE a [<!ENTITY e '<b>'>]><a>&e;</a>",
        "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>",
        "<!DOCTYPE a [<!ENTITY e '&#60;'>]><a b='&e;'/>",
        "<!DOCTYPE a [<!ENTITY e ']]>'>]><a b='&e;'>&e;</a>",
        "<!DOCTYPE a [<!ENTITY e SYSTEM 'x'>]><a b='&e;'/>",
        "<!DOCTYPE a [<!ENTITY e SYSTEM 'x' NDATA n>]><a>&e;</a>",
        "<!DOCTYPE a [",
        "<!DOCTYPE a [<!ELEMENT a (b>]><a/>",
    };
    for (const char* document : documents) {
        EXPECT_FALSE(Load(document)) << document;
        EXPECT_NE(reason, "") << document;
        EXPECT_EQ(reason.find("undefined entity"), std::string::npos) << document << reason;
    }
    Load("<a>\n  <b>\n</a>");
    EXPECT_NE(reason.find('3'), std::string::npos) << "does not name the line: " << reason;
}

TEST_F(XmlLoad, UnreadableFileFailsWithItsPath) {
    drives.MakeFolder(R"(C:\folder)");
    for (const char* path : {R"(C:\missing.xml)", R"(C:\folder)", R"(Q:\no\such\drive.xml)", ""}) {
        const auto document = xml::CreateDocument();
        EXPECT_FALSE(document->load(path)) << path;
        EXPECT_NE(document->get_parseError().get_reason().find(path), std::string::npos);
        EXPECT_FALSE(document->get_documentElement());
    }
}

TEST_F(XmlLoad, LaterLoadReplacesAnEarlierOne) {
    const auto document = xml::CreateDocument();
    EXPECT_TRUE(document->loadXML("<a>1</a>"));
    EXPECT_TRUE(document->loadXML("<b>2</b>"));
    EXPECT_EQ(Saved(*document), "<b>2</b>");
    EXPECT_FALSE(document->loadXML("<c>"));
    EXPECT_FALSE(document->get_documentElement());
}

/// A system id, and whether it leads to a DTD that is read.
struct SystemId {
    std::string id;
    bool read;
};

TEST_F(XmlLoad, ReadsTheExternalDtdFromALocalFileOnly) {
    drives.Write(R"(C:\dtd\x.dtd)",
                 "<!ENTITY % more SYSTEM 'parts/more.ent'>%more;\n<!ENTITY nbsp '&#160;'>"
                 "<!ATTLIST a d CDATA 'from the DTD' t NMTOKENS #IMPLIED>");
    drives.Write(R"(C:\dtd\parts\more.ent)", "<!ENTITY more 'M'>");
    drives.Write(R"(C:\docs\my dtd\x.dtd)",
                 "<!ENTITY nbsp ' '><!ENTITY more 'M'><!ATTLIST a d CDATA 'from the DTD'>");
    const std::string native = platform::Utf8FromPath(drives.Native(R"(C:\dtd\x.dtd)"));
    const std::string inUrl = native.starts_with('/') ? native : '/' + native;
    const SystemId ids[] = {
        {R"(C:\dtd\x.dtd)", true},
        {R"(c:\dtd\x.dtd)", true},
        {native, true},
        {"file://" + inUrl, true},
        {"file://localhost" + inUrl, true},
        {"file:///C:/dtd/x.dtd", true},
        {"../dtd/x.dtd", true},
        {R"(..\dtd\x.dtd)", true},
        {"my dtd/x.dtd", true},
        {"my%20dtd/x.dtd", true},
        {"missing.dtd", false},
        {"http://localhost/x.dtd", false},
        {"ftp://localhost/x.dtd", false},
        {"file://elsewhere" + inUrl, false},
    };
    for (const SystemId& id : ids) {
        const std::string document = "<!DOCTYPE a SYSTEM '" + id.id + "'><a t=' 1  2 '>&nbsp;&more;</a>";
        EXPECT_FALSE(Load(document, false)) << id.id;
        EXPECT_NE(reason.find("undefined entity"), std::string::npos) << reason;
        const auto loaded = Load(document, true);
        ASSERT_EQ(bool(loaded), id.read) << id.id << ": " << reason;
        if (loaded) {
            EXPECT_EQ(Outline(loaded->get_documentElement()), "5 5");
            EXPECT_NE(AttributesOf(loaded->get_documentElement()).find("d=from the DTD"), std::string::npos);
            EXPECT_EQ(Saved(*loaded), document);
        } else {
            EXPECT_NE(reason.find("undefined entity"), std::string::npos) << reason;
        }
    }
}

TEST_F(XmlLoad, DoesNotReadExternalEntities) {
    drives.Write(R"(C:\docs\secret.txt)", "secret");
    const std::string document = "<!DOCTYPE a [<!ENTITY e SYSTEM 'secret.txt'>]><a>&e;</a>";
    for (const bool resolveExternals : {false, true}) {
        const auto loaded = Load(document, resolveExternals);
        ASSERT_TRUE(loaded) << reason;
        EXPECT_EQ(Outline(loaded->get_documentElement()), "5");
        EXPECT_EQ(Saved(*loaded), document);
    }
}

std::string Repeated(std::string_view text, std::size_t count) {
    std::string repeated;
    for (std::size_t i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

std::string Bomb(const std::string& use) {
    std::string document = "<!DOCTYPE a [<!ENTITY e0 'ha'>";
    for (int i = 1; i <= 12; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ";";
        document += "<!ENTITY e" + std::to_string(i) + " '" + Repeated(inner, 10) + "'>";
    }
    return document + "]>" + use;
}

TEST_F(XmlLoad, EntityBombFailsQuickly) {
    const auto start = std::chrono::steady_clock::now();
    for (const char* use : {"<a>&e12;</a>", "<a b='&e12;'/>"}) {
        EXPECT_FALSE(Load(Bomb(use))) << use;
        EXPECT_EQ(reason.find("undefined entity"), std::string::npos) << reason;
    }
    EXPECT_FALSE(Load("<!DOCTYPE a [<!ENTITY e '" + Repeated("x", 100000) + "'>]><a>" +
                      Repeated("<b c='&e;'/>", 20000) + "</a>"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    EXPECT_TRUE(
        Load("<!DOCTYPE a [<!ENTITY e 'Pump 2000'>]><a>" + Repeated("<b c='&e;'>&e;</b>", 20000) + "</a>"))
        << reason;
}

TEST_F(XmlLoad, NameOf65536BytesFails) {
    const std::string name(65536, 'x');
    EXPECT_FALSE(Load("<a id" + name + "='1'/>"));
    EXPECT_FALSE(Load("<a" + name + "/>"));
    EXPECT_TRUE(Load("<a " + name.substr(1) + "='1'/>")) << reason;
}

TEST_F(XmlLoad, DeepDocumentLoadsAndSaves) {
    constexpr std::size_t kLevels = 200000;
    const std::string document = Repeated("<a>", kLevels) + "x" + Repeated("</a>", kLevels);
    const auto loaded = Load(document);
    ASSERT_TRUE(loaded) << reason;
    EXPECT_EQ(Saved(*loaded), document);
    EXPECT_EQ(loaded->get_documentElement().get_xml(), document);
    const auto found = loaded->selectNodes("//a[text()]");
    ASSERT_TRUE(found && found->get_length() == 1);
    found->get_item(0).get_firstChild().put_text("y");
    EXPECT_EQ(Saved(*loaded)[3 * kLevels], 'y');
    EXPECT_FALSE(Load(Repeated("<a>", kLevels)));
}

TEST_F(XmlLoad, SaveToAnInvalidPathFails) {
    const auto document = Load("<a/>");
    drives.MakeFolder(R"(C:\folder)");
    EXPECT_FALSE(document->save(R"(C:\folder)"));
    EXPECT_FALSE(document->save(R"(C:\missing\x.xml)"));
    EXPECT_TRUE(document->save(R"(C:\new.xml)"));
    EXPECT_EQ(drives.Read(R"(C:\new.xml)"), "<a/>");
}

}  // namespace
}  // namespace ventrix::test
