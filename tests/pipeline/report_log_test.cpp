#include "pipeline/report_log.h"

#include "support/module_test.h"

namespace ventrix::test {
namespace {

using ReportLogFile = ModuleTest;

TEST_F(ReportLogFile, EndsLinesWithCarriageReturnAndLineFeed) {
    {
        ReportLog log = OpenReportLog(R"(C:\log.txt)");
        ASSERT_TRUE(log.IsOpen());
        LogMessageAndText(log, kSeverityProgress, kMessageEncodingFile, R"(C:\grün.xml)");
        LogBlankLine(log);
        LogMessage(log, kSeverityError, kMessageSeveralRoots);
    }
    EXPECT_EQ(drives.Read(R"(C:\log.txt)"),
              "Logarithmus:Datei wird codiert...C:\\grün.xml\r\n\r\nFehler:" + kRootsText + "\r\n");
}

TEST_F(ReportLogFile, WritesEveryFormOfLine) {
    ReportLog log = OpenReportLog(R"(C:\log.txt)");
    LogMessage(log, kSeverityWarning, kMessageBrokenLinks);
    LogMessage(log, 4, kMessageInputFile);
    LogMessage(log, kSeverityError, 99);
    LogRule(log);
    LogSection(log, {}, kSeverityError, kMessageBrokenLinks);
    LogSection(log, {"b", "a", "b"}, kSeverityProgress, kMessageValidFiles);
    const Lines expected =
        Lines{kBrokenLine, "Eingabedatei:", "Fehler:", kRuleLine} + Section(kValidLine, {"b", "a", "b"});
    EXPECT_EQ(LogLines(), expected) << "readable while the log is still open";
}

TEST_F(ReportLogFile, HostsRecognizeTheLinesByTheWordingOfTheContract) {
    const struct {
        int severity;
        std::uint32_t messageId;
        std::string_view word, message;
    } rows[] = {
        {kSeverityProgress, kMessageValidFiles, kProgressWording, kValidFilesWording},
        {kSeverityWarning, kMessageBrokenLinks, kWarningWording, kBrokenLinksWording},
        {kSeverityWarning, kMessageUnsavedFiles, kWarningWording, kUnsavedFilesWording},
        {kSeverityError, kMessageSeveralRoots, kErrorWording, kSeveralRootsWording},
        {kSeverityProgress, kMessageEncodingFile, kProgressWording, kEncodingFileWording},
        {kSeverityError, kMessageDecodingFile, kErrorWording, kDecodingFileWording},
    };
    ReportLog log = OpenReportLog(R"(C:\log.txt)");
    for (const auto& row : rows) {
        LogMessage(log, row.severity, row.messageId);
        EXPECT_EQ(LogLines().back(), std::string(row.word).append(row.message));
    }
}

TEST_F(ReportLogFile, AppendsWhenOpenedAgain) {
    for (const char* text : {"one", "two"}) {
        ReportLog log = OpenReportLog(R"(C:\log.txt)");
        LogMessageAndText(log, kSeverityNone, kMessageInputFile, text);
    }
    EXPECT_EQ(drives.Read(R"(C:\log.txt)"), "Eingabedatei:one\r\nEingabedatei:two\r\n");
}

TEST_F(ReportLogFile, DropsLinesIfItCouldNotBeOpened) {
    for (const char* path : {"", R"(C:\no\folder\log.txt)", R"(C:\)"}) {
        ReportLog log = OpenReportLog(path);
        EXPECT_FALSE(log.IsOpen()) << path;
        LogSection(log, {"a"}, kSeverityError, kMessageBrokenLinks);
    }
    EXPECT_TRUE(drives.Tree(R"(C:\)").empty());
}

}  // namespace
}  // namespace ventrix::test
