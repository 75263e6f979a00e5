#include <cstdlib>

#include "desk/dita_fixture.h"
#include "desk/toolkit/run_program.h"

namespace ventrix::desk {
namespace {

/// Runs the machine's own toolkit, or programs in its place that fail in the ways a toolkit can.
class ToolkitClient : public DitaClient {
  protected:
    static bool Installed() {
        return std::filesystem::exists("/usr/share/dita-ot/build.xml") && !FindProgram("ant").Empty();
    }
};

TEST_F(ToolkitClient, FoldersMayContainSpacesAndUmlauts) {
    if (!Installed()) {
        GTEST_SKIP() << "the package dita-ot or ant is not installed";
    }
    toolkit_ = "installed";
    const std::string doctype = "<!DOCTYPE topic PUBLIC \"-//OASIS//DTD DITA Topic//EN\" \"topic.dtd\">";
    Write("in ü b/m ä.ditamap",
          "<!DOCTYPE map PUBLIC \"-//OASIS//DTD DITA Map//EN\" \"map.dtd\">"
          "<map title='M'><topicref href='t%20%C3%A4.dita'/><topicref href='../up/u.dita'/></map>");
    Write("in ü b/t ä.dita", doctype +
                                 "<topic id='t'><title>T</title><body><p>ü \U0001d444</p>"
                                 "<p audience='expert'>x</p></body></topic>");
    Write("up/u.dita", doctype + "<topic id='u'><title>U</title><body><p>u</p></body></topic>");
    Write("f ä.ditaval", "<val><prop att='audience' val='expert' action='exclude'/></val>");
    EXPECT_EQ(Run("in ü b/m ä.ditamap", "f ä.ditaval"), 0) << record_.reason << Log();
    EXPECT_EQ(Query("in ü b/t ä.html", "concat(count(//p), //p)"), "1ü \U0001d444");
    EXPECT_EQ(Query("up/u.html", "//p"), "u");
    EXPECT_EQ(Query("in ü b/index.html", "count(//a)"), "2");
    EXPECT_NE(Log().find("BUILD SUCCESSFUL"), std::string::npos);
}

TEST_F(ToolkitClient, FailuresGiveTheirReason) {
    if (FindProgram("ant").Empty()) {
        GTEST_SKIP() << "the package ant is not installed";
    }
    Write("t.dita", "<topic id='t'><title>T</title></topic>");
    WriteProgram("halfway/bin/dita",
                 "#!/bin/sh\nfor a; do case $a in --output=*) out=${a#--output=};; esac; done\n"
                 "mkdir -p \"$out\"; echo half > \"$out/half.html\"\n"
                 "echo '[FATAL] no more'; exit 3\n");
    WriteProgram("nothing/bin/dita", "#!/bin/sh\ncat\n");
    WriteProgram("strange/bin/dita", "#!/no/such/interpreter\n");
    Write("broken/build.xml",
          "<project default='d'><target name='d'><fail message='out of luck'/></target></project>");
    const struct {
        const char *folder, *reason, *page;
    } rows[] = {
        {"absent", "contains no DITA Open Toolkit", ""},
        {"halfway", "failed with exit status 3: [FATAL] no more", "half\n"},
        {"nothing", "wrote no page", ""},
        {"strange", "cannot be started", ""},
        {"broken", "out of luck", ""},
    };
    for (const auto& row : rows) {
        toolkit_ = Native(row.folder);
        std::filesystem::remove_all(Native("out"));
        EXPECT_EQ(Run("t.dita"), 1) << row.folder;
        EXPECT_NE(record_.reason.find(row.reason), std::string::npos) << record_.reason;
        EXPECT_EQ(record_.reason.find('\n'), std::string::npos);
        EXPECT_EQ(Page("half.html"), row.page);
        EXPECT_NE(Log().find("failed: " + record_.reason), std::string::npos) << Log();
    }
}

TEST_F(ToolkitClient, DitaCommandIsFoundInPath) {
    const std::string former = std::getenv("PATH");
    WriteProgram("bin/dita",
                 "#!/bin/sh\nfor a; do case $a in --output=*) out=${a#--output=};; esac; done\n"
                 "mkdir -p \"$out\"; echo \"$*\" > \"$out/page.html\"\n");
    Write("t.dita", "<topic id='t'><title>T</title></topic>");
    Write("f.ditaval", "<val/>");
    setenv("PATH", (Native("bin") + ":" + former).c_str(), 1);
    toolkit_ = "installed";
    EXPECT_EQ(Run("t.dita", "f.ditaval"), 0) << record_.reason;
    setenv("PATH", former.c_str(), 1);
    EXPECT_NE(Page("page.html").find("--input=" + Native("t.dita") + " --format=xhtml "), std::string::npos);
    EXPECT_NE(Page("page.html").find("--filter=" + Native("f.ditaval")), std::string::npos);
}

}  // namespace
}  // namespace ventrix::desk
