#include "markers/dtd_recovery.h"

#include <gtest/gtest.h>

#include <optional>

#include "markers/document_pass.h"
#include "support/full_disk.h"
#include "support/test_folder.h"
#include "support/test_host.h"

namespace ventrix::test {
namespace {

TEST(DtdLookup, AcceptsOnlyAnAnswerOfOneString) {
    struct {
        std::vector<HostValue> application, dtd;
        std::string secondQuestion, answer;
    } rows[] = {
        {{Text("dita")}, {Text("C:\\t.dtd")}, "StructAppInfo -appName dita -info DTDPath", "C:\\t.dtd"},
        {{}, {Text("C:\\t.dtd")}, "StructAppInfo -appName  -info DTDPath", "C:\\t.dtd"},
        {{Text("dita"), Text("docbook")}, {}, "StructAppInfo -appName  -info DTDPath", ""},
        {{Text("dita")},
         {Text("C:\\t.dtd"), Text("C:\\u.dtd")},
         "StructAppInfo -appName dita -info DTDPath",
         ""},
    };
    for (const auto& row : rows) {
        LinkedHost host;
        host.log.clear();
        host.onClient = [&](const std::string& question) {
            host.values = question.starts_with("ChooseAppForFile ") ? row.application : row.dtd;
        };
        EXPECT_EQ(LookupDtdPath("C:\\a b.xml"), row.answer);
        EXPECT_EQ(host.log, Lines({"InvokeClientForValues QlDispatcher: ChooseAppForFile C:\\a b.xml",
                                   "InvokeClientForValues QlDispatcher: " + row.secondQuestion}));
    }
}

TEST(ReplaceInFile, ReplacesOnlyTheFirstOccurrence) {
    const TestFolder tree;
    tree.Write("f", std::string("a\0$x$ $x$\r\n", 11));
    ReplaceInFile(tree.System("f"), "$x$", "C:\\d.dtd");
    EXPECT_EQ(tree.Read("f"), std::string("a\0C:\\d.dtd $x$\r\n", 16));
    ReplaceInFile(tree.System("missing"), "a", "b");
    EXPECT_FALSE(tree.Exists("missing"));
}

/// A document, a DTD and a host that knows both. `output` is what the stylesheet run writes.
struct RepairCase {
    RepairCase() {
        tree.Write("doc.dtd", "<!ENTITY product 'Pump 7'>");
        tree.Write("doc.xml", document);
        host.log.clear();
        host.installationFolder = tree.System("host");
        host.onClient = [this](const std::string& command) {
            host.values = {Text(dtdAnswer)};
            if (output && command.starts_with("XSLT"))
                tree.Write("doc.xml.ql.temp", *output);
        };
    }

    const std::string document = "<!DOCTYPE a SYSTEM 'gone.dtd'><a t='&product;'>x &product;</a>";
    const TestFolder tree;
    std::string dtdAnswer = tree.System("doc.dtd");
    std::optional<std::string> output = "<!DOCTYPE a SYSTEM \"$qldtdpath$\"><a>$qldtdpath$</a>";
    LinkedHost host;
};

TEST(RepairDoctype, WritesThePathOfTheDtdIntoTheDocument) {
    RepairCase repair;
    EXPECT_TRUE(RepairDoctype(repair.tree.System("doc.xml")));
    EXPECT_EQ(repair.tree.Read("doc.xml"),
              "<!DOCTYPE a SYSTEM \"" + repair.dtdAnswer + "\"><a>$qldtdpath$</a>");
    EXPECT_FALSE(repair.tree.Exists("doc.xml.ql.temp"));
    EXPECT_EQ(repair.host.log.back(),
              "InvokeClient QlXSLT: XSLTRunTrScenario -dontuseqlconsole -file \"" +
                  repair.tree.System("doc.xml") + "\" -xslfilepath \"" + *repair.host.installationFolder +
                  "\\Ventrix.xsl\" -outputfilepath \"" + repair.tree.System("doc.xml.ql.temp") + "\"");
}

TEST(RepairDoctype, KeepsTheDocumentIfTheStylesheetGivesNoOutput) {
    for (const std::optional<std::string>& output :
         {std::optional<std::string>(), std::optional<std::string>("")}) {
        RepairCase repair;
        repair.output = output;
        // The file of an interrupted run is not output of this one.
        if (!output)
            repair.tree.Write("doc.xml.ql.temp", "<old/>");
        EXPECT_TRUE(RepairDoctype(repair.tree.System("doc.xml")));
        EXPECT_EQ(repair.tree.Read("doc.xml"), repair.document);
        EXPECT_FALSE(repair.tree.Exists("doc.xml.ql.temp"));
    }
}

TEST(RepairDoctype, KeepsDocumentOrOutputOnAFullDisk) {
    RepairCase repair;
    std::optional<FullDisk> full;
    repair.host.onClient = [&](const std::string& command) {
        repair.host.values = {Text(repair.dtdAnswer)};
        if (!command.starts_with("XSLT"))
            return;
        repair.tree.Write("doc.xml.ql.temp", "<a/>");
        full.emplace(0);
    };
    EXPECT_TRUE(RepairDoctype(repair.tree.System("doc.xml")));
    full.reset();
    EXPECT_TRUE(repair.tree.Exists("doc.xml") || repair.tree.Exists("doc.xml.ql.temp"));
}

TEST(RepairDoctype, LeavesAFileWithoutAKnownDtdUntouched) {
    RepairCase repair;
    repair.dtdAnswer.clear();
    EXPECT_FALSE(RepairDoctype(repair.tree.System("doc.xml")));
    EXPECT_EQ(repair.host.log.size(), 2U) << "no transformation";
    EXPECT_EQ(repair.tree.Read("doc.xml"), repair.document);
}

TEST(RepairDoctype, WritesThePathOfAMissingDtdAsTheHostGaveIt) {
    RepairCase repair;
    repair.dtdAnswer = "C:\\nowhere\\x.dtd";
    EXPECT_TRUE(RepairDoctype(repair.tree.System("doc.xml")));
    EXPECT_NE(repair.tree.Read("doc.xml").find("\"C:\\nowhere\\x.dtd\""), std::string::npos);
}

TEST(LoadWithRepair, ResolvesEntitiesFromTheDtdThatTheHostNames) {
    RepairCase repair;
    repair.output = "<!DOCTYPE a SYSTEM \"$qldtdpath$\"><a t='&product;'>x &product;</a>";
    PublishParams params;
    params.attributes = {"t"};
    std::string errorText;
    EXPECT_TRUE(ProcessXmlFile(repair.tree.System("doc.xml"), false, params, errorText)) << errorText;
    EXPECT_EQ(repair.tree.Read("doc.xml"),
              "<!DOCTYPE a SYSTEM \"" + repair.dtdAnswer +
                  "\"><a t='&product;'>QL_STARTtQL_EQPump 7QL_TARGETQL_SEPQL_ENDx &product;</a>");
}

TEST(LoadWithRepair, FailsIfTheRepairDoesNotHelp) {
    for (const char* dtdAnswer : {"", "C:\\nowhere\\x.dtd"}) {
        RepairCase repair;
        repair.dtdAnswer = dtdAnswer;
        repair.output.reset();
        PublishParams params;
        std::string errorText;
        EXPECT_FALSE(ProcessXmlFile(repair.tree.System("doc.xml"), false, params, errorText));
        EXPECT_FALSE(errorText.empty());
        EXPECT_EQ(repair.host.log.back().starts_with("InvokeClient QlXSLT"), *dtdAnswer != '\0');
        EXPECT_EQ(repair.tree.Read("doc.xml"), repair.document);
    }
}

}  // namespace
}  // namespace ventrix::test
