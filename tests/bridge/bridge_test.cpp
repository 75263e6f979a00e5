#include "bridge/bridge_test.h"

#include "bridge/callbacks.h"
#include "bridge/connection.h"
#include "bridge/host/values.h"
#include "kit/console.h"
#include "kit/last_error.h"

namespace ventrix {
namespace {

std::string Piece(const char* text) {
    return text == nullptr ? "<null>" : "[" + std::string(text) + "]";
}

std::string NoticeFields(const char* text) {
    const auto* record = reinterpret_cast<const Q_NoticeFieldsRecord*>(text);
    std::string line;
    for (const char* field : record->fields) {
        line += Piece(field);
    }
    line += " " + std::to_string(record->furtherCount) + " ";
    for (std::uint32_t i = 0; i < record->furtherCount; ++i) {
        line += Piece(record->further[i]);
    }
    return line;
}

}  // namespace

using test::callbackLog;
using test::Line;

void Initialize(std::int32_t code) {
    callbackLog.push_back("Initialize " + Line(code));
}

void Notify(std::int32_t number, std::uint32_t objectId, const char* text, std::int32_t integer) {
    const std::string texts = number == kNoticeFieldsNotification ? NoticeFields(text) : Piece(text);
    callbackLog.push_back("Notify " + Line(number, objectId) + " " + texts + " " + Line(integer));
    if (test::whileNotified) {
        test::whileNotified();
    }
}

void Message(std::intptr_t value, std::int32_t first, std::int32_t second) {
    callbackLog.push_back("Message " + Line(value, first, second));
}

void HtmlDialogEventEx(std::int32_t event, std::intptr_t first, std::intptr_t second) {
    callbackLog.push_back("HtmlDialogEventEx " + Line(event, first, second));
}

// Command 1 gives a string and two numbers, 3 a count of numbers whose size in bytes exceeds 32 bits, any
// other an empty record.
void CMSCommand(std::int32_t command, const char* text, std::int32_t integer, std::intptr_t value,
                Q_CmsRecord* record) {
    static char answer[] = "checked in";
    static std::int32_t numbers[] = {7, -8};
    callbackLog.push_back("CMSCommand " + Line(command) + " " + Piece(text) + " " + Line(integer, value));
    if (command == 1) {
        *record = {{1, 2, 3, 4, 5, 6, 7, 8}, answer, 2, {9, 10, 11, 12}, numbers};
    } else if (command == 3) {
        *record = {{}, nullptr, 0x40000001, {}, numbers};
    }
}

namespace test {

Lines callbackLog;
std::function<void()> whileNotified;

void BridgeTest::SetUp() {
    callbackLog.clear();
    whileNotified = nullptr;
    Q_ApiLastError = 0;
    blocksBefore_ = LiveBlocks();
    host_ = std::make_unique<TestHost>();
}

void BridgeTest::TearDown() {
    FailKitAllocation(0);
    host_->DropClient();
    Q_ApiDisconnect();
    EXPECT_EQ(host_->references, 0);
    host_.reset();
    EXPECT_EQ(LiveBlocks().kit, blocksBefore_.kit) << "blocks of kit memory";
    EXPECT_EQ(LiveBlocks().task, blocksBefore_.task) << "blocks of task memory";
    EXPECT_EQ(TakeBlockMisuses(), Lines());
    EXPECT_EQ(connection.notifications, nullptr);
    EXPECT_EQ(connection.keepAlive, nullptr);
    connection = {};
    Q_ConsoleHook = nullptr;
}

std::int32_t BridgeTest::Connect() {
    const Q_PropList none = {};
    return Q_ApiClientInit(&moduleMark_, host_->Root(), nullptr, &none);
}

Q_Value InKit(const HostValue& value) {
    return MakeValue(value, Q_KitAlloc);
}

}  // namespace test
}  // namespace ventrix
