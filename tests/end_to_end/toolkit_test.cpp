// Transformations that nobody here wrote, behind the module as it is shipped: the DITA Open Toolkit beside
// our own stylesheet, and the DocBook stylesheets.
#include <gtest/gtest.h>
#include <libxml/xpath.h>

#include <map>

#include "desk/clients/dita_ot_client.h"
#include "desk/clients/run_program.h"
#include "desk/clients/xslt_client.h"
#include "desk/documents/xml_handles.h"
#include "desk/host/desk_host.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

namespace fs = std::filesystem;

constexpr const char* markerWords[] = {"QL_START", "QL_END",  "QL_EQ",     "QL_TARGET", "QL_SEP",
                                       "QL_SA_S",  "QL_SA_E", "QL_ELEM_S", "QL_ELEM_E"};

using Texts = std::vector<std::string>;

/// The string value of each node that an XPath finds in a page.
Texts Found(const std::string& page, const std::string& xpath) {
    const desk::XmlDocument document(
        xmlReadMemory(page.data(), static_cast<int>(page.size()), "page", nullptr, XML_PARSE_NONET));
    Texts texts;
    if (document == nullptr) {
        ADD_FAILURE() << "not well-formed: " << page.substr(0, 200);
        return texts;
    }
    xmlXPathContext* context = xmlXPathNewContext(document.get());
    xmlXPathObject* value = xmlXPathEvalExpression(desk::Xml(xpath.c_str()), context);
    const xmlNodeSet* nodes = value->nodesetval;
    for (int i = 0; nodes != nullptr && i < nodes->nodeNr; ++i) {
        const desk::XmlText text(xmlXPathCastNodeToString(nodes->nodeTab[i]));
        texts.emplace_back(desk::View(text.get()));
    }
    xmlXPathFreeObject(value);
    xmlXPathFreeContext(context);
    return texts;
}

/// For each p of a page its tags; "-" for one that has none.
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

class ForeignTransformation : public testing::Test {
  protected:
    /// Publishes a document on drive C: and gives its pages by their place below the result folder.
    std::map<std::string, std::string> Publish(const std::string& toolkit, const std::string& document,
                                               const std::string& options) {
        record_ = {};
        desk::DeskHost host({.installationFolder = VENTRIX_DATA_FOLDER, .console = {}, .clientCalled = {}});
        host.AddClient("QlXSLT", desk::MakeXsltClient(record_));
        host.AddClient("Dita OT", desk::MakeDitaOtClient({toolkit, VENTRIX_DATA_FOLDER}, record_));
        EXPECT_EQ(host.LoadModule(VENTRIX_MODULE), "");
        const auto id =
            host.AddDocument(document, desk::ListDocumentFiles(drives_.Native(document).string()));
        const std::string arguments = " -docId " + std::to_string(id) + R"( -logFile C:\log.txt )";
        host.CallModule("Validate" + arguments);
        const auto reply = host.CallModule("Publish" + arguments + R"(-outputFolder C:\out\ )" + options);
        EXPECT_EQ(record_.failed, 0) << record_.reason;
        std::map<std::string, std::string> pages;
        if (!reply || reply->size() != 3) {
            ADD_FAILURE() << "no reply";
            return pages;
        }
        const fs::path folder = drives_.Native(std::get<std::string>((*reply)[1]));
        for (const auto& entry : fs::recursive_directory_iterator(drives_.Native(R"(C:\out\)"))) {
            if (entry.path().extension() == ".html") {
                pages[entry.path().lexically_relative(folder).string()] = ReadNative(entry.path());
            }
        }
        return pages;
    }
    static std::string ReadNative(const fs::path& path) {
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        return content.str();
    }
    void CopyExamples() {
        fs::copy(VENTRIX_EXAMPLES_FOLDER, drives_.Native(R"(C:\src)"), fs::copy_options::recursive);
    }
    static void ExpectNoMarkerWord(const std::string& name, const std::string& page) {
        for (const std::string& text : Found(page, "//text()")) {
            for (const char* word : markerWords) {
                EXPECT_EQ(text.find(word), std::string::npos) << name << ": " << text;
            }
        }
    }
    test::TestDrives drives_;
    desk::TransformationRecord record_;
};

TEST_F(ForeignTransformation, OurStylesheetAndTheToolkitTagTheSameParagraphs) {
    if (!fs::exists("/usr/share/dita-ot/build.xml") || desk::FindProgram("ant").empty()) {
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

TEST_F(ForeignTransformation, DocBookStylesheetsKeepWhatWasCarried) {
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
