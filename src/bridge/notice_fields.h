// The string of notification 75, split into fields.
#pragma once

#include "bridge/callbacks.h"

namespace ventrix {

/// Splits the string at each record separator byte (0x1E). There is always a first field; null counts as the
/// empty string. The strings are in kit memory; free the record with FreeNoticeFields.
Q_NoticeFieldsRecord ParseNoticeFields(const char* text);
void FreeNoticeFields(Q_NoticeFieldsRecord* record);

}  // namespace ventrix
