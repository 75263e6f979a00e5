// Values that cross from the host to a client, in task memory, and what comes back read into records of the
// desk host. Whoever makes a task text or list owns it until it is handed out. Texts are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "bridge/contract/properties.h"
#include "bridge/contract/values.h"
#include "desk/clients/client.h"

namespace ventrix::desk {

/// A terminated copy in task memory.
char* TaskText(const std::string& text);

/// One value of tag 1 or 3 for each element.
Q_ValueList TaskList(const std::vector<AnswerValue>& values);

/// A list whose values have tag 20, one for each row.
Q_ValueList TaskTable(const std::vector<std::vector<AnswerValue>>& rows);

/// Frees what TaskList and TaskTable made, level by level.
void FreeTaskList(Q_ValueList& list);

/// The numbers and texts of a client's list; a null text reads as empty, values of other tags are left out.
std::vector<AnswerValue> ReadList(const Q_ValueList* list);

/// The text of a numbered property; empty if the list has none.
std::string ReadTextProperty(const Q_PropList* list, std::int32_t number);

}  // namespace ventrix::desk
