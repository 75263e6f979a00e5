#include "request/request_handler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pipeline/reference_scan.h"
#include "request/reply.h"
#include "support/linked_host.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

using test::Document;
using test::HostReply;
using testing::ElementsAre;
using testing::IsEmpty;

class Requests : public testing::Test {
  protected:
    void SetUp() override {
        referenceCache = {};
        drives.Write(R"(C:\src\a.dita)", "<topic/>");
        host.documents[7] = {R"(C:\src\a.dita)",
                             {Document(R"(C:\src\a.dita)"), Document(R"(C:\src\b.dita)", 1)}};
    }

    test::TestDrives drives;
    test::LinkedHost host;
};

TEST_F(Requests, EachHasOneReplyOfThreeValues) {
    const HostReply refused = {3, requestRefused, "", ""};
    const struct {
        const char* text;
        HostReply reply;
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
        {R"(Validate -docId 7)", {3, 16, "", ""}},
        {R"(Validate -docId 7 -logFile C:\l.txt -attributes a,b)", {3, 1, "", ""}},
        {R"(vALIDATE -DOCID 7x -LOGFILE C:\l.txt)", {3, 1, "", ""}},
        {R"(Publish -docId 7 -outputFolder C:\out\ -useDITAOT)", {3, 0, "", ""}},
        {R"(Publish -docId 8 -outputFolder C:\out\ -useDITAOT -logFile C:\l.txt)", {3, 0, "", ""}},
        {R"(Publish -docId 7 -outputFolder C:\out\ -usePostScript C:\no.sh -logFile C:\l.txt)",
         {3, 0, R"(C:\out\)", ""}},
        {R"(publish -DOCID 7 -OUTPUTFOLDER 'C:\my out\' -USEDITAOT -LOGFILE C:\l.txt)",
         {3, 0, R"(C:\my out\build-a.dita\\xhtml\)", R"(C:\my out\build-a.dita\\buildlog-xhtml.txt)"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(host.Request(row.text), row.reply) << row.text;
    }
    host.Notify(13, nullptr);
    EXPECT_EQ(host.replies.back(), refused) << "a null text counts as the empty one";
    EXPECT_EQ(host.replies.size(), std::size(rows) + 1);
}

TEST_F(Requests, RefusedOnesTouchNothing) {
    host.calls.clear();
    host.Request(R"(Publish -docId 7 -outputFolder C:\src\ -logFile C:\l.txt)");
    EXPECT_THAT(host.calls, IsEmpty());
    EXPECT_THAT(drives.Tree(R"(C:\)"), ElementsAre("src\\", "src\\a.dita"));
}

TEST_F(Requests, OnlyNumber13IsOne) {
    host.calls.clear();
    for (const int number : {0, 12, 14, 53, 97}) {
        host.Notify(number, R"(Validate -docId 7 -logFile C:\l.txt)");
    }
    host.Client().Command(13);
    host.Client().DialogEvent(13, 0, 0);
    EXPECT_THAT(host.calls, IsEmpty());
    EXPECT_THAT(host.replies, IsEmpty());
}

TEST_F(Requests, InitializeSetsTextsUpAndWatches) {
    const auto sequence = ElementsAre("text mode 1", "watch 53 1", "watch 97 1", "watch 13 1");
    EXPECT_THAT(host.calls, sequence);
    host.calls.clear();
    host.Client().Initialize(99);
    EXPECT_THAT(host.calls, sequence) << "a second one runs whole again";
}

TEST_F(Requests, OneThatArrivesDuringAClientCallRunsOnTop) {
    host.documents[7].files.pop_back();
    host.documents[9] = {R"(C:\other\c.dita)", {Document(R"(C:\other\c.dita)")}};
    drives.Write(R"(C:\other\c.dita)", "<topic/>");
    host.onClient = [&](const std::string&, const std::string&) {
        host.onClient = nullptr;
        EXPECT_EQ(host.Request(R"(Validate -docId 9 -logFile C:\l9.txt)"), (HostReply{3, 0, "", ""}));
    };
    host.Notify(13, R"(Publish -docId 7 -outputFolder C:\out\ -useXSLT C:\x.xsl -logFile C:\l7.txt)");
    ASSERT_EQ(host.replies.size(), 2u);
    EXPECT_EQ(host.replies[1], (HostReply{3, 0, R"(C:\out\)", ""}));
    EXPECT_EQ(referenceCache.documentId, 7u) << "the outer run asked again for its own document";
}

TEST_F(Requests, NullTextsOfAReplyAreSentAsEmptyOnes) {
    SendReply(5, nullptr, "x");
    EXPECT_EQ(host.replies.back(), (HostReply{3, 5, "", "x"}));
}

}  // namespace
}  // namespace ventrix
