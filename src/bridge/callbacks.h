// The calls that a client receives from the host, as plain functions that the client defines. The linker
// binds them; for each function that a client does not define, it takes the kit's default. The defaults do
// nothing, except that of GetResource. String arguments stay the caller's and are in the connection's text
// mode.
#pragma once

#include <cstdint>

#include "bridge/contract/notification_interfaces.h"

namespace ventrix {

/// The fields of notification 75. The record and its strings live until Notify returns.
struct Q_NoticeFieldsRecord {
    char* fields[6];             ///< The first six fields; null where there are fewer.
    std::uint32_t furtherCount;  ///< Fields after the sixth.
    char** further;              ///< Null if there are none.
};

static_assert(sizeof(Q_NoticeFieldsRecord) == 64 && offsetof(Q_NoticeFieldsRecord, further) == 56);

constexpr std::int32_t kNoticeFieldsNotification = 75;

void Initialize(std::int32_t code);

/// For notification 75, `text` is the address of a Q_NoticeFieldsRecord.
void Notify(std::int32_t number, std::uint32_t objectId, const char* text, std::int32_t integer);

void Command(std::int32_t command);
void DialogEvent(std::int32_t first, std::int32_t second, std::int32_t third);
void Message(std::intptr_t value, std::int32_t first, std::int32_t second);
void HtmlDialogEventEx(std::int32_t event, std::intptr_t first, std::intptr_t second);

/// The record is zeroed on entry. The string and the array that it refers to stay the client's; the kit
/// copies them.
void CMSCommand(std::int32_t command, const char* text, std::int32_t integer, std::intptr_t value,
                Q_CmsRecord* record);

/// Stores the address of the resource's bytes, which stay the module's, and returns their number. Leaves
/// `data` null if there is no such resource. The default reads the module's own resources.
std::uint32_t GetResource(void* module, std::uint32_t type, const char* name, const void** data);

}  // namespace ventrix
