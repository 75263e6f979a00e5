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

TEST_F(ForeignTransformation, DocBookStylesheetsPreserveTags) {
    const std::string stylesheet = "/usr/share/xml/docbook/stylesheet/docbook-xsl/xhtml/docbook.xsl";
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
