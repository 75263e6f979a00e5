#include "desk/dita_fixture.h"
#include "desk/toolkit/installed_toolkit.h"
#include "desk/toolkit/java_text.h"
#include "desk/toolkit/package_markers.h"
#include "desk/toolkit/run_program.h"
#include "desk/toolkit/toolkit_log.h"
#include "platform/native_roots.h"
#include "support/environment.h"
#include "support/links.h"
#include "support/scripts.h"

namespace ventrix::desk {
namespace {

constexpr char kRecordingToolkit[] = "toolkit page\n";

/// Runs the machine's own toolkit, or programs in its place.
class ToolkitClient : public DitaClient {
  protected:
    static bool Installed() {
        return std::filesystem::exists("/usr/share/dita-ot/build.xml") && !FindProgram("ant").Empty();
    }
    /// A toolkit that records what it is given. On POSIX its start script hands its arguments to the shell a
    /// second time, as those of toolkits do.
    void UseRecordingToolkit() {
        command_ = WriteScript(*this, "ot/bin/dita", kRecordingToolkit);
        if (command_.ends_with("/dita")) {
            WriteScript(*this, "ot/bin/recorder", kRecordingToolkit);
            WriteProgram("ot/bin/dita",
                         "#!/bin/sh\nall=\nfor a; do all=\"$all \\\"$a\\\"\"; done\n"
                         "eval \"\\\"\\$(dirname \\\"\\$0\\\")/recorder\\\" $all\"\n");
        }
        settings_.toolkit = Native("ot");
    }
    void WriteTopicAt(const std::string& name) const {
        Write(name,
              "<!DOCTYPE topic PUBLIC \"-//OASIS//DTD DITA Topic//EN\" \"topic.dtd\">"
              "<topic id='t'><title>T</title><body><p>all</p><p audience='expert'>x</p></body></topic>");
    }
    std::string command_;  ///< The recording toolkit's.
};

constexpr char kFilter[] = "<val><prop att='audience' val='expert' action='exclude'/></val>";

/// A colon or a backslash is not among them, as the module cannot be given such names.
std::vector<std::string> AwkwardNames() {
    std::vector<std::string> names = {
        "a b", "it's", "$HOME",           "`touch hacked`", "a%20b",
        "a#b", "a;b",  "$(touch hacked)", "\u65e5\u672c",   "\u00e4\u00f6 +&=!"};
    if (test::kHasAnyNames) {
        names.insert(names.end(), {"a?b", "a\"b"});
    }
    return names;
}

TEST_F(ToolkitClient, AwkwardNamesReachANewToolkitUnchanged) {
    UseRecordingToolkit();
    for (const std::string& name : AwkwardNames()) {
        const std::string topic = name + "/" + name + ".dita";
        WriteTopicAt(topic);
        Write(name + "/" + name + ".ditaval", kFilter);
        EXPECT_EQ(Run(topic, name + "/" + name + ".ditaval"), 0) << name << record_.reason;
        const std::string input = PropertyLine("args.input", JavaFileUri({Native(topic)}));
        EXPECT_NE(Read("ot/bin/properties").find(input), std::string::npos) << name;
        EXPECT_NE(Read("ot/bin/filter").find("expert"), std::string::npos) << name;
        EXPECT_EQ(Page("page.html"), "page\n") << name;
        EXPECT_TRUE(record_.findings.empty()) << record_.findings.front().text;
    }
    EXPECT_FALSE(Exists("hacked") || std::filesystem::exists("hacked"));
}

TEST_F(ToolkitClient, AwkwardNamesArePublishedByAnOldToolkit) {
    if (!Installed()) {
        GTEST_SKIP() << "the package dita-ot or ant is not installed";
    }
    settings_.toolkit = "/usr/share/dita-ot";
    for (const std::string name : {"it's $HOME `touch hacked` a%20b#c?d", "\u65e5\u672c \u00e4;\"&"}) {
        WriteTopicAt(name + "/it's $x.dita");
        Write(name + "/" + name + ".ditaval", kFilter);
        EXPECT_EQ(Run(name + "/it's $x.dita", name + "/" + name + ".ditaval"), 0)
            << name << record_.reason << Log();
        EXPECT_EQ(Query("it's $x.html", "concat(count(//p), //p)"), "1all") << name;
        EXPECT_TRUE(record_.findings.empty()) << record_.findings.front().text << Log();
    }
    EXPECT_FALSE(std::filesystem::exists("hacked"));
    const struct {
        const char *name, *reference;
    } rows[] = {{"a#b.dita", "a%23b.dita"}, {"x&y.dita", "x&amp;y.dita"}, {"c%d.dita", "c%25d.dita"}};
    for (const auto& row : rows) {
        WriteTopicAt(std::string("in #/") + row.name);
        Write("in #/m.ditamap", std::string("<map><topicref href='") + row.reference + "'/></map>");
        for (const char* document : {row.name, "m.ditamap"}) {
            EXPECT_EQ(Run(std::string("in #/") + document), 1) << row.name;
            EXPECT_NE(record_.reason.find(std::string(row.name) + ": this old"), std::string::npos)
                << record_.reason;
        }
    }
}

TEST_F(ToolkitClient, JavaTextIsEscapedAsJavaDoes) {
    EXPECT_EQ(JavaFileUri({"/a b/$+,;=@&'()*!~%20#?\"`[]^{|}\\\u00e4\u3000\u65e5"}),
              "file:/a%20b/$+,;=@&'()*!~%2520%23%3F%22%60%5B%5D%5E%7B%7C%7D%5C\u00e4%E3%80%80\u65e5");
    EXPECT_EQ(PropertyLine("n", "a/b.c d$\\:\u00e4\U0001d444\xff"),
              "n=a/b.c\\u0020d\\u0024\\u005C\\u003A\\u00E4\\uD835\\uDC44\\uFFFD\n");
}

TEST_F(ToolkitClient, FoldersMayContainSpacesAndUmlauts) {
    if (!Installed()) {
        GTEST_SKIP() << "the package dita-ot or ant is not installed";
    }
    settings_.toolkit = "installed";
    const std::string doctype = "<!DOCTYPE topic PUBLIC \"-//OASIS//DTD DITA Topic//EN\" \"topic.dtd\">";
    Write("in ü b/m ä.ditamap",
          "<!DOCTYPE map PUBLIC \"-//OASIS//DTD DITA Map//EN\" \"map.dtd\">"
          "<map title='M'><topicref href='t%20%C3%A4.dita'/><topicref href='../up/u.dita'/></map>");
    Write("in ü b/t ä.dita", doctype +
                                 "<topic id='t'><title>T</title><body><p>ü \U0001d444</p>"
                                 "<p audience='expert'>x</p></body></topic>");
    Write("up/u.dita", doctype + "<topic id='u'><title>U</title><body><p>u</p></body></topic>");
    Write("f ä.ditaval", kFilter);
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
    WriteScript(*this, "halfway/bin/dita",
                "toolkit half\nprint [FATAL] too early\nprint \\x1b[31m[FATAL] no more\\x1b[0m\nexit 3\n");
    WriteScript(*this, "nothing/bin/dita", "");
    WriteProgram("strange/bin/dita", "#!/no/such/interpreter\n");
    WriteScript(*this, "memory/bin/dita",
                "print java.lang.OutOfMemoryError: Java heap space\nprint \\tat a.b.C\nexit 1\n");
    WriteProgram("shell/bin/dita" + std::string(test::kScriptSuffix),
                 test::kHasShell ? "#!/bin/sh\nno-such-command-here\nexit 127\n"
                                 : "@no-such-command-here\r\n@exit /b 127\r\n");
    Write("broken/build.xml",
          "<project default='d'><target name='d'><fail message='out of luck'/></target></project>");
    const struct {
        const char *folder, *reason, *page;
    } rows[] = {
        {"absent", "contains no DITA Open Toolkit", ""},
        {"halfway", "failed with exit status 3: [FATAL] no more", "half\n"},
        {"nothing", "wrote no page: it printed nothing", ""},
        {"strange", test::kHasShell ? "cannot be started" : "contains no DITA Open Toolkit", ""},
        {"memory", "OutOfMemoryError: Java heap space", ""},
        {"shell", "no-such-command-here", ""},
        {"broken", "out of luck", ""},
    };
    for (const auto& row : rows) {
        settings_.toolkit = Native(row.folder);
        std::filesystem::remove_all(Native("out"));
        EXPECT_EQ(Run("t.dita"), 1) << row.folder;
        EXPECT_NE(record_.reason.find(row.reason), std::string::npos) << record_.reason;
        EXPECT_EQ(record_.reason.find_first_of("\n\x1b"), std::string::npos);
        EXPECT_EQ(Page("page.html"), row.page);
        EXPECT_NE(Log().find("failed: " + record_.reason), std::string::npos) << Log();
        EXPECT_EQ(Log().find('\x1b'), std::string::npos) << Log();
    }
}

TEST_F(ToolkitClient, ErrorsOfASuccessfulRunAreFindings) {
    const std::vector<std::string> errors = ToolkitErrors(
        LogLines("  [xslt] [DOTX008E][ERROR] one\nFailed to read two\n[FATAL] three\n"
                 "[DOTJ007E] ventrix-filter=read\n[DOTX023W][WARN] four\nDOTJ013E five\r\n[INFO] six\n"));
    EXPECT_EQ(errors, (std::vector<std::string>{"[xslt] [DOTX008E][ERROR] one", "Failed to read two",
                                                "[FATAL] three", "DOTJ013E five"}));
}

TEST_F(ToolkitClient, AFilterThatTheToolkitDoesNotReadIsAFinding) {
    UseRecordingToolkit();
    WriteTopicAt("t.dita");
    Write("f.ditaval", kFilter);
    Write("ot/bin/blind", "");
    EXPECT_EQ(Run("t.dita", "f.ditaval"), 0) << record_.reason;
    ASSERT_EQ(record_.findings.size(), 1U);
    EXPECT_NE(record_.findings.front().text.find("does not show that it read the filter"), std::string::npos);
}

TEST_F(ToolkitClient, OptionsReachTheToolkit) {
    UseRecordingToolkit();
    WriteTopicAt("t.dita");
    Write("one.ditaval", kFilter);
    Write("sub/two.ditaval",
          "<val><prop att='product' action='flag'><startflag imageref='x.png'/></prop></val>");
    Write("sub/x.png", "png");
    settings_.filters = {{Native("one.ditaval")}, {Native("sub/two.ditaval")}};
    settings_.transtype = "my-xhtml";
    settings_.resources = {{test::kDriveZ + "/r/k eys.ditamap"}, {test::kDriveZ + "/r/b.ditamap"}};
    settings_.parameters = {{"args.css", "a b"}};
    EXPECT_EQ(Run("t.dita", "one.ditaval"), 0) << record_.reason;
    const std::string properties = Read("ot/bin/properties");
    for (const std::string& line :
         {PropertyLine("transtype", "my-xhtml"), PropertyLine("args.css", "a b"),
          PropertyLine("args.resources", JavaFileUri(settings_.resources[0]) + platform::PathListSeparator() +
                                             JavaFileUri(settings_.resources[1]))}) {
        EXPECT_NE(properties.find(line), std::string::npos) << line;
    }
    const std::string filter = Read("ot/bin/filter");
    EXPECT_LT(filter.find("audience"), filter.find("product"));
    EXPECT_NE(filter.find("imageref=\"flag-1.png\""), std::string::npos) << filter;
}

TEST_F(ToolkitClient, TheNamedToolkitRunsWhateverTheEnvironmentSays) {
    WriteTopicAt("t.dita");
    UseRecordingToolkit();
    const test::VariableChange home("DITA_HOME", "/elsewhere");
    settings_.toolkit = command_;
    EXPECT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_TRUE(Exists("ot/bin/home"));
    EXPECT_EQ(Read("ot/bin/home"), "");
    EXPECT_EQ(DescribeToolkit(settings_.toolkit), "DITA Open Toolkit, " + command_);
    EXPECT_NE(Log().find("toolkit " + command_), std::string::npos) << Log();

    std::filesystem::permissions(command_, std::filesystem::perms(0644));
    settings_.toolkit = Native("ot");
    std::filesystem::remove_all(Native("out"));
    EXPECT_EQ(Run("t.dita"), 0) << record_.reason << "; a start script without its execute bit";
    EXPECT_EQ(Page("page.html"), "page\n");
}

TEST_F(ToolkitClient, DitaCommandIsFoundInPath) {
    WriteScript(*this, "bin/dita", kRecordingToolkit);
    WriteTopicAt("t.dita");
    const test::VariableChange path("PATH", Native("bin") + platform::PathListSeparator() +
                                                platform::EnvironmentValue("PATH").value_or(""));
    settings_.toolkit = "installed";
    EXPECT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_NE(Read("bin/properties").find("transtype=xhtml\n"), std::string::npos);
}

TEST_F(ToolkitClient, ATemporaryFolderThatTheShellWouldReadIsRefused) {
    UseRecordingToolkit();
    WriteTopicAt("t.dita");
    std::filesystem::create_directory(Native("$x"));
    const test::VariableChange temporary(test::kTemporary, Native("$x"));
    EXPECT_EQ(Run("t.dita"), 1);
    EXPECT_NE(record_.reason.find(std::string("set ") + test::kTemporary + " to"), std::string::npos)
        << record_.reason;
}

TEST_F(ToolkitClient, MetadataThatIsNoProseLosesItsMarkerText) {
    const std::string m = "QL_STARTaQL_EQbQL_TARGETQL_SEPQL_END";
    const struct {
        std::string source, cleaned;
    } rows[] = {
        {"<ditavalref><ditavalmeta><dvrResourcePrefix>" + m + "win-</dvrResourcePrefix></ditavalmeta>",
         "<ditavalref><ditavalmeta><dvrResourcePrefix>win-</dvrResourcePrefix></ditavalmeta>"},
        {"<p>" + m + "x<area><shape>" + m + "rect</shape><coords>" + m + "1,2</coords></area>" + m + "y</p>",
         "<p>" + m + "x<area><shape>rect</shape><coords>1,2</coords></area>" + m + "y</p>"},
        {"<topic><prolog a='>'><metadata><keywords><keyword>" + m +
             "k</keyword></keywords></metadata></prolog>" + "<body>" + m + "b</body></topic>",
         "<topic><prolog a='>'><metadata><keywords><keyword>k</keyword></keywords></metadata></prolog>"
         "<body>" +
             m + "b</body></topic>"},
        {"<topicref><topicmeta><navtitle>" + m + "n</navtitle><keywords><keyword>" + m +
             "k</keyword></keywords></topicmeta></topicref>",
         "<topicref><topicmeta><navtitle>" + m +
             "n</navtitle><keywords><keyword>k</keyword></keywords></topicmeta></topicref>"},
        {"<keydef keys='x'><topicmeta><keywords><keyword>" + m +
             "k</keyword></keywords></topicmeta></keydef>",
         "<keydef keys='x'><topicmeta><keywords><keyword>" + m +
             "k</keyword></keywords></topicmeta></keydef>"},
        {"<!DOCTYPE t [<!ENTITY a '<data>'>]><!-- <data> --><t>" + m + "<![CDATA[<data>]]></t>",
         "<!DOCTYPE t [<!ENTITY a '<data>'>]><!-- <data> --><t>" + m + "<![CDATA[<data>]]></t>"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(WithoutMarkersOutsideProse(row.source, Vocabulary::kDita), row.cleaned);
    }
    access_.outputFolder = {Native("package")};
    UseRecordingToolkit();
    Write("package/m.ditamap", rows[0].source);
    EXPECT_EQ(Run("package/m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(Read("package/m.ditamap"), rows[0].cleaned);
}

}  // namespace
}  // namespace ventrix::desk
