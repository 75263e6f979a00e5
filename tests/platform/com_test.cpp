#include "platform/com.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/com_runtime.h"
#include "platform/library.h"
#include "platform/server_call.h"

using namespace ventrix;
using namespace ventrix::platform;

namespace {

constexpr CLSID kClassId = {0x539DB5D0, 0xC0C6, 0x11D0, {0x98, 0x5E, 0x00, 0x60, 0x97, 0x0B, 0xEC, 0x0B}};

/// An object that counts its references and is not deleted with the last one.
template <typename Interface>
class Counted : public Interface {
  public:
    explicit Counted(REFIID id) : id_(id) {}
    HRESULT QueryInterface(REFIID id, void** object) override {
        const bool known = id == IID_IUnknown || id == id_;
        *object = known ? static_cast<Interface*>(this) : nullptr;
        references += known ? 1u : 0u;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }

    ULONG references = 1;

  private:
    IID id_;
};

using PlainObject = Counted<IUnknown>;

/// A factory for one object, to which it holds a reference until it is destroyed.
ClassFactory FactoryOf(PlainObject& object) {
    object.AddRef();
    const std::shared_ptr<PlainObject> held(&object, [](PlainObject* last) { last->Release(); });
    return [held](REFIID id, void** out) { return held->QueryInterface(id, out); };
}

class Filter : public Counted<IMessageFilter> {
  public:
    Filter() : Counted(IID_IMessageFilter) {}
    DWORD HandleInComingCall(DWORD, HTASK, DWORD, INTERFACEINFO*) override { return SERVERCALL_ISHANDLED; }
    DWORD RetryRejectedCall(HTASK, DWORD elapsed, DWORD rejectType) override {
        asked.emplace_back(elapsed, rejectType);
        return answer(elapsed);
    }
    DWORD MessagePending(HTASK, DWORD, DWORD) override { return PENDINGMSG_WAITDEFPROCESS; }

    std::vector<std::pair<DWORD, DWORD>> asked;
    std::function<DWORD(DWORD elapsed)> answer;
};

/// Enters the apartment for the length of a scope.
struct InApartment {
    InApartment() { CoInitialize(nullptr); }
    ~InApartment() { CoUninitialize(); }
};

int ServeOneMessage() {
    MSG message;
    if (GetMessageW(&message, nullptr, 0, 0) == 0) {
        return 0;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
    return 1;
}

static_assert(sizeof(IUnknown) == sizeof(void*) && sizeof(IStream) == sizeof(void*));
static_assert(sizeof(LARGE_INTEGER) == 8 && offsetof(STATSTG, grfStateBits) == 72);

TEST(ClassIds, AreReadFromTextInEitherCase) {
    CLSID id;
    EXPECT_EQ(CLSIDFromString(u"{539DB5D0-C0C6-11D0-985E-0060970BEC0B}", &id), S_OK);
    EXPECT_EQ(id, kClassId);
    EXPECT_EQ(CLSIDFromString(u"{539db5d0-c0c6-11d0-985e-0060970bec0b}", &id), S_OK);
    EXPECT_EQ(id, kClassId);
    for (const char16_t* text :
         {u"", u"539DB5D0-C0C6-11D0-985E-0060970BEC0B", u"{539DB5D0-C0C6-11D0-985E-0060970BEC0B",
          u"{539DB5D0-C0C6-11D0-985E-0060970BEC0B} ", u"{539DB5D0-C0C6-11D0-985E0-060970BEC0B}",
          u"{539DB5G0-C0C6-11D0-985E-0060970BEC0B}", u"{539DB5D0-C0C6-11D0-985E-0060970BEC0B\u0130"}) {
        EXPECT_EQ(CLSIDFromString(text, &id), CO_E_CLASSSTRING);
    }
    EXPECT_EQ(id, GUID{});
}

TEST(Apartment, IsCountedPerThread) {
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    std::thread([] { EXPECT_EQ(CoInitialize(nullptr), S_OK); }).join();
    CoUninitialize();
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    CoUninitialize();
    CoUninitialize();
    CoUninitialize();
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    CoUninitialize();
}

TEST(Apartment, OwnsAReferenceToItsMessageFilter) {
    Filter first;
    Filter second;
    EXPECT_EQ(CoRegisterMessageFilter(&first, nullptr), CO_E_NOTINITIALIZED);
    EXPECT_EQ(first.references, 1u);
    CoInitialize(nullptr);
    IMessageFilter* former = &second;
    EXPECT_EQ(CoRegisterMessageFilter(&first, &former), S_OK);
    EXPECT_EQ(former, nullptr);
    EXPECT_EQ(CoRegisterMessageFilter(&first, nullptr), S_OK);
    EXPECT_EQ(first.references, 2u);
    EXPECT_EQ(CoRegisterMessageFilter(&second, &former), S_OK);
    EXPECT_EQ(former, &first);
    EXPECT_EQ(first.references, 2u);
    CoUninitialize();
    EXPECT_EQ(second.references, 1u);
}

TEST(Activation, FindsAClassWhileItIsOffered) {
    PlainObject object(IID_IStream);
    void* out = &object;
    const auto create = [&] {
        return CoCreateInstance(kClassId, nullptr, CLSCTX_LOCAL_SERVER, IID_IStream, &out);
    };
    EXPECT_EQ(create(), CO_E_NOTINITIALIZED);
    EXPECT_EQ(out, nullptr);
    const InApartment apartment;
    EXPECT_EQ(create(), REGDB_E_CLASSNOTREG);
    OfferClass(kClassId, FactoryOf(object));
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(create(), S_OK);
    EXPECT_EQ(out, &object);
    EXPECT_EQ(object.references, 3u);
    EXPECT_EQ(CoCreateInstance(kClassId, nullptr, CLSCTX_LOCAL_SERVER, IID_IMessageFilter, &out),
              E_NOINTERFACE);
    EXPECT_EQ(CoCreateInstance(kClassId, &object, CLSCTX_LOCAL_SERVER, IID_IStream, &out),
              CLASS_E_NOAGGREGATION);
    OfferClass(kClassId, nullptr);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(create(), REGDB_E_CLASSNOTREG);
}

TEST(Activation, ServerIsReachedThroughOle32) {
    EXPECT_EQ(FindSymbol(OpenLibrary("OLE32.DLL"), "CoCreateInstanceFrom"), nullptr);
    auto* create = FindFunction<CoCreateInstanceExFunction>(OpenLibrary("ole32.dll"), "CoCreateInstanceEx");
    ASSERT_NE(create, nullptr);
    const InApartment apartment;
    PlainObject object(IID_IStream);
    OfferClass(kClassId, FactoryOf(object), u"press");
    char16_t name[] = u"press";
    COSERVERINFO server = {0, name, nullptr, 0};
    MULTI_QI queries[] = {{&IID_IStream, nullptr, E_FAIL}, {&IID_IMessageFilter, &object, E_FAIL}};
    EXPECT_EQ(create(kClassId, nullptr, 21, &server, 2, queries), CO_S_NOTALLINTERFACES);
    EXPECT_EQ(queries[0].hr, S_OK);
    EXPECT_EQ(queries[0].pItf, &object);
    EXPECT_EQ(queries[1].hr, E_NOINTERFACE);
    EXPECT_EQ(queries[1].pItf, nullptr);
    EXPECT_EQ(object.references, 3u);
    EXPECT_EQ(create(kClassId, nullptr, 21, &server, 1, queries), S_OK);
    EXPECT_EQ(create(kClassId, nullptr, 21, &server, 1, queries + 1), E_NOINTERFACE);
    EXPECT_EQ(create(IID_IStream, nullptr, 21, &server, 1, queries), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(create(kClassId, nullptr, 21, nullptr, 1, queries), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(queries[0].pItf, nullptr);
    EXPECT_EQ(create(kClassId, nullptr, 21, &server, 0, queries), E_INVALIDARG);
    OfferClass(kClassId, nullptr, u"press");
    EXPECT_EQ(create(kClassId, nullptr, 21, &server, 1, queries), RPC_S_SERVER_UNAVAILABLE_RESULT);
    EXPECT_EQ(queries[0].hr, RPC_S_SERVER_UNAVAILABLE_RESULT);
}

TEST(MessageQueue, ServesInOrderAndDeliversQuitLast) {
    std::string order;
    PostQuitMessage(0);
    for (const char letter : {'a', 'b', 'c'}) {
        EXPECT_TRUE(PostToThread(CurrentThreadNumber(), [&order, letter] { order += letter; }));
    }
    while (ServeOneMessage() != 0) {
    }
    EXPECT_EQ(order, "abc");
    // The quit message is removed by its delivery, and work whose message is not dispatched does not run.
    PostToThread(CurrentThreadNumber(), [&order] { order += 'd'; });
    MSG message;
    EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 1);
    message.wParam += 1;
    DispatchMessageW(&message);
    EXPECT_EQ(order, "abc");
}

TEST(MessageQueue, CallOnThreadReturnsAfterTheOtherThreadServedIt) {
    const std::uint32_t client = CurrentThreadNumber();
    std::thread::id servedOn;
    bool served = false;
    std::thread host([&] {
        served = CallOnThread(client, [&] { servedOn = std::this_thread::get_id(); });
        PostQuitToThread(client);
    });
    while (ServeOneMessage() != 0) {
    }
    host.join();
    EXPECT_TRUE(served);
    EXPECT_EQ(servedOn, std::this_thread::get_id());
    EXPECT_TRUE(CallOnThread(client, [&] { servedOn = {}; }));
    EXPECT_EQ(servedOn, std::thread::id());
}

TEST(MessageQueue, EndingThreadDropsItsWorkAndFailsWaitingCalls) {
    std::promise<std::uint32_t> number;
    std::promise<void> mayEnd;
    std::thread client([&] {
        number.set_value(CurrentThreadNumber());
        mayEnd.get_future().wait();
    });
    const std::uint32_t clientNumber = number.get_future().get();
    auto content = std::make_shared<int>(1);
    EXPECT_TRUE(PostToThread(clientNumber, [content] {}));
    std::thread ender([&] { mayEnd.set_value(); });
    EXPECT_FALSE(CallOnThread(clientNumber, [] {}));
    ender.join();
    client.join();
    EXPECT_EQ(content.use_count(), 1);
    EXPECT_FALSE(PostToThread(clientNumber, [] {}));
    EXPECT_FALSE(PostQuitToThread(clientNumber));
    EXPECT_FALSE(CallOnThread(clientNumber, [] {}));
}

/// A clock that advances by what is waited, and by one step each time it is read.
struct StepClock {
    std::uint32_t time = 0xFFFFFF00;  // Soon wraps around.
    std::uint32_t step = 0;
    std::vector<std::uint32_t> waits;

    CallClock Clock() {
        return {[this] { return time += step; },
                [this](std::uint32_t milliseconds) {
                    waits.push_back(milliseconds);
                    time += milliseconds;
                }};
    }
};

TEST(CallServer, RetriesAsTheFilterSaysUntilTheHostAccepts) {
    Filter filter;
    const InApartment apartment;
    filter.answer = [](DWORD elapsed) { return elapsed < 100 ? 99u : 150u; };
    CoRegisterMessageFilter(&filter, nullptr);
    StepClock time;
    time.step = 60;
    int calls = 0;
    const HRESULT result = CallServer(
        [&] {
            ++calls;
            return calls == 3 ? RPC_E_CALL_REJECTED : calls < 5 ? RPC_E_SERVERCALL_RETRYLATER : S_FALSE;
        },
        time.Clock());
    EXPECT_EQ(result, S_FALSE);
    EXPECT_EQ(filter.asked, (std::vector<std::pair<DWORD, DWORD>>{{60, SERVERCALL_RETRYLATER},
                                                                  {120, SERVERCALL_RETRYLATER},
                                                                  {330, SERVERCALL_REJECTED},
                                                                  {540, SERVERCALL_RETRYLATER}}));
    EXPECT_EQ(time.waits, (std::vector<std::uint32_t>{150, 150, 150}));
}

TEST(CallServer, GivesUpWithTheHostsResult) {
    StepClock time;
    const auto refuse = [](HRESULT with) { return [with] { return with; }; };
    EXPECT_EQ(CallServer(refuse(RPC_E_SERVERCALL_RETRYLATER), time.Clock()), RPC_E_SERVERCALL_RETRYLATER);
    Filter filter;
    const InApartment apartment;
    filter.answer = [](DWORD elapsed) { return elapsed >= 1000 ? 0xFFFFFFFFu : 500u; };
    CoRegisterMessageFilter(&filter, nullptr);
    EXPECT_EQ(CallServer(refuse(RPC_E_SERVERCALL_RETRYLATER), time.Clock()), RPC_E_SERVERCALL_RETRYLATER);
    EXPECT_EQ(CallServer(refuse(RPC_E_CALL_REJECTED), time.Clock()), RPC_E_CALL_REJECTED);
    EXPECT_EQ(time.waits.size(), 4u);
    EXPECT_EQ(CallServer(refuse(E_FAIL), time.Clock()), E_FAIL);
    EXPECT_EQ(filter.asked.size(), 6u);
}

TEST(CallServer, ServesCallsOfTheHostWhileItWaits) {
    Filter filter;
    const InApartment apartment;
    filter.answer = [](DWORD) { return 100u; };
    CoRegisterMessageFilter(&filter, nullptr);
    const std::uint32_t client = CurrentThreadNumber();
    std::atomic<bool> busy = true;
    bool messageRan = false;
    PostToThread(client, [&] { messageRan = true; });
    std::thread host([&] {
        CallOnThread(client, [] {});  // The host is busy until its own call to the client returns.
        busy = false;
    });
    EXPECT_EQ(CallServer([&] { return busy ? RPC_E_SERVERCALL_RETRYLATER : S_OK; }), S_OK);
    host.join();
    EXPECT_FALSE(messageRan);
    ServeOneMessage();
    EXPECT_TRUE(messageRan);
}

}  // namespace
