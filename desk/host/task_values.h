// Conversion between the desk host's values and those of the contract. What the host hands out is created in
// task memory; the caller owns it until it is handed out. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "bridge/contract/properties.h"
#include "bridge/contract/values.h"
#include "desk/clients/client.h"

namespace ventrix::desk {

/// A terminated copy in task memory.
char* TaskText(const std::string& text);

/// A list with a value of tag 1 or 3 for each element.
Q_ValueList TaskList(const std::vector<AnswerValue>& values);

/// A list with a value of tag 20 for each row.
Q_ValueList TaskTable(const std::vector<std::vector<AnswerValue>>& rows);

/// Frees a list of TaskList or TaskTable with everything in it, and empties it.
void FreeTaskList(Q_ValueList& list);

/// The numbers and strings of a client's list. A null string counts as empty; values of other tags are
/// skipped. The list may be null.
std::vector<AnswerValue> ReadList(const Q_ValueList* list);

/// The string of the property with this number; empty if the list, which may be null, has none.
std::string ReadTextProperty(const Q_PropList* list, std::int32_t number);

}  // namespace ventrix::desk
