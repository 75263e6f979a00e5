// The host operations. Failures are tested in a table over all operations, and every test runs with a host
// that owns its results and with one that does not.
#include "bridge/host/operations.h"

#include <optional>

#include "bridge/bridge_test.h"
#include "bridge/connection.h"
#include "bridge/host/properties.h"
#include "bridge/host/values.h"
#include "kit/last_error.h"
#include "kit/memory.h"

namespace ventrix::test {
namespace {

// Frees the list. Whether it was empty.
bool WasEmpty(Q_ValueList list) {
    const bool empty = list.count == 0 && list.items == nullptr;
    Q_ApiFreeValueList(&list);
    return empty;
}

const Q_PropList kNoRows = {};
const Q_ValueList kNoValues = {};

// Each operation, with a call that returns whether it gave its failure result.
struct Operation {
    const char* name;
    const char* arguments;  ///< As the host logs them.
    unsigned interfaceNumber;
    bool hasStatus;
    bool (*gaveFailure)();
};

const Operation kOperations[] = {
    {"WatchNotification", "53 1", 4, true, [] { return Q_ApiWatchNotification(53, 1) != 0; }},
    {"SetTextMode", "1", 9, true, [] { return Q_ApiSetTextMode(1), Q_ApiLastError != 0; }},
    {"WriteConsole", "hello", 4, true, [] { return Q_ApiWriteConsole("hello") != 0; }},
    {"InvokeClient", "Dita OT: Save", 4, true, [] { return Q_ApiInvokeClient("Dita OT", "Save") == 0; }},
    {"InvokeClientForValues", "QlDispatcher: Choose", 12, true,
     [] { return WasEmpty(Q_ApiInvokeClientForValues("QlDispatcher", "Choose")); }},
    {"SendCallReply", "", 12, false, [] { return WasEmpty(Q_ApiSendCallReply(&kNoValues)); }},
    {"OpenDocument", "C:\\a.xml", 4, true,
     [] { return Q_ApiOpenDocument("C:\\a.xml", &kNoRows, nullptr) == 0; }},
    {"CloseDocument", "4711 1", 4, true, [] { return Q_ApiCloseDocument(4711, 1) != 0; }},
    {"ListDocumentFiles", "4711 16 0", 1, false,
     [] { return WasEmpty(Q_ApiListDocumentFiles(4711, 16, 0)); }},
    {"ReadStringProp", "0 4711 20", 4, true,
     [] {
         char* text = Q_ApiReadStringPropNum(0, 4711, 20);
         const bool failed = text == nullptr;
         Q_Free(text);
         return failed;
     }},
};

class OperationsTest : public BridgeTest, public ::testing::WithParamInterface<bool> {
  protected:
    void SetUp() override {
        BridgeTest::SetUp();
        Host().ownershipAnswer = GetParam() ? S_OK : S_FALSE;
        Host().integerAnswer = 12;
        Host().values = {Document("C:\\a.xml", 1), Text("second")};
        Host().documents[4711] = {"C:\\docs\\guide.ditamap", Host().values};
    }

    void Start() {
        ASSERT_EQ(Connect(), 0);
        Host().log.clear();
        Q_ApiLastError = 0;
    }

    void TearDown() override {
        // The list of open results outlives the connection.
        Q_PropList* results = nullptr;
        if (connection.hostInterfaces[kMainHostInterface - 1] != nullptr) {
            Host().failures.erase("OpenDocument");
            Q_ApiOpenDocument("any", &kNoRows, &results);
            Q_ApiFreePropList(results);
        }
        BridgeTest::TearDown();
    }
};

INSTANTIATE_TEST_SUITE_P(HostOwnsResults, OperationsTest, ::testing::Bool());

TEST_P(OperationsTest, EachFailsWithoutAConnection) {
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        Q_ApiLastError = 0;
        EXPECT_TRUE(operation.gaveFailure());
        EXPECT_EQ(Q_ApiLastError, -1);
    }
    EXPECT_EQ(Q_ApiWatchNotification(53, 1), -1);
    EXPECT_EQ(Q_ApiWriteConsole("hello"), -1);
    EXPECT_EQ(Q_ApiCloseDocument(1, 1), -1);
}

TEST_P(OperationsTest, EachFailsIfItsInterfaceIsMissing) {
    Host().missingInterfaces = {1, 9, 12};
    Start();
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        Q_ApiLastError = 0;
        const bool missing = Host().missingInterfaces.contains(operation.interfaceNumber);
        EXPECT_EQ(operation.gaveFailure(), missing);
        EXPECT_EQ(Q_ApiLastError, missing ? -1 : 0);
    }
}

TEST_P(OperationsTest, EachCallsTheHostOnceWithItsArguments) {
    Start();
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        Host().log.clear();
        EXPECT_FALSE(operation.gaveFailure());
        EXPECT_EQ(Host().log, Lines({std::string(operation.name) + " " + operation.arguments}));
        EXPECT_EQ(Q_ApiLastError, 0);
    }
}

TEST_P(OperationsTest, FailedCallSetsTheErrorValue) {
    Start();
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        for (const auto& [result, error] :
             {std::pair(RPC_E_SERVERCALL_RETRYLATER, -88), {E_FAIL, -1}, {RPC_E_CALL_REJECTED, -1}}) {
            Host().failures[operation.name] = result;
            Q_ApiLastError = 0;
            EXPECT_TRUE(operation.gaveFailure());
            EXPECT_EQ(Q_ApiLastError, error);
        }
        Host().failures.erase(operation.name);
        operation.gaveFailure();
        EXPECT_EQ(Q_ApiLastError, -1) << "success does not change the error value";
    }
}

TEST_P(OperationsTest, StatusOfTheHostBecomesTheErrorValue) {
    Start();
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        Host().statuses[operation.name] = 5;
        Q_ApiLastError = 0;
        EXPECT_EQ(operation.gaveFailure(), operation.hasStatus);
        EXPECT_EQ(Q_ApiLastError, operation.hasStatus ? 5 : 0);
    }
    EXPECT_EQ(Q_ApiCloseDocument(1, 1), 5);
    EXPECT_EQ(Q_ApiInvokeClient("Dita OT", "Save"), 0);
}

TEST_P(OperationsTest, ListsAreDeepCopies) {
    Start();
    for (Q_ValueList list :
         {Q_ApiListDocumentFiles(4711, 16, 0), Q_ApiInvokeClientForValues("Other", "Ask")}) {
        EXPECT_EQ(Print(list), R"(["documentType" "C:\a.xml" 1] "second")");
        Q_ApiFreeValueList(&list);
    }
    EXPECT_EQ(Q_ApiInvokeClient("Dita OT", "Save"), 12);
}

TEST_P(OperationsTest, NullStringOfTheHostIsNotAFailure) {
    Start();
    EXPECT_EQ(Q_ApiReadStringPropNum(0, 0, 89), nullptr);
    EXPECT_EQ(Q_ApiLastError, 0);
}

TEST_P(OperationsTest, ReplyReachesTheHostAndStaysTheCallers) {
    Start();
    Q_Value reply = InKit(Fields({Number(-43), Text(""), Text("log")}));
    WasEmpty(Q_ApiSendCallReply(reply.list));
    EXPECT_EQ(Host().log.back(), R"(SendCallReply -43 "" "log")");
    EXPECT_EQ(Print(reply), R"([-43 "" "log"])");
    Q_ApiFreeValue(&reply);
}

TEST_P(OperationsTest, OpenResultsShareOneList) {
    Host().openResults.push_back({0, "title", Text("Guide")});
    Start();
    Q_PropList* results = nullptr;
    EXPECT_EQ(Q_ApiOpenDocument("C:\\a.xml", &kNoRows, &results), 4711U);
    ASSERT_NE(results, nullptr);
    EXPECT_EQ(Print(*results), Lines({R"(9="opened")", R"(title="Guide")"}));

    // The next open frees the rows of the list that it gets, here a list of the caller, and refills its own.
    Q_PropList* const first = results;
    Q_PropList own = {};
    Q_ApiSetPropString(&own, 1, "own row");
    Q_PropList* second = &own;
    Q_ApiOpenDocument("C:\\b.xml", &kNoRows, &second);
    EXPECT_EQ(second, first);
    EXPECT_EQ(own.count, 0U);
    EXPECT_EQ(first->count, 2U);

    Q_ApiFreePropList(results);
    EXPECT_EQ(first->count, 0U);
    EXPECT_EQ(first->items, nullptr);
}

TEST_P(OperationsTest, OpenThatReachedTheHostSetsTheResultsPointer) {
    Start();
    Q_PropList* results = nullptr;
    Host().failures["OpenDocument"] = E_FAIL;
    EXPECT_EQ(Q_ApiOpenDocument("C:\\a.xml", &kNoRows, &results), 0U);
    EXPECT_EQ(results, nullptr);

    Host().failures.clear();
    Host().statuses["OpenDocument"] = 5;
    EXPECT_EQ(Q_ApiOpenDocument("C:\\a.xml", &kNoRows, &results), 0U);
    ASSERT_NE(results, nullptr) << "whatever the status";
    EXPECT_EQ(results->count, 1U);
    EXPECT_EQ(Q_ApiLastError, 5);
}

TEST_P(OperationsTest, NotificationDuringACallIsServedInsideIt) {
    Start();
    Host().onClient = [this](const std::string&) { Host().Notifications()->Notify(13, 0, "Validate", 0); };
    whileNotified = [] {
        Q_Value reply = InKit(Fields({Number(0)}));
        WasEmpty(Q_ApiSendCallReply(reply.list));
        Q_ApiFreeValue(&reply);
    };
    EXPECT_EQ(Q_ApiInvokeClient("Other", "Go"), 12);
    EXPECT_EQ(callbackLog, Lines({"Notify 13 0 [Validate] 0"}));
    EXPECT_EQ(Host().log, Lines({"InvokeClient Other: Go", "SendCallReply 0"}));
}

}  // namespace
}  // namespace ventrix::test
