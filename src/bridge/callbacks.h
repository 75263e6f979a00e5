// What the host says to a client, as plain functions that the client defines. They are bound when the program
// is linked; the kit has a default for each that a client leaves out, and the defaults do nothing, but for
// GetResource. Texts are the caller's.
#pragma once

#include <cstdint>

#include "bridge/contract/notification_interfaces.h"

namespace ventrix {

/// The text of notification 75, parsed. The record and its texts live until Notify returns.
struct Q_NoticeFieldsRecord {
    char* fields[6];             ///< The first six pieces; null where there are fewer.
    std::uint32_t furtherCount;  ///< The pieces behind the sixth.
    char** further;              ///< Null without any.
};

static_assert(sizeof(Q_NoticeFieldsRecord) == 64 && offsetof(Q_NoticeFieldsRecord, further) == 56);

constexpr std::int32_t kNoticeFieldsNotification = 75;

void Initialize(std::int32_t code);

/// For notification 75 the text argument holds the address of a Q_NoticeFieldsRecord.
void Notify(std::int32_t number, std::uint32_t objectId, const char* text, std::int32_t integer);

void Command(std::int32_t command);
void DialogEvent(std::int32_t first, std::int32_t second, std::int32_t third);
void Message(std::intptr_t value, std::int32_t first, std::int32_t second);
void HtmlDialogEventEx(std::int32_t event, std::intptr_t first, std::intptr_t second);

/// The record arrives zeroed. Text and array stay the client's; the kit copies them.
void CMSCommand(std::int32_t command, const char* text, std::int32_t integer, std::intptr_t value,
                Q_CmsRecord* record);

/// Stores the address of the resource's bytes, which stay where they are, or leaves it null. The size in
/// bytes.
std::uint32_t GetResource(void* module, std::uint32_t type, const char* name, const void** data);

}  // namespace ventrix
