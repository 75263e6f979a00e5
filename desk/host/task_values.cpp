#include "desk/host/task_values.h"

#include <cstring>

#include "platform/com.h"

namespace ventrix::desk {
namespace {

template <typename Item>
Item* TaskArray(std::size_t count) {
    void* block = CoTaskMemAlloc(count * sizeof(Item));
    return static_cast<Item*>(std::memset(block, 0, count * sizeof(Item)));
}

Q_ValueList EmptyList(std::size_t count) {
    return {static_cast<std::uint32_t>(count), count == 0 ? nullptr : TaskArray<Q_Value>(count)};
}

void FillValue(Q_Value& value, const AnswerValue& answer) {
    if (const auto* number = std::get_if<std::int32_t>(&answer)) {
        value.tag = kIntegerTag;
        value.number = *number;
    } else {
        value.tag = kTextTag;
        value.text = TaskText(std::get<std::string>(answer));
    }
}

void FreeTaskValue(Q_Value& value) {
    if (value.tag == kTextTag) {
        CoTaskMemFree(value.text);
    } else if (value.tag == kListTag) {
        FreeTaskList(*value.list);
        CoTaskMemFree(value.list);
    }
}

}  // namespace

char* TaskText(const std::string& text) {
    return static_cast<char*>(std::memcpy(CoTaskMemAlloc(text.size() + 1), text.c_str(), text.size() + 1));
}

Q_ValueList TaskList(const std::vector<AnswerValue>& values) {
    Q_ValueList list = EmptyList(values.size());
    for (std::uint32_t i = 0; i < list.count; ++i) {
        FillValue(list.items[i], values[i]);
    }
    return list;
}

Q_ValueList TaskTable(const std::vector<std::vector<AnswerValue>>& rows) {
    Q_ValueList list = EmptyList(rows.size());
    for (std::uint32_t i = 0; i < list.count; ++i) {
        list.items[i].tag = kListTag;
        list.items[i].list = TaskArray<Q_ValueList>(1);
        *list.items[i].list = TaskList(rows[i]);
    }
    return list;
}

void FreeTaskList(Q_ValueList& list) {
    for (std::uint32_t i = 0; i < list.count; ++i) {
        FreeTaskValue(list.items[i]);
    }
    CoTaskMemFree(list.items);
    list = {0, nullptr};
}

std::vector<AnswerValue> ReadList(const Q_ValueList* list) {
    std::vector<AnswerValue> values;
    for (std::uint32_t i = 0; list != nullptr && i < list->count; ++i) {
        const Q_Value& value = list->items[i];
        if (value.tag == kIntegerTag) {
            values.emplace_back(value.number);
        } else if (value.tag == kTextTag) {
            values.emplace_back(std::string(value.text == nullptr ? "" : value.text));
        }
    }
    return values;
}

std::string ReadTextProperty(const Q_PropList* list, std::int32_t number) {
    for (std::uint32_t i = 0; list != nullptr && i < list->count; ++i) {
        const Q_Prop& row = list->items[i];
        if (row.ident.number == number && row.value.tag == kTextTag && row.value.text != nullptr) {
            return row.value.text;
        }
    }
    return {};
}

}  // namespace ventrix::desk
