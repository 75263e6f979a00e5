// The module as it is shipped, loaded by the desk host, with real clients and stylesheets. Each folder beside
// this file is one publication: its sources, and the expected content of the output folder.
#include "end_to_end/publishing.h"

namespace ventrix {
namespace {

class EndToEnd : public test::Publishing {
  protected:
    void ExpectOutput(const char* name, const std::string& document, const std::string& options) {
        const auto folder = std::filesystem::path(VENTRIX_END_TO_END_FOLDER) / name;
        const auto all = std::filesystem::copy_options::recursive;
        std::filesystem::copy(folder / "source", drives_.Native(R"(C:\src)"), all);
        std::filesystem::copy(folder / "expected", drives_.Native(R"(C:\expected)"), all);
        Publish("builtin", document, options);
        const std::string log = drives_.Read(R"(C:\log.txt)");
        EXPECT_EQ(log.find("Fehler:"), std::string::npos) << log;
        EXPECT_EQ(drives_.Tree(R"(C:\out\)"), drives_.Tree(R"(C:\expected\)"));
        for (const std::string& file : drives_.Tree(R"(C:\expected\)")) {
            // A build log contains times and paths of the machine; the style may change at any time.
            if (!file.ends_with('\\') && !file.ends_with("buildlog-xhtml.txt") &&
                file.find(R"(\ventrix-style\)") == std::string::npos) {
                EXPECT_EQ(drives_.Read(R"(C:\out\)" + file), drives_.Read(R"(C:\expected\)" + file)) << file;
            }
        }
    }
};

TEST_F(EndToEnd, WorkedExampleIsPublished) {
    ExpectOutput("worked-example", R"(C:\src\press.dita)",
                 R"(-useXSLT C:\src\page.xsl -attributes audience -elements uicontrol -addXpath)");
    EXPECT_EQ(resultFolder_, drives_.Seen(R"(C:\out\)"));
}

TEST_F(EndToEnd, SmallMapIsPublished) {
    ExpectOutput("small-map", R"(C:\src\maps\guide.ditamap)",
                 "-useDITAOT -attributes audience,product,platform -elements uicontrol,term "
                 "-addSourcePath p -sourcePathAttr data-from");
    EXPECT_EQ(resultFolder_, drives_.Seen(R"(C:\out\build-guide.ditamap\\xhtml\maps\)"));
}

}  // namespace
}  // namespace ventrix
