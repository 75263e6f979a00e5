// Documents whose entities are declared in a DTD that only a catalog can locate.
#include "end_to_end/publishing.h"

namespace ventrix {
namespace {

using test::Found;
using DtdRecovery = test::Publishing;

constexpr const char* kText =
    R"(<topic id="t"><title>The &product;</title><body><p audience="&product; user">A&nbsp;B )"
    R"(<uicontrol>Press &product;</uicontrol> ok</p></body></topic>)";
constexpr const char* kStylesheet =
    R"(<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"><xsl:template match="/">)"
    R"(<html><body><h1><xsl:value-of select="//title"/></h1><p><xsl:value-of select="//p"/></p></body></html>)"
    R"(</xsl:template></xsl:stylesheet>)";

TEST_F(DtdRecovery, EntitiesOfACataloguedDtdReachThePage) {
    drives_.Write(R"(D:\dtd ü\acme x.dtd)", "<!ENTITY product 'P40'><!ENTITY nbsp '&#160;'>");
    drives_.Write(
        R"(D:\catalog.xml)",
        R"(<catalog xmlns="urn:oasis:names:tc:entity:xmlns:xml:catalog">)"
        R"(<public publicId="-//ACME//DTD Topic//EN" uri="dtd%20%C3%BC/acme%20x.dtd"/>)"
        R"(<public publicId="-//OASIS//DTD DITA Topic//EN" uri="dtd%20%C3%BC/acme%20x.dtd"/></catalog>)");
    drives_.Write(R"(C:\src\page.xsl)", kStylesheet);
    catalog_ = platform::ToNative(drives_.Seen(R"(D:\catalog.xml)"));
    const std::string prologs[] = {
        R"(<?xml version="1.0"?><!DOCTYPE topic PUBLIC "-//ACME//DTD Topic//EN" "http://acme.example/t.dtd">)",
        R"(<!DOCTYPE topic SYSTEM "http://elsewhere.example/topic.dtd" [<!ENTITY own "own">]>)",
        "",
    };
    for (const std::string& prolog : prologs) {
        for (const char* transformation : {"-useDITAOT", R"(-useXSLT C:\src\page.xsl)"}) {
            drives_.Write(R"(C:\src\t.dita)", prolog + kText);
            const auto pages =
                Publish("builtin", R"(C:\src\t.dita)",
                        std::string(transformation) + " -attributes audience -elements uicontrol");
            ASSERT_TRUE(pages.contains("t.html")) << prolog << transformation << record_.reason;
            const std::string& page = pages.at("t.html");
            ExpectNoMarkerWord("t.html", page);
            EXPECT_EQ(Found(page, "//*[local-name()='h1']"), test::Texts{"The P40"})
                << prolog << transformation;
            EXPECT_EQ(Found(page, "//*[local-name()='p']"), test::Texts{"A\u00a0B Press P40 ok"})
                << prolog << transformation;
            EXPECT_EQ(Found(page, "//*[local-name()='uicontrol']"), test::Texts{"Press P40"}) << prolog;
            EXPECT_EQ(Found(page, "//*[local-name()='p']/@data-twtags"),
                      test::Texts{"audienceQL_SEPP40 userQL_SEP"});
            EXPECT_EQ(drives_.Read(R"(C:\src\t.dita)"), prolog + kText);
        }
    }
}

TEST_F(DtdRecovery, WithoutADtdTheDocumentIsUnchanged) {
    drives_.Write(R"(D:\catalog.xml)",
                  R"(<catalog xmlns="urn:oasis:names:tc:entity:xmlns:xml:catalog">)"
                  R"(<public publicId="-//ACME//DTD Topic//EN" uri="gone.dtd"/></catalog>)");
    catalog_ = platform::ToNative(drives_.Seen(R"(D:\catalog.xml)"));
    const std::string document =
        std::string(R"(<!DOCTYPE topic PUBLIC "-//ACME//DTD Topic//EN" "http://acme.example/t.dtd">)") +
        kText;
    drives_.Write(R"(C:\src\t.dita)", document);
    const std::string script = test::ScriptFile(R"(C:\src\keep)");
    drives_.WriteScript(script, "copy $1 $1.kept\n");
    Publish("builtin", R"(C:\src\t.dita)", "-useDITAOT -attributes audience -usePreScript " + script);
    EXPECT_EQ(drives_.Read(R"(C:\out\t.dita.kept)"), document);
    EXPECT_NE(drives_.Read(R"(C:\log.txt)").find("undefined entity"), std::string::npos);
    EXPECT_FALSE(drives_.Exists(R"(C:\out\t.dita.ql.temp)"));
}

}  // namespace
}  // namespace ventrix
