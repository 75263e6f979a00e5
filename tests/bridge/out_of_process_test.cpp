// A client in its own apartment, with the scripted host as the running host on the host's thread
// (platform/com_runtime.h). The clock of the calls is the test's, so that waiting for a busy host takes no
// time.
#include "bridge/out_of_process.h"

#include <atomic>
#include <functional>

#include "bridge/apartment.h"
#include "bridge/bridge_test.h"
#include "bridge/connection.h"
#include "bridge/host/operations.h"
#include "bridge/host/values.h"
#include "bridge/message_filter.h"
#include "kit/last_error.h"
#include "platform/com_runtime.h"
#include "platform/environment.h"
#include "platform/server_call.h"
#include "support/environment.h"

namespace ventrix::test {
namespace {

constexpr CLSID kOtherClass = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

class OutOfProcessTest : public BridgeTest {
  protected:
    void SetUp() override {
        BridgeTest::SetUp();
        test::RemoveVariable("QLGUID");
        Offer(kHostClassId, u"");
    }

    void TearDown() override {
        test::RemoveVariable("QLGUID");
        platform::ReplaceCallClock(nullptr);
        DropClient();
        for (const CLSID& classId : {kHostClassId, kOtherClass}) {
            platform::OfferClass(classId, nullptr);
            platform::OfferClass(classId, nullptr, u"author-1");
        }
        LeaveApartment();
        BridgeTest::TearDown();
        EXPECT_EQ(CoInitialize(nullptr), S_OK) << "the apartment was left";
        CoUninitialize();
    }

    // Offers the host's root object as the running object of a class.
    void Offer(const CLSID& classId, std::u16string_view server) { Offer(Host(), classId, server); }

    void Offer(TestHost& host, const CLSID& classId, std::u16string_view server) {
        platform::OfferClass(
            classId,
            [this, &host](REFIID id, void** out) {
                hostThread_ = platform::CurrentThreadNumber();
                return host.Root()->QueryInterface(id, out);
            },
            server);
    }

    void NoHost() { platform::OfferClass(kHostClassId, nullptr); }

    void DropClient() {
        platform::CallOnThread(hostThread_, [this] { Host().DropClient(); });
    }

    // As soon as this thread's message loop runs, the host makes these calls of the client and then ends the
    // loop.
    void CallInLoop(const std::function<void(IQuorlaneNotifications0&)>& calls) {
        const std::uint32_t client = platform::CurrentThreadNumber();
        platform::PostToThread(client, [this, client, calls] {
            platform::PostToThread(hostThread_, [this, client, calls] {
                calls(*Host().Notifications());
                platform::PostQuitToThread(client);
            });
        });
    }

    std::atomic<std::uint32_t> hostThread_ = 0;  ///< Of the last host that was found.
};

TEST_F(OutOfProcessTest, ConnectingTwiceCallsTheHostOnce) {
    EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    EXPECT_TRUE(connection.apartmentOwned);
    EXPECT_NE(connection.messageFilter, nullptr);
    const std::size_t logged = Host().log.size();
    EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(Q_ApiConnectOnce(), nullptr);
    EXPECT_EQ(Host().log.size(), logged);
    Q_ApiDisconnect();
    EXPECT_FALSE(connection.apartmentOwned);
    EXPECT_EQ(connection.messageFilter, nullptr);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    CoUninitialize();
}

TEST_F(OutOfProcessTest, HostIsFoundByClass) {
    const struct {
        const char *name, *environment;
        const CLSID* argument;
        CLSID offered;
    } rows[] = {
        {"default", nullptr, nullptr, kHostClassId},
        {"environment", "{00000001-0002-0003-0405-060708090A0B}", nullptr, kOtherClass},
        {"environment without a class id", "Quorlane", nullptr, kHostClassId},
        {"empty environment", "", nullptr, kHostClassId},
        {"argument before environment", "{539DB5D0-C0C6-11D0-985E-0060970BEC0B}", &kOtherClass, kOtherClass},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        NoHost();
        Offer(row.offered, u"");
        test::RemoveVariable("QLGUID");
        if (row.environment != nullptr) {
            platform::SetEnvironmentValue("QLGUID", row.environment);
        }
        EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, row.argument), 0);
        Q_ApiDisconnect();
        DropClient();
        platform::OfferClass(row.offered, nullptr);
    }
}

TEST_F(OutOfProcessTest, HostIsFoundOnAServer) {
    NoHost();
    for (const CLSID* argument : {static_cast<const CLSID*>(nullptr), &kOtherClass}) {
        Offer(argument == nullptr ? kHostClassId : kOtherClass, u"author-1");
        EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, argument), -20) << "not on this machine";
        EXPECT_EQ(Q_ApiConnectHost(nullptr, "author-1", argument), 0);
        Q_ApiDisconnect();
        DropClient();
    }
}

TEST_F(OutOfProcessTest, MissingHostIsReported) {
    NoHost();
    EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), -20);
    EXPECT_EQ(Q_ApiLastError, -20);
    EXPECT_EQ(Q_ApiConnectHost(nullptr, "nowhere", nullptr), -20);
    EXPECT_STREQ(Q_ApiConnectOnce(), "Can't connect to Quorlane server");
    EXPECT_EQ(Q_ApiRunClient(), 1);
    EXPECT_EQ(Q_ApiLastError, -1) << "without a connection there is no console";
    // A later attempt uses the apartment and the filter of the first.
    Offer(kHostClassId, u"");
    EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    EXPECT_TRUE(connection.apartmentOwned);
    Q_ApiDisconnect();
}

TEST_F(OutOfProcessTest, ApartmentOfOtherCodeIsNotLeft) {
    CoInitialize(nullptr);
    EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    EXPECT_FALSE(connection.apartmentOwned);
    EXPECT_EQ(connection.messageFilter, nullptr);
    Q_ApiDisconnect();
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE) << "still entered";
    CoUninitialize();
    CoUninitialize();
}

TEST_F(OutOfProcessTest, FilterIsRevokedInAnApartmentThatOthersKeep) {
    EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    CoInitialize(nullptr);
    Q_ApiDisconnect();
    IMessageFilter* left = nullptr;
    EXPECT_EQ(CoRegisterMessageFilter(nullptr, &left), S_OK);
    EXPECT_EQ(left, nullptr);
    CoUninitialize();
}

TEST_F(OutOfProcessTest, CallsOfTheHostAreServedUntilTheQuitMessage) {
    CallInLoop([](IQuorlaneNotifications0& client) {
        client.Initialize(3);
        client.Notify(13, 4711, "first", -1);
        client.Message(std::intptr_t{1} << 40, 2, -3);
    });
    EXPECT_EQ(Q_ApiRunClient(), 0);
    EXPECT_EQ(callbackLog,
              Lines({"Initialize 3", "Notify 13 4711 [first] -1", "Message 1099511627776 2 -3"}));
    EXPECT_FALSE(Q_ApiIsConnected());
    EXPECT_FALSE(connection.apartmentOwned);

    DropClient();
    CallInLoop([](IQuorlaneNotifications0& client) { client.Notify(13, 0, "again", 0); });
    EXPECT_TRUE(connection.loopEnded);
    EXPECT_EQ(Q_ApiRunClient(), 0);
    EXPECT_EQ(callbackLog.back(), "Notify 13 0 [again] 0") << "a later run has a loop of its own";
}

TEST_F(OutOfProcessTest, LoopStopsAfterTheMessageThatStopsIt) {
    const std::uint32_t thread = platform::CurrentThreadNumber();
    bool late = false;
    platform::PostToThread(thread, Q_ApiStopLoop);
    platform::PostToThread(thread, [&late] { late = true; });
    EXPECT_EQ(Q_ApiRunClient(), 0);
    EXPECT_FALSE(late) << "later messages stay in the queue";
    std::int32_t integer = 5;
    EXPECT_EQ(Q_ApiPumpOneMessage(&integer), 0);
    EXPECT_EQ(integer, 0);
    EXPECT_TRUE(late);
    connection.loopEnded = false;
    PostQuitMessage(0);
    EXPECT_EQ(Q_ApiPumpOneMessage(nullptr), 0);
    EXPECT_TRUE(connection.loopEnded);
}

// A clock that advances only when a call waits or the test says so.
struct TestTime {
    std::uint32_t now = 0;
    std::vector<std::uint32_t> waits;
    platform::CallClock clock = {[this] { return now; },
                                 [this](std::uint32_t milliseconds) {
                                     waits.push_back(milliseconds);
                                     now += milliseconds;
                                 }};
};

TEST_F(OutOfProcessTest, CallToABusyHostIsRepeated) {
    TestTime time;
    ASSERT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    platform::ReplaceCallClock(&time.clock);
    int attempts = 0;
    Host().integerAnswer = 12;
    Host().onClient = [&](const std::string&) {
        time.now += 10;
        Host().failures["InvokeClient"] = ++attempts < 45 ? RPC_E_SERVERCALL_RETRYLATER : S_OK;
    };
    EXPECT_EQ(Q_ApiInvokeClient("Other", "Go"), 12);
    EXPECT_EQ(Q_ApiLastError, 0);
    EXPECT_EQ(attempts, 45);
    // No wait as long as a quarter of the elapsed time is below 100 ms, then a quarter of the elapsed time.
    EXPECT_EQ(time.waits, std::vector<std::uint32_t>({100, 127, 161, 204, 258}));
}

TEST_F(OutOfProcessTest, CallIsNotRepeatedAfterTheConnectionHasEnded) {
    const struct {
        const char* name;
        std::function<void()> end;
        bool keepsApartment;
    } rows[] = {
        {"the host drops the client", [this] { DropClient(); }, true},
        {"the client disconnects", [] { Q_ApiDisconnect(); }, false},
        {"the client makes a call and disconnects",
         [] {
             Q_ApiWriteConsole("ends");
             Q_ApiDisconnect();
             Q_ApiWriteConsole("ended");
         },
         false},
        {"the client disconnects during another call",
         [this] {
             Host().onClient = [](const std::string&) { Q_ApiDisconnect(); };
             Q_ValueList answer = Q_ApiInvokeClientForValues("Other", "End");
             Q_ApiFreeValueList(&answer);
         },
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        int attempts = 0;
        std::uint32_t now = 0;
        const platform::CallClock clock = {[&] { return now += 500; },
                                           [&](std::uint32_t) {
                                               row.end();
                                               EXPECT_EQ(Host().references, 1) << "held by the open call";
                                               EXPECT_TRUE(connection.apartmentOwned);
                                           }};
        Host().onClient = [&](const std::string&) { ++attempts; };
        Host().failures["InvokeClient"] = RPC_E_SERVERCALL_RETRYLATER;
        ASSERT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
        platform::ReplaceCallClock(&clock);
        EXPECT_EQ(Q_ApiInvokeClient("Other", "Go"), 0);
        platform::ReplaceCallClock(nullptr);
        EXPECT_EQ(attempts, 1);
        EXPECT_EQ(Q_ApiLastError, -1);
        EXPECT_EQ(Host().references, 0);
        EXPECT_EQ(connection.apartmentOwned, row.keepsApartment);
        EXPECT_EQ(connection.messageFilter != nullptr, row.keepsApartment);
        DropClient();
    }
}

TEST_F(OutOfProcessTest, ConnectingAgainDuringACallKeepsTheApartment) {
    std::uint32_t now = 0;
    const platform::CallClock clock = {[&] { return now += 500; },
                                       [&](std::uint32_t) {
                                           Q_ApiDisconnect();
                                           DropClient();
                                           EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
                                           Host().failures.clear();
                                       }};
    Host().failures["InvokeClient"] = RPC_E_SERVERCALL_RETRYLATER;
    ASSERT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    platform::ReplaceCallClock(&clock);
    Q_ApiInvokeClient("Other", "Go");
    EXPECT_TRUE(Q_ApiIsConnected() && connection.apartmentOwned && connection.messageFilter != nullptr);
    Q_ApiDisconnect();
    EXPECT_FALSE(connection.apartmentOwned);
}

TEST_F(OutOfProcessTest, CallIsNotRepeatedOnceAnotherHostIsConnected) {
    TestHost other;
    int attempts = 0;
    std::uint32_t now = 0;
    const platform::CallClock clock = {[&] { return now += 500; },
                                       [&](std::uint32_t) {
                                           Q_ApiDisconnect();
                                           NoHost();
                                           Offer(other, kHostClassId, u"");
                                           EXPECT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
                                           Host().failures.clear();
                                       }};
    Host().onClient = [&](const std::string&) { ++attempts; };
    Host().failures["InvokeClient"] = RPC_E_SERVERCALL_RETRYLATER;
    ASSERT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    platform::ReplaceCallClock(&clock);
    EXPECT_EQ(Q_ApiInvokeClient("Other", "Go"), 0);
    EXPECT_EQ(Q_ApiLastError, -1);
    EXPECT_EQ(attempts, 1);
    EXPECT_TRUE(Q_ApiIsConnected()) << "to the other host";
    Q_ApiDisconnect();
}

TEST_F(OutOfProcessTest, FilterOfOtherCodeStaysRegistered) {
    ASSERT_EQ(Q_ApiConnectHost(nullptr, nullptr, nullptr), 0);
    CoInitialize(nullptr);
    auto* other = new DefaultClientMessageFilterC;
    CoRegisterMessageFilter(other, nullptr);
    Q_ApiDisconnect();
    EXPECT_EQ(connection.messageFilter, nullptr);
    IMessageFilter* left = nullptr;
    EXPECT_EQ(CoRegisterMessageFilter(nullptr, &left), S_OK);
    ASSERT_EQ(left, other);
    left->Release();
    EXPECT_EQ(other->Release(), 0U);
    CoUninitialize();
}

}  // namespace
}  // namespace ventrix::test
