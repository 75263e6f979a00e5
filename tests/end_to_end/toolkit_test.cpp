// The module as it is shipped, with transformations of other projects: the DITA Open Toolkit, compared with
// our own stylesheet, and the DocBook stylesheets.
#include <algorithm>

#include "desk/toolkit/run_program.h"
#include "end_to_end/publishing.h"

namespace ventrix {
namespace {

namespace fs = std::filesystem;

using test::Found;
using test::Texts;
using ForeignTransformation = test::Publishing;

/// The tags of each p of a page; "-" if it has none.
Texts TagsOfParagraphs(const std::string& page) {
    Texts tags;
    for (int i = 1;; ++i) {
        const std::string p = "(//*[local-name()='p'])[" + std::to_string(i) + "]";
        if (Found(page, p).empty()) {
            return tags;
        }
        const Texts value = Found(page, p + "/@data-twtags");
        tags.push_back(value.empty() ? "-" : value.front());
    }
}

TEST_F(ForeignTransformation, OurStylesheetAndTheToolkitTagTheSameParagraphs) {
    if (!fs::exists("/usr/share/dita-ot/build.xml") || desk::FindProgram("ant").Empty()) {
        GTEST_SKIP() << "the package dita-ot or ant is not installed";
    }
    CopyExamples();
    const std::string document = R"(C:\src\pump-guide\pump-guide.ditamap)";
    const std::string options =
        "-useDITAOT -attributes audience,product,platform -elements uicontrol -addXpath -addSourcePath "
        "section";
    for (const std::string& filter :
         {std::string(), std::string(R"( -ditaval C:\src\pump-guide\web.ditaval)")}) {
        const auto ours = Publish("builtin", document, options + filter);
        const auto theirs = Publish("installed", document, options + filter);
        EXPECT_GE(ours.size(), filter.empty() ? 13U : 12U);
        std::size_t tagged = 0;
        for (const auto& [name, page] : theirs) {
            ExpectNoMarkerWord(name, page);
            ASSERT_TRUE(ours.contains(name)) << name;
            const Texts tags = TagsOfParagraphs(ours.at(name));
            EXPECT_EQ(tags, TagsOfParagraphs(page)) << name << filter;
            tagged += static_cast<std::size_t>(
                std::count_if(tags.begin(), tags.end(), [](const std::string& t) { return t != "-"; }));
        }
        for (const auto& [name, page] : ours) {
            ExpectNoMarkerWord(name, page);
            EXPECT_TRUE(theirs.contains(name)) << name;
        }
        EXPECT_GT(tagged, 20U);
    }
}

constexpr const char* kMap = R"(<!DOCTYPE map PUBLIC "-//OASIS//DTD DITA Map//EN" "map.dtd">
<map><title>All</title>
<topicref href="one.dita"><topicref href="two.dita" locktitle="yes" navtitle="Second"/></topicref>
<topichead navtitle="Head"><topicref href="three.dita"/></topichead>
<topicref href="left-out.dita" audience="expert"/>
<topicref keys="name" processing-role="resource-only"><topicmeta><keywords><keyword>P40</keyword></keywords></topicmeta></topicref>
<topicref keys="lib" href="lib.dita" processing-role="resource-only" toc="no"/>
<reltable><relrow><relcell><topicref href="one.dita"/></relcell><relcell><topicref href="three.dita"/></relcell></relrow></reltable>
</map>)";

constexpr const char* kOne = R"(<!DOCTYPE topic PUBLIC "-//OASIS//DTD DITA Topic//EN" "topic.dtd">
<topic id="one"><title>One</title><shortdesc audience="user">About one.</shortdesc><body>
<p audience="user">The <keyword keyref="name"/> and <uicontrol>OK</uicontrol>.</p>
<p conref="lib.dita#lib/p"/><note conkeyref="lib/n"/><p audience="expert">secret</p>
<codeblock>run <coderef href="sample.txt"/></codeblock>
<dl><dlentry id="d" product="X"><dt>term</dt><dd>meaning</dd></dlentry></dl>
<ol><li id="first" platform="web">first</li><li>second <xref href="two.dita"/></li></ol>
<table><title>Values</title><tgroup cols="1"><tbody><row product="Y"><entry>cell</entry></row></tbody></tgroup></table>
</body></topic>)";

/// The texts of an element of a page, without differences in whitespace, each with its tags.
Texts TaggedTexts(const std::string& page, const std::string& element) {
    Texts texts;
    for (int i = 1;; ++i) {
        const std::string node = "(//*[local-name()='" + element + "'])[" + std::to_string(i) + "]";
        if (Found(page, node).empty()) {
            return texts;
        }
        const Texts tags = Found(page, node + "/@data-twtags");
        texts.push_back(Found(page, "normalize-space(" + node + ")").front() + "|" +
                        (tags.empty() ? "" : tags.front()));
    }
}

TEST_F(ForeignTransformation, TheBuiltInToolkitGivesTheTextAndTheTagsOfTheInstalledOne) {
    if (!fs::exists("/usr/share/dita-ot/build.xml") || desk::FindProgram("ant").Empty()) {
        GTEST_SKIP() << "the package dita-ot or ant is not installed";
    }
    const std::string doctype = R"(<!DOCTYPE topic PUBLIC "-//OASIS//DTD DITA Topic//EN" "topic.dtd">)";
    drives_.Write(R"(C:\src\m.ditamap)", kMap);
    drives_.Write(R"(C:\src\one.dita)", kOne);
    drives_.Write(R"(C:\src\sample.txt)", "line <1>");
    drives_.Write(R"(C:\src\lib.dita)",
                  doctype + R"(<topic id="lib"><title>Lib</title><body><p id="p" product="Z">)"
                            R"(reused</p><note id="n">Hot!</note></body></topic>)");
    for (const char* name : {"two", "three", "left-out"}) {
        drives_.Write(std::string(R"(C:\src\)") + name + ".dita",
                      doctype + "<topic id=\"t\"><title>" + name +
                          "</title><body><p otherprops=\"a b\">text</p>"
                          "</body></topic>");
    }
    drives_.Write(R"(C:\f.ditaval)", "<val><prop att=\"audience\" val=\"expert\" action=\"exclude\"/></val>");
    const std::string options =
        R"(-useDITAOT -attributes audience,product,platform,otherprops -elements uicontrol )"
        R"(-ditaval C:\f.ditaval)";
    const auto ours = Publish("builtin", R"(C:\src\m.ditamap)", options);
    EXPECT_TRUE(record_.findings.empty()) << record_.findings.front().text;
    const auto theirs = Publish("installed", R"(C:\src\m.ditamap)", options);
    for (const auto& [name, page] : theirs) {
        ASSERT_TRUE(ours.contains(name)) << name;
        if (name == "index.html") {
            continue;  // The installed toolkit shows the map's title in the window only.
        }
        for (const char* element : {"p", "pre", "dt", "dd", "td", "h1"}) {
            EXPECT_EQ(TaggedTexts(ours.at(name), element), TaggedTexts(page, element))
                << name << " " << element;
        }
    }
    EXPECT_EQ(ours.size(), theirs.size());
    EXPECT_EQ(TaggedTexts(ours.at("one.html"), "p").at(1), "The P40 and OK.|audienceQL_SEPuserQL_SEP");
}

TEST_F(ForeignTransformation, DocBookStylesheetsPreserveTags) {
    const std::string stylesheet =
        test::kDriveZ + "/usr/share/xml/docbook/stylesheet/docbook-xsl/xhtml/docbook.xsl";
    if (!fs::exists(stylesheet)) {
        GTEST_SKIP() << "the package docbook-xsl is not installed";
    }
    CopyExamples();
    const auto system = platform::ToSystem(stylesheet);
    ASSERT_TRUE(system.has_value());
    const auto pages = Publish("builtin", R"(C:\src\docbook\book.xml)",
                               "-useXSLT \"" + *system + "\" -attributes audience,os -addXpath");
    ASSERT_TRUE(pages.contains("book.html")) << record_.reason;
    const std::string& page = pages.at("book.html");
    ExpectNoMarkerWord("book.html", page);
    const Texts expert = Found(page, "//*[local-name()='p'][contains(., 'flow rate')]/@data-twtags");
    EXPECT_EQ(expert, Texts{"audienceQL_SEPexpertQL_SEPdata-qlxpathQL_SEP/book/chapter/para[2]QL_SEP"});
}

}  // namespace
}  // namespace ventrix
