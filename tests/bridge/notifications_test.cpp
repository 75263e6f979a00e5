#include "bridge/notifications.h"

#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "bridge/bridge_test.h"
#include "bridge/connection.h"
#include "kit/console.h"
#include "kit/memory.h"
#include "platform/library.h"
#include "platform/module.h"
#include "support/test_drives.h"

namespace ventrix::test {
namespace {

class NotificationsTest : public BridgeTest {
  protected:
    void SetUp() override {
        BridgeTest::SetUp();
        ASSERT_EQ(Connect(), 0);
        object_ = Host().Notifications();
    }

    IQuorlaneNotifications0* object_ = nullptr;
};

// The interface with this id; the test releases it.
template <class Interface>
Interface* Query(IUnknown* object, const GUID& id) {
    void* found = nullptr;
    EXPECT_EQ(object->QueryInterface(id, &found), S_OK);
    return static_cast<Interface*>(found);
}

TEST_F(NotificationsTest, EachInterfaceLeadsToAllOthers) {
    auto* primary = Query<IUnknown>(object_, IID_IUnknown);
    for (const GUID& id : {kCmsNotifications0Id, kNotifications0Id, kNotifications1Id, IID_IUnknown}) {
        auto* other = Query<IUnknown>(primary, id);
        EXPECT_EQ(other->AddRef(), 4U) << "one count for all interfaces";
        EXPECT_EQ(primary->Release(), 3U);
        auto* back = Query<IUnknown>(other, IID_IUnknown);
        EXPECT_EQ(back, primary);
        back->Release();
        other->Release();
    }
    EXPECT_EQ(primary->Release(), 1U);
}

TEST_F(NotificationsTest, UnknownInterfaceIsRefused) {
    void* found = this;
    EXPECT_EQ(object_->QueryInterface(IID_IStream, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(object_->AddRef(), 2U);
    EXPECT_EQ(object_->Release(), 1U);
}

// Calls a method by its index in the method table, as a host does.
template <class Result, class... Arguments>
Result CallSlot(IUnknown* object, unsigned index, Arguments... arguments) {
    void* const* methods = *reinterpret_cast<void* const* const*>(object);
    return reinterpret_cast<Result (*)(void*, Arguments...)>(methods[index])(object, arguments...);
}

TEST_F(NotificationsTest, MethodsAreAtTheIndicesOfTheContract) {
    EXPECT_EQ(CallSlot<HRESULT>(object_, 3, 7), S_OK);
    EXPECT_EQ(CallSlot<HRESULT>(object_, 5, 1), S_OK);
    EXPECT_EQ(CallSlot<HRESULT>(object_, 6, std::intptr_t{-5}, 6, 7), S_OK);
    EXPECT_EQ(CallSlot<HRESULT>(object_, 7, 1, 2, 3), S_OK);
    EXPECT_EQ(CallSlot<HRESULT>(object_, 8, 13, 4000000000U, static_cast<const char*>("Foo"), -2), S_OK);
    auto* first = Query<IUnknown>(object_, kNotifications1Id);
    EXPECT_EQ(CallSlot<HRESULT>(first, 3, 1, std::intptr_t{2}, std::intptr_t{3}), S_OK);
    first->Release();
    auto* cms = Query<IUnknown>(object_, kCmsNotifications0Id);
    Q_CmsRecord record = {};
    EXPECT_EQ(CallSlot<HRESULT>(cms, 3, 2, static_cast<const char*>("in"), 5, std::intptr_t{6}, &record),
              S_OK);
    cms->Release();
    Q_Free(record.numbers);
    EXPECT_EQ(callbackLog, Lines({"Initialize 7", "Message -5 6 7", "Notify 13 4000000000 [Foo] -2",
                                  "HtmlDialogEventEx 1 2 3", "CMSCommand 2 [in] 5 6"}));
    EXPECT_EQ(CallSlot<HRESULT>(object_, 4), S_OK);
    EXPECT_FALSE(connection.kitReady) << "Quit clears a flag and calls no callback";
    EXPECT_EQ(callbackLog.size(), 5U);
    EXPECT_TRUE(Q_ApiIsConnected());
}

TEST_F(NotificationsTest, StringOfNotification75ArrivesAsFields) {
    const struct {
        const char *text, *record;
    } rows[] = {
        {"whole", "[whole]<null><null><null><null><null> 0 "},
        {"", "[]<null><null><null><null><null> 0 "},
        {nullptr, "[]<null><null><null><null><null> 0 "},
        {"a\036", "[a][]<null><null><null><null> 0 "},
        {"a\036\036c", "[a][][c]<null><null><null> 0 "},
        {"1\0362\0363\0364\0365\0366", "[1][2][3][4][5][6] 0 "},
        {"1\0362\0363\0364\0365\0366\0367\036", "[1][2][3][4][5][6] 2 [7][]"},
    };
    for (const auto& row : rows) {
        callbackLog.clear();
        EXPECT_EQ(object_->Notify(75, 9, row.text, 1), S_OK);
        EXPECT_EQ(callbackLog, Lines({"Notify 75 9 " + std::string(row.record) + " 1"}));
    }
    callbackLog.clear();
    object_->Notify(76, 9, "a\036b", 1);
    EXPECT_EQ(callbackLog, Lines({"Notify 76 9 [a\036b] 1"})) << "other numbers keep their string";
}

TEST_F(NotificationsTest, ResourcesOfTheModuleAreHandedOut) {
    constexpr platform::NamedResource kNamed[] = {{10, "PAGE", {"<p/>\0x", 6}}, {11, "NONE", {"", 0}}};
    const platform::ModuleResources resources = {{}, {}, kNamed};
    platform::BindResources(&moduleMark_, &resources);
    Q_ResourceRecord record = {};
    EXPECT_EQ(object_->GetResource(10, "page", &record), S_OK);
    ASSERT_EQ(record.size, 6U);
    EXPECT_EQ(std::memcmp(record.data, "<p/>\0x", 6), 0);
    CoTaskMemFree(record.data);

    Q_ResourceRecord untouched = {77, &record};
    EXPECT_EQ(object_->GetResource(10, "other", &untouched), E_FAIL);
    EXPECT_EQ(object_->GetResource(12, "page", &untouched), E_FAIL);
    EXPECT_EQ(object_->GetResource(10, nullptr, &untouched), E_FAIL);
    EXPECT_EQ(untouched.size, 77U);
    EXPECT_EQ(untouched.data, &record);
    platform::BindResources(&moduleMark_, nullptr);
}

TEST_F(NotificationsTest, ResourceTypeZeroIsThePathOfTheModule) {
    connection.module = platform::MainModule();
    const std::string path = platform::ModuleFileName(connection.module);
    Q_ResourceRecord record = {};
    ASSERT_LT(path.size(), 260U);
    EXPECT_EQ(object_->GetResource(0, nullptr, &record), S_OK);
    EXPECT_EQ(record.size, path.size() + 1);
    EXPECT_STREQ(static_cast<const char*>(record.data), path.c_str());
    CoTaskMemFree(record.data);

    connection.module = &moduleMark_;
    EXPECT_EQ(object_->GetResource(0, nullptr, &record), E_FAIL) << "not a module handle";
}

TEST_F(NotificationsTest, PathOfTheModuleHasAtMost259Bytes) {
    const TestDrives drives;
    const std::string folder = "C:\\" + std::string(200, 'x') + "\\";
    drives.MakeFolder(folder);
    for (const std::size_t length : {259U, 260U}) {
        const std::string path = folder + std::string(length - folder.size(), 'm');
        std::filesystem::copy_file(VENTRIX_TEST_LIBRARY, drives.Native(path));
        connection.module = platform::OpenLibrary(path);
        ASSERT_EQ(platform::ModuleFileName(connection.module), path);
        Q_ResourceRecord record = {};
        EXPECT_EQ(object_->GetResource(0, nullptr, &record), length < 260 ? S_OK : E_FAIL);
        EXPECT_EQ(record.size, length < 260 ? length + 1 : 0);
        CoTaskMemFree(record.data);
    }
}

TEST_F(NotificationsTest, CmsCommandHandsOutCopies) {
    auto* cms = Query<IQuorlaneCMSNotifications0>(object_, kCmsNotifications0Id);
    Q_CmsRecord record = {};
    EXPECT_EQ(cms->CMSCommand(1, "in", 5, 6, &record), S_OK);
    EXPECT_EQ(record.head[7], 8);
    EXPECT_EQ(record.tail[3], 12);
    EXPECT_STREQ(record.text, "checked in");
    ASSERT_EQ(record.count, 2U);
    EXPECT_EQ(record.numbers[1], -8);
    Q_Free(record.text);
    Q_Free(record.numbers);

    EXPECT_EQ(cms->CMSCommand(2, "in", 5, 6, &record), S_OK);
    EXPECT_EQ(record.text, nullptr);
    EXPECT_EQ(record.count, 0U);
    EXPECT_NE(record.numbers, nullptr) << "an empty array is a block too";
    Q_Free(record.numbers);

    EXPECT_EQ(cms->CMSCommand(3, "in", 5, 6, &record), S_OK);
    EXPECT_EQ(record.count, 0U) << "an array of more than 4 GiB cannot be copied";
    EXPECT_EQ(record.numbers, nullptr);
    cms->Release();
}

TEST_F(NotificationsTest, ExceptionOfACallbackGoesToTheConsole) {
    Host().log.clear();
    whileNotified = [] { throw std::runtime_error("no memory"); };
    EXPECT_EQ(object_->Notify(13, 0, "Foo", 0), S_OK);
    whileNotified = [] { throw 5; };
    EXPECT_EQ(object_->Notify(75, 0, "a", 0), S_OK);
    EXPECT_EQ(Host().log, Lines({"WriteConsole A call from the host ended early: no memory\n",
                                 "WriteConsole A call from the host ended early: unknown reason\n"}));
}

// The host may add and release a reference while the destructor runs.
TEST_F(NotificationsTest, ObjectThatIsUsedInItsDestructorIsDestroyedOnce) {
    struct Prober final : ComUltraliteC {
        IUnknown* object = nullptr;
        int released = 0;
        ULONG Release() override {
            ++released;
            object->AddRef();
            object->Release();
            return 1;
        }
    } prober;
    prober.object = object_;
    connection.keepAlive = &prober;
    Host().DropClient();
    EXPECT_EQ(prober.released, 1);
    EXPECT_EQ(Host().references, 0);
}

}  // namespace
}  // namespace ventrix::test
