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

/// What both toolkits make of a source element, whatever is around it. Their links to footnotes differ.
constexpr const char* kComparedElements[] = {
    "h1",
    "h2",
    "p",
    "pre",
    "dt",
    "dd",
    "th",
    "td",
    "li[not(ancestor::div[contains(@class, 'related-links')])]",
    "caption",
    "span[contains(@class, 'figcap')]",
    "div[contains(@class, 'note')]",
    "div[@class = 'fn']",
    "area",
    "img",
    "a[@href and not(starts-with(@href, '#fn'))]",
};

/// The elements in this part of a page as "TEXT|TAGS|PLACES", without whitespace, sorted: the toolkits order
/// the links of a page differently.
Texts TaggedTexts(const std::string& page, const std::string& elements) {
    Texts texts;
    for (int i = 1;; ++i) {
        const std::string node = "(" + elements + ")[" + std::to_string(i) + "]";
        if (Found(page, node).empty()) {
            std::ranges::sort(texts);
            return texts;
        }
        const std::string tags = "(" + node + "/descendant-or-self::*/@data-twtags)[1]";
        std::string text = Found(page, "concat(" + node + ", '|', " + tags + ", '|')").front();
        for (const char* place : {"@href", "@src", "self::img/@alt", "@shape", "@coords"}) {
            text += Found(page, "string(" + node + "/" + place + ")").front();
        }
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; });
        texts.push_back(std::move(text));
    }
}

std::string WithoutNamespace(std::string page) {
    const std::string declaration = " xmlns=\"http://www.w3.org/1999/xhtml\"";
    if (const std::size_t at = page.find(declaration); at != std::string::npos) {
        page.erase(at, declaration.size());
    }
    return page;
}

/// The map uses what the built-in toolkit handles, as far as the installed one knows it: not what DITA 1.3
/// adds (troubleshooting, the names of XML), nor what it shows in another way (quotes, lines, the lines of
/// samples).
TEST_F(ForeignTransformation, TheBuiltInToolkitGivesTheTextAndTheTagsOfTheInstalledOne) {
    if (!fs::exists("/usr/share/dita-ot/build.xml") || desk::FindProgram("ant").Empty()) {
        GTEST_SKIP() << "the package dita-ot or ant is not installed";
    }
    fs::copy(fs::path(VENTRIX_END_TO_END_FOLDER) / "whole-map", drives_.Native(R"(C:\src)"),
             fs::copy_options::recursive);
    const std::string options =
        R"(-useDITAOT -attributes audience,product,platform,otherprops -elements uicontrol )"
        R"(-ditaval C:\src\filter.ditaval)";
    const auto ours = Publish("builtin", R"(C:\src\book.ditamap)", options);
    EXPECT_TRUE(record_.findings.empty()) << record_.findings.front().text;
    const auto theirs = Publish("installed", R"(C:\src\book.ditamap)", options);
    EXPECT_FALSE(ours.contains("expert.html"));
    for (const auto& [name, page] : theirs) {
        ASSERT_TRUE(ours.contains(name)) << name;
        for (const std::string element : kComparedElements) {
            if (name == "index.html" && !element.starts_with("a[")) {
                continue;  // The contents; only ours have a heading.
            }
            EXPECT_EQ(TaggedTexts(WithoutNamespace(ours.at(name)), "//main//" + element),
                      TaggedTexts(WithoutNamespace(page), "//body//" + element))
                << name << " " << element;
        }
    }
    EXPECT_EQ(ours.size(), theirs.size());
    const Texts paragraphs = TaggedTexts(WithoutNamespace(ours.at("words.html")), "//main//p");
    EXPECT_EQ(std::ranges::count(paragraphs, "TheP40andOKinFile>Save.|audienceQL_SEPuserQL_SEP|"), 1)
        << paragraphs.front();
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
