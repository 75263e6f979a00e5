// The proxies through which a client calls a host in another apartment: every operation, with values of every
// kind that crosses.
#include <gtest/gtest.h>

#include <atomic>

#include "bridge/connection.h"
#include "bridge/host/operations.h"
#include "bridge/host/properties.h"
#include "bridge/host/values.h"
#include "bridge/out_of_process.h"
#include "kit/last_error.h"
#include "kit/memory.h"
#include "platform/com_runtime.h"
#include "support/environment.h"
#include "support/test_host.h"

namespace ventrix::test {
namespace {

class WindowsProxies : public ::testing::Test {
  protected:
    void SetUp() override {
        RemoveVariable("QLGUID");
        platform::OfferClass(kHostClassId, [this](REFIID id, void** object) {
            hostThread_ = platform::CurrentThreadNumber();
            return host_.Root()->QueryInterface(id, object);
        });
        Q_ApiLastError = 0;
    }

    void TearDown() override {
        Q_ApiDisconnect();
        platform::CallOnThread(hostThread_, [this] { host_.DropClient(); });
        platform::OfferClass(kHostClassId, nullptr);
        EXPECT_EQ(host_.references, 0);
    }

    TestHost host_;
    std::atomic<std::uint32_t> hostThread_ = 0;
};

// Three properties: one with a name and a number, one with a string, one with a list.
struct ThreeProps {
    char name[5] = "n\xC3\xA4m";
    char text[7] = "string";
    Q_Value inner[2] = {};
    Q_ValueList list = {2, inner};
    Q_Prop props[3] = {};
    Q_PropList all = {3, props};

    ThreeProps() {
        inner[0].tag = props[1].value.tag = kTextTag;
        inner[0].text = props[1].value.text = text;
        inner[1].tag = props[0].value.tag = kIntegerTag;
        inner[1].number = props[0].value.number = -5;
        props[0].ident.name = name;
        props[1].ident.number = 2;
        props[2].ident.number = 3;
        props[2].value.tag = kListTag;
        props[2].value.list = &list;
    }
};

const Lines kThreeProps = {"n\xC3\xA4m=-5", "2=\"string\"", "3=[\"string\" -5]"};

// Prints a list and frees it.
std::string Taken(Q_ValueList list) {
    std::string printed = Print(list);
    Q_ApiFreeValueList(&list);
    return printed;
}

TEST_F(WindowsProxies, EveryOperationCrosses) {
    ThreeProps props;
    host_.integerAnswer = 12;
    host_.values = {Document("C:\\\xC3\xA4.xml", 1), Text(""), Number(7)};
    host_.documents[4711] = {"C:\\docs\\guide.ditamap", host_.values};
    host_.openResults = {{0, "name", Number(3)}, {9, "", Fields({Text("opened")})}};
    const std::string values = "[\"documentType\" \"C:\\\xC3\xA4.xml\" 1] \"\" 7";

    ASSERT_EQ(Q_ApiConnectHost(&props.all, nullptr, nullptr), 0);
    EXPECT_EQ(host_.description, kThreeProps);
    host_.log.clear();
    host_.statuses["WatchNotification"] = 5;
    EXPECT_EQ(Q_ApiWatchNotification(53, 1), 5);
    Q_ApiSetTextMode(1);
    EXPECT_EQ(Q_ApiWriteConsole("\xC3\xA4"), 0);
    EXPECT_EQ(Q_ApiInvokeClient("Dita OT", "Save"), 12);
    EXPECT_EQ(Taken(Q_ApiInvokeClientForValues("QlDispatcher", "Choose")), values);
    EXPECT_EQ(Taken(Q_ApiSendCallReply(&props.list)), values);
    Q_PropList* results = nullptr;
    EXPECT_EQ(Q_ApiOpenDocument("C:\\a.xml", &props.all, &results), 4711U);
    EXPECT_EQ(host_.openScript, kThreeProps);
    EXPECT_EQ(Print(*results), Lines({"name=3", "9=[\"opened\"]"}));
    EXPECT_EQ(Q_ApiCloseDocument(4711, -1), 0);
    EXPECT_EQ(Taken(Q_ApiListDocumentFiles(4711, 16, 0)), values);
    char* path = Q_ApiReadStringPropNum(0, 4711, kDocumentPathProperty);
    EXPECT_STREQ(path, "C:\\docs\\guide.ditamap");
    Q_Free(path);
    EXPECT_EQ(Q_ApiReadStringPropNum(0, 1, kDocumentPathProperty), nullptr);
    EXPECT_EQ(host_.log,
              Lines({"WatchNotification 53 1", "SetTextMode 1", "WriteConsole \xC3\xA4",
                     "InvokeClient Dita OT: Save", "InvokeClientForValues QlDispatcher: Choose",
                     "SendCallReply \"string\" -5", "OpenDocument C:\\a.xml", "CloseDocument 4711 -1",
                     "ListDocumentFiles 4711 16 0", "ReadStringProp 0 4711 20", "ReadStringProp 0 1 20"}));
    EXPECT_EQ(Q_ApiLastError, 5) << "the status of the first";
}

TEST_F(WindowsProxies, ResultOfAMethodCrosses) {
    ASSERT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    host_.failures["WriteConsole"] = RPC_E_SERVERCALL_RETRYLATER;
    Q_ApiWriteConsole("text");
    EXPECT_EQ(Q_ApiLastError, -88);
}

TEST_F(WindowsProxies, CallWithAValueThatCannotCrossFails) {
    ASSERT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    host_.log.clear();
    Q_Value value = {};
    value.tag = 9;
    value.pointer = &value;
    const Q_ValueList list = {1, &value};
    EXPECT_EQ(Taken(Q_ApiSendCallReply(&list)), "");
    EXPECT_EQ(Q_ApiLastError, -1);
    EXPECT_EQ(host_.log, Lines());
}

}  // namespace
}  // namespace ventrix::test
