#include "bridge/connection.h"

#include <unicode/putil.h>

#include "bridge/bridge_test.h"
#include "bridge/host/operations.h"
#include "bridge/host/properties.h"
#include "bridge/runtime_setup.h"
#include "kit/console.h"
#include "kit/last_error.h"
#include "kit/resource_strings.h"
#include "kit/text/encodings.h"
#include "platform/drives.h"
#include "platform/module.h"

namespace ventrix::test {
namespace {

constexpr platform::VersionString kVersionStrings[] = {
    {"040904b0", "ClientName", "A test client"},
    {"040904b0", "ClientType", "QCK"},
    {"040904b0", "ClientOutFormat", ""},
    {"040904b0", "FileDescription", "Tests the bridge"},
    {"040904b0", "ProductName", "not a client key"},
    {"040704b0", "ClientFacet", "another language"},
};
constexpr platform::StringResource kStrings[] = {{3, u"Fehler:"}};
constexpr platform::ModuleResources kResources = {kStrings, kVersionStrings, {}};

class ConnectionTest : public BridgeTest {
  protected:
    void SetUp() override {
        BridgeTest::SetUp();
        u_setDataDirectory("");
    }
    void TearDown() override {
        BridgeTest::TearDown();
        platform::BindResources(&moduleMark_, nullptr);
        u_setDataDirectory("");
    }
};

Lines Queries(unsigned first, unsigned last) {
    Lines lines;
    for (unsigned number = first; number <= last; ++number) {
        lines.push_back("QueryInterface " + Line(number));
    }
    return lines;
}

TEST_F(ConnectionTest, ConnectingCallsTheHostInTheOrderOfTheContract) {
    Host().installationFolder = "C:\\Quorlane";
    EXPECT_EQ(Connect(), 0);
    Lines expected = Queries(1, 18);
    expected.insert(expected.end(), {"HostOwnsResults 1", "RegisterClient 402653184", "TakeModuleHandle set",
                                     "ReadStringProp 0 0 89"});
    EXPECT_EQ(Host().log, expected);
    EXPECT_EQ(Host().references, 18);
    EXPECT_TRUE(Q_ApiIsConnected());
    EXPECT_FALSE(connection.loopEnded);
    EXPECT_TRUE(connection.kitReady);
    EXPECT_EQ(callbackLog, Lines()) << "the host calls Initialize, not the kit";

    Host().DropClient();
    EXPECT_FALSE(Q_ApiIsConnected());
    EXPECT_EQ(Host().references, 0);
    EXPECT_TRUE(connection.loopEnded);
}

TEST_F(ConnectionTest, ConnectingFailsWithoutRootObjectOrMainInterface) {
    EXPECT_EQ(Q_ApiClientInit(&moduleMark_, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(connection.module, &moduleMark_);

    Host().missingInterfaces = {4};
    EXPECT_EQ(Connect(), -1);
    EXPECT_EQ(Host().log, Queries(1, 15)) << "no further interface is asked for";
    EXPECT_EQ(Host().references, 14);
    // A second attempt releases what the first one obtained.
    Host().missingInterfaces.clear();
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(Host().references, 18);
}

TEST_F(ConnectionTest, MainInterfaceAloneIsEnoughToConnect) {
    for (unsigned number = 1; number <= 18; ++number) {
        Host().missingInterfaces.insert(number);
    }
    Host().missingInterfaces.erase(4);
    Host().ownershipAnswer = S_OK;
    EXPECT_EQ(Connect(), 0);
    EXPECT_FALSE(connection.hostOwnsResults);
    EXPECT_EQ(Host().references, 1);
}

TEST_F(ConnectionTest, HostOwnsResultsOnlyIfItAnswersZero) {
    for (const auto& [answer, owns] : {std::pair(S_FALSE, false), {E_FAIL, false}, {S_OK, true}}) {
        Host().ownershipAnswer = answer;
        EXPECT_EQ(Connect(), 0);
        EXPECT_EQ(connection.hostOwnsResults, owns);
        Host().DropClient();
    }
    // Any other answer leaves the flag as it is.
    Host().ownershipAnswer = S_FALSE;
    EXPECT_EQ(Connect(), 0);
    EXPECT_TRUE(connection.hostOwnsResults);
    connection.hostOwnsResults = false;
}

TEST_F(ConnectionTest, ClientDescriptionIsReadFromTheVersionBlock) {
    platform::BindResources(&moduleMark_, &kResources);
    EXPECT_EQ(Q_ApiClientInit(&moduleMark_, Host().Root(), nullptr, nullptr), 0);
    EXPECT_EQ(Host().description,
              Lines({R"(2="A test client")", R"(3="QCK")", R"(4="Tests the bridge")", R"(11="")"}));
    char text[32];
    EXPECT_EQ(Q_LoadResourceString(3, text, sizeof text), 0) << "the resource strings know the module";
}

TEST_F(ConnectionTest, GivenDescriptionReplacesTheVersionBlock) {
    platform::BindResources(&moduleMark_, &kResources);
    Q_PropList description = {};
    Q_ApiSetPropString(&description, 2, "Given");
    EXPECT_EQ(Q_ApiClientInit(&moduleMark_, Host().Root(), nullptr, &description), 0);
    EXPECT_EQ(Host().description, Lines({R"(2="Given")"}));
    EXPECT_EQ(description.count, 1U) << "the list stays the caller's";
    Q_ApiFreePropList(&description);
}

TEST_F(ConnectionTest, DescriptionIsEmptyWithoutAVersionBlock) {
    EXPECT_EQ(Q_ApiClientInit(&moduleMark_, Host().Root(), nullptr, nullptr), 0);
    EXPECT_TRUE(Host().description.empty());
    Host().DropClient();
    EXPECT_EQ(Q_ApiClientInit(nullptr, Host().Root(), nullptr, nullptr), 0);
    EXPECT_TRUE(Host().description.empty());
}

TEST_F(ConnectionTest, ConnectionEndsIfTheHostTakesNoReference) {
    Host().keepsClient = false;
    TestHost other;
    const Q_PropList none = {};
    EXPECT_EQ(Q_ApiClientInit(&moduleMark_, Host().Root(), other.Root(), &none), -1);
    EXPECT_EQ(Host().references, 0);
    EXPECT_EQ(other.references, 0) << "the keep-alive object";
    EXPECT_FALSE(Q_ApiIsConnected());
}

TEST_F(ConnectionTest, KeepAliveObjectIsHeldUntilTheConnectionEnds) {
    TestHost other;
    const Q_PropList none = {};
    EXPECT_EQ(Q_ApiClientInit(&moduleMark_, Host().Root(), other.Root(), &none), 0);
    EXPECT_EQ(other.references, 1);
    Host().DropClient();
    EXPECT_EQ(other.references, 0);
}

TEST_F(ConnectionTest, HostMayCallAfterTheClientDisconnects) {
    EXPECT_EQ(Connect(), 0);
    Q_ApiDisconnect();
    EXPECT_EQ(Host().references, 0);
    EXPECT_FALSE(Q_ApiIsConnected());
    EXPECT_TRUE(connection.loopEnded);
    // The host still holds the notification object.
    EXPECT_EQ(Host().Notifications()->Notify(13, 1, "late", 0), S_OK);
    EXPECT_EQ(callbackLog, Lines({"Notify 13 1 [late] 0"}));
}

TEST_F(ConnectionTest, IcuFolderIsSetOnce) {
    Host().installationFolder = "Z:\\opt\\quorlane";
    const std::string expected = platform::ToNative("Z:\\opt\\quorlane\\icu_data");
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(u_getDataDirectory(), expected) << "in native notation, since ICU opens the files";
    Host().installationFolder = "Z:\\elsewhere";
    EXPECT_EQ(Q_ApiRuntimeSetup(), 0);
    EXPECT_EQ(u_getDataDirectory(), expected);
    EXPECT_TRUE(Q_EncodingsReady());
}

TEST_F(ConnectionTest, IcuFolderStaysUnsetIfTheHostCannotNameIt) {
    EXPECT_EQ(Connect(), 0);
    const struct {
        const char* name;
        std::optional<std::string> folder;
        std::int32_t lastError, result;
    } rows[] = {
        {"no string", std::nullopt, 0, 1},
        {"empty", "", 0, 1},
        {"an earlier error", "Z:\\opt", -1, 1},
        {"longer than its buffer", "Z:\\" + std::string(1021, 'x'), 0, 1},
        {"as long as its buffer", "Z:\\" + std::string(1020, 'x'), 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Host().installationFolder = row.folder;
        Q_ApiLastError = row.lastError;
        EXPECT_EQ(Q_ApiRuntimeSetup(), row.result);
        EXPECT_EQ(u_getDataDirectory()[0] == '\0', row.result == 1);
    }
}

TEST_F(ConnectionTest, EncodingThatIsAlreadySelectedStays) {
    Q_SetEncoding("UTF-8");
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(Q_CurrentEncoding(), kUtf8Encoding);
}

TEST_F(ConnectionTest, KitOutputGoesToTheConsoleOfTheHost) {
    EXPECT_EQ(Connect(), 0);
    ASSERT_NE(Q_ConsoleHook, nullptr);
    Host().log.clear();
    Q_ConsoleHook("hello");
    EXPECT_EQ(Host().log, Lines({"WriteConsole hello"}));
}

}  // namespace
}  // namespace ventrix::test
