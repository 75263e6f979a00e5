#include "request/request_handler.h"
#include "request/reply.h"

#include "support/module_test.h"

namespace ventrix::test {
namespace {

class Requests : public ModuleTest {
  protected:
    void SetUp() override {
        drives.Write(R"(C:\src\a.dita)", "<topic/>");
        host.documents[7] = {R"(C:\src\a.dita)",
                             {Document(R"(C:\src\a.dita)"), Document(R"(C:\src\b.dita)", 1)}};
    }
};

TEST_F(Requests, EachGetsOneReplyOfThreeValues) {
    const std::string refused = R"(-43 "" "")";
    const struct {
        const char* text;
        std::string reply;
    } rows[] = {
        {"", refused},
        {"Foo", refused},
        {"-docId 7 Publish", refused},
        {"Publish", refused},
        {R"(Publish -outputFolder C:\out\ -useDITAOT -logFile C:\l.txt)", refused},
        {R"(Publish -docId 0 -outputFolder C:\out\ -useDITAOT -logFile C:\l.txt)", refused},
        {R"(Publish -docId abc -outputFolder C:\out\ -useDITAOT -logFile C:\l.txt)", refused},
        {R"(Publish -docId "" 7 -outputFolder C:\out\ -useDITAOT)", refused},
        {R"(Publish -docId 7 -useDITAOT -logFile C:\l.txt)", refused},
        {R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\l.txt)", refused},
        {R"(Publish -docId 7 -outputFolder C:\out\ -useXSLT)", refused},
        {R"(Validate -logFile C:\l.txt)", refused},
        {R"(Validate -docId 7)", R"(16 "" "")"},
        {R"(Validate -docId 7 -logFile C:\l.txt -attributes a,b)", R"(1 "" "")"},
        {R"(vALIDATE -DOCID 7x -LOGFILE C:\l.txt)", R"(1 "" "")"},
        {R"(Publish -docId 7 -outputFolder C:\out\ -useDITAOT)", R"(0 "" "")"},
        {R"(Publish -docId 8 -outputFolder C:\out\ -useDITAOT -logFile C:\l.txt)", R"(0 "" "")"},
        {R"(Publish -docId 7 -outputFolder C:\out\ -usePostScript C:\no.sh -logFile C:\l.txt)",
         R"(0 "C:\out\" "")"},
        {R"(publish -DOCID 7 -OUTPUTFOLDER 'C:\my out\' -USEDITAOT -LOGFILE C:\l.txt)",
         R"(0 "C:\my out\build-a.dita\\xhtml\" "C:\my out\build-a.dita\\buildlog-xhtml.txt")"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(host.Request(row.text), row.reply) << row.text;
    }
    host.Notifications()->Notify(13, 0, nullptr, 0);
    EXPECT_EQ(host.log.back(), "SendCallReply " + refused) << "null counts as the empty string";
}

TEST_F(Requests, RefusedRequestChangesNoFile) {
    host.log.clear();
    host.Request(R"(Publish -docId 7 -outputFolder C:\src\ -logFile C:\l.txt)");
    EXPECT_THAT(host.log, ElementsAre(R"(SendCallReply -43 "" "")"));
    EXPECT_THAT(drives.Tree(R"(C:\)"), ElementsAre("src\\", "src\\a.dita"));
}

TEST_F(Requests, OnlyNotification13IsARequest) {
    host.log.clear();
    for (const int number : {0, 12, 14, 53, 97}) {
        host.Notifications()->Notify(number, 0, R"(Validate -docId 7 -logFile C:\l.txt)", 0);
    }
    host.Notifications()->Command(13);
    host.Notifications()->DialogEvent(13, 0, 0);
    EXPECT_THAT(host.log, IsEmpty());
}

TEST_F(Requests, InitializeSetsTheTextModeAndAsksForNotifications) {
    const auto sequence = ElementsAre("ReadStringProp 0 0 89", "SetTextMode 1", "WatchNotification 53 1",
                                      "WatchNotification 97 1", "WatchNotification 13 1");
    EXPECT_THAT(host.log, sequence);
    host.log.clear();
    host.Notifications()->Initialize(99);
    EXPECT_THAT(host.log, sequence) << "a second call repeats all of it";
}

TEST_F(Requests, RequestDuringAClientCallRunsInsideIt) {
    host.documents[7].files.pop_back();
    host.documents[9] = {R"(C:\other\c.dita)", {Document(R"(C:\other\c.dita)")}};
    drives.Write(R"(C:\other\c.dita)", "<topic/>");
    host.onClient = [&](const std::string&) {
        host.onClient = nullptr;
        EXPECT_EQ(host.Request(R"(Validate -docId 9 -logFile C:\l9.txt)"), R"(0 "" "")");
    };
    EXPECT_EQ(host.Request(R"(Publish -docId 7 -outputFolder C:\out\ -useXSLT C:\x.xsl -logFile C:\l7.txt)"),
              "2 replies");
    EXPECT_EQ(host.log.back(), R"(SendCallReply 0 "C:\out\" "")");
    EXPECT_EQ(referenceCache.documentId, 7u) << "the outer run scanned its own document again";
}

TEST_F(Requests, NullStringOfAReplyIsSentAsEmptyString) {
    SendReply(5, nullptr, "x");
    EXPECT_EQ(host.log.back(), R"(SendCallReply 5 "" "x")");
}

}  // namespace
}  // namespace ventrix::test
