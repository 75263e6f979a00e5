#include "bridge/host/properties.h"

#include "kit/memory.h"

namespace ventrix {
namespace {

void ReleaseName(Q_Prop* row, Q_ReleaseFunction release) {
    if (row->ident.number == 0) {
        if (row->ident.name != nullptr) {
            release(row->ident.name);
        }
        row->ident.name = nullptr;
    }
}

void ReleaseRow(Q_Prop* row, Q_ReleaseFunction release) {
    ReleaseName(row, release);
    Q_ReleaseValueWith(&row->value, release);
}

std::uint32_t CapacityFor(std::uint32_t count) {
    std::uint32_t capacity = 8;
    while (capacity <= count) {
        capacity *= 2;
    }
    return capacity;
}

// A new last row, or null if memory runs out; the list is then unchanged.
Q_Prop* AppendRow(Q_PropList* list) {
    if (list->items == nullptr) {
        list->count = 0;
    }
    const auto size = static_cast<std::uint32_t>(CapacityFor(list->count) * sizeof(Q_Prop));
    void* grown = Q_Realloc(list->items, size, 0);
    if (grown == nullptr) {
        return nullptr;
    }
    list->items = static_cast<Q_Prop*>(grown);
    Q_Prop* row = &list->items[list->count++];
    *row = {};
    return row;
}

Q_Prop* RowToWrite(Q_PropList* list, std::int32_t number) {
    const std::int32_t index = Q_ApiFindProp(list, number);
    if (index == kPropNotFound) {
        return AppendRow(list);
    }
    ReleaseRow(&list->items[index], Q_KitRelease);
    return &list->items[index];
}

}  // namespace

std::int32_t Q_ApiFindProp(const Q_PropList* list, std::int32_t number) {
    if (list == nullptr || list->items == nullptr) {
        return kPropNotFound;
    }
    for (std::uint32_t i = 0; i < list->count; ++i) {
        if (list->items[i].ident.number == number) {
            return static_cast<std::int32_t>(i);
        }
    }
    return kPropNotFound;
}

void Q_ApiSetProp(Q_PropList* list, std::int32_t number, const Q_Value* value) {
    // Copied first, since the value may belong to the row that is overwritten.
    Q_Value copy = Q_ApiCopyValue(value);
    Q_Prop* row = RowToWrite(list, number);
    if (row == nullptr) {
        Q_ApiFreeValue(&copy);
        return;
    }
    *row = {{number, nullptr}, copy};
}

void Q_ApiSetPropString(Q_PropList* list, std::int32_t number, const char* text) {
    Q_Value value = {};
    value.tag = kTextTag;
    // The value is only read; the list gets a copy.
    value.text = const_cast<char*>(text);
    Q_ApiSetProp(list, number, &value);
}

void Q_ApiFreePropList(Q_PropList* list) {
    if (list != nullptr) {
        Q_ReleasePropListWith(list, Q_KitRelease);
    }
}

void Q_CopyPropListWith(Q_PropList* out, const Q_PropList* source, Q_AllocFunction allocate) {
    *out = {};
    if (source->items == nullptr) {
        return;
    }
    out->items = static_cast<Q_Prop*>(allocate(source->count * sizeof(Q_Prop)));
    if (out->items == nullptr) {
        return;
    }
    for (; out->count < source->count; ++out->count) {
        const Q_Prop& from = source->items[out->count];
        Q_Prop* row = &out->items[out->count];
        row->ident = {from.ident.number, nullptr};
        if (from.ident.number == 0) {
            Q_CopyTextWith(&row->ident.name, &from.ident.name, allocate);
        }
        Q_CopyValueWith(&row->value, &from.value, allocate);
    }
}

void Q_ReleasePropListWith(Q_PropList* list, Q_ReleaseFunction release) {
    for (std::uint32_t i = 0; list->items != nullptr && i < list->count; ++i) {
        ReleaseRow(&list->items[i], release);
    }
    if (list->items != nullptr) {
        release(list->items);
    }
    *list = {};
}

}  // namespace ventrix
