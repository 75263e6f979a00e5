#include "bridge/host/values.h"

#include <cstring>
#include <utility>
#include <vector>

#include "bridge/host/value_shapes.h"
#include "kit/memory.h"
#include "kit/text/strings.h"

namespace ventrix {
namespace {

// Two ways of copying share the code below, since they differ only in details. A value is copied in three
// steps: its plain bytes, then the block that its tag owns, then each string and string list within that
// block. The table in value_shapes.cpp defines which those are.
//
// Within the kit, memory is zeroed, a null string becomes the empty string, and an array keeps its count even
// if it could not be copied. Across the boundary bytes are copied as they are, and the count of an array that
// is missing becomes 0: the other side would read past it.
struct CopyRules {
    Q_AllocFunction allocate;
    bool boundary;
};

char* CopyText(const char* text, const CopyRules& rules) {
    if (text == nullptr && rules.boundary) {
        return nullptr;
    }
    const char* source = text == nullptr ? "" : text;
    const std::size_t size = std::strlen(source) + 1;
    void* copy = rules.allocate(size);
    return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, source, size));
}

// A new array with the bytes of the source's elements. What an element owns is still the source's until the
// caller replaces it.
void* CopyArrayBytes(const void* source, std::uint32_t* count, std::size_t elementSize,
                     const CopyRules& rules) {
    if (rules.boundary && source == nullptr) {
        *count = 0;
    }
    const std::size_t size = *count * elementSize;
    void* items = rules.allocate(size);
    if (rules.boundary && items == nullptr) {
        *count = 0;
    }
    if (items != nullptr && source != nullptr && size != 0) {
        std::memcpy(items, source, size);
    }
    return items;
}

void CopyStrings(Q_StringList* out, const Q_StringList& source, const CopyRules& rules) {
    out->count = source.count;
    out->items = static_cast<char**>(CopyArrayBytes(source.items, &out->count, sizeof(char*), rules));
    if (out->items == nullptr || source.items == nullptr) {
        return;
    }
    for (std::uint32_t i = 0; i < out->count; ++i) {
        out->items[i] = CopyText(source.items[i], rules);
    }
}

// A string or string list that an array element owns.
template <class Owned>
Owned* OwnedAt(const Q_CountedArray& array, std::uint32_t index, const ElementShape& shape,
               std::uint32_t offset) {
    auto* element = static_cast<std::byte*>(array.items) + static_cast<std::size_t>(index) * shape.size;
    return reinterpret_cast<Owned*>(element + offset);
}

void CopyElement(Q_CountedArray* out, const Q_CountedArray& source, std::uint32_t index,
                 const ElementShape& shape, const CopyRules& rules) {
    for (std::uint32_t i = 0; i < shape.textCount; ++i) {
        *OwnedAt<char*>(*out, index, shape, shape.texts[i]) =
            CopyText(*OwnedAt<char*>(source, index, shape, shape.texts[i]), rules);
    }
    for (std::uint32_t i = 0; i < shape.stringListCount; ++i) {
        CopyStrings(OwnedAt<Q_StringList>(*out, index, shape, shape.stringLists[i]),
                    *OwnedAt<Q_StringList>(source, index, shape, shape.stringLists[i]), rules);
    }
}

void CopyArray(Q_CountedArray* out, const Q_CountedArray& source, const ElementShape& shape,
               const CopyRules& rules) {
    out->count = source.count;
    out->items = CopyArrayBytes(source.items, &out->count, shape.size, rules);
    if (out->items == nullptr || source.items == nullptr) {
        return;
    }
    for (std::uint32_t i = 0; i < out->count; ++i) {
        CopyElement(out, source, i, shape, rules);
    }
}

// A list whose items are still to be copied. Lists wait for their turn instead of being copied by recursion:
// the other side may nest them deeper than any stack.
struct WaitingList {
    Q_ValueList* out;
    const Q_ValueList* source;
};

Q_ValueList* CopyNestedList(const Q_ValueList* source, const CopyRules& rules,
                            std::vector<WaitingList>& waiting) {
    if (source == nullptr) {
        return nullptr;
    }
    auto* copy = static_cast<Q_ValueList*>(rules.allocate(sizeof(Q_ValueList)));
    if (copy != nullptr) {
        waiting.push_back({copy, source});
    }
    return copy;
}

void* CopyRecord(const void* source, const CopyRules& rules) {
    void* copy = source == nullptr ? nullptr : rules.allocate(kRecordSize);
    return copy == nullptr ? nullptr : std::memcpy(copy, source, kRecordSize);
}

// The parts of a value that own nothing. Across the boundary that is the whole value.
Q_Value CopyPlain(const Q_Value& source, PayloadKind kind, const CopyRules& rules) {
    if (rules.boundary || kind == PayloadKind::kBytes) {
        return source;
    }
    Q_Value copy = {};
    copy.tag = source.tag;
    if (kind == PayloadKind::kNumber) {
        copy.number = source.number;
    }
    return copy;
}

// Nested lists are added to those that wait.
Q_Value CopyItem(const Q_Value& source, const CopyRules& rules, std::vector<WaitingList>& waiting) {
    const PayloadShape& shape = PayloadShapeOf(source.tag);
    Q_Value copy = CopyPlain(source, shape.kind, rules);
    switch (shape.kind) {
        case PayloadKind::kText:
            copy.text = CopyText(source.text, rules);
            break;
        case PayloadKind::kArray:
            CopyArray(&copy.array, source.array, shape.element, rules);
            break;
        case PayloadKind::kStrings:
            CopyStrings(&copy.strings, source.strings, rules);
            break;
        case PayloadKind::kRecord:
            copy.record = CopyRecord(source.record, rules);
            break;
        case PayloadKind::kList:
            copy.list = CopyNestedList(source.list, rules, waiting);
            break;
        case PayloadKind::kUndefined:
        case PayloadKind::kNumber:
        case PayloadKind::kBytes:
            break;
    }
    return copy;
}

void CopyItems(Q_ValueList* out, const Q_ValueList& source, const CopyRules& rules,
               std::vector<WaitingList>& waiting) {
    out->count = source.count;
    out->items = static_cast<Q_Value*>(CopyArrayBytes(source.items, &out->count, sizeof(Q_Value), rules));
    if (out->items == nullptr || source.items == nullptr) {
        return;
    }
    for (std::uint32_t i = 0; i < out->count; ++i) {
        out->items[i] = CopyItem(source.items[i], rules, waiting);
    }
}

void CopyWaiting(std::vector<WaitingList> waiting, const CopyRules& rules) {
    while (!waiting.empty()) {
        const WaitingList list = waiting.back();
        waiting.pop_back();
        CopyItems(list.out, *list.source, rules, waiting);
    }
}

Q_Value CopyValue(const Q_Value& source, const CopyRules& rules) {
    std::vector<WaitingList> waiting;
    const Q_Value copy = CopyItem(source, rules, waiting);
    CopyWaiting(std::move(waiting), rules);
    return copy;
}

void ReleaseBlock(void* block, Q_ReleaseFunction release) {
    if (block != nullptr) {
        release(block);
    }
}

void ReleaseArray(Q_CountedArray* array, const ElementShape& shape, Q_ReleaseFunction release) {
    for (std::uint32_t index = 0; array->items != nullptr && index < array->count; ++index) {
        for (std::uint32_t i = 0; i < shape.textCount; ++i) {
            ReleaseBlock(*OwnedAt<char*>(*array, index, shape, shape.texts[i]), release);
        }
        for (std::uint32_t i = 0; i < shape.stringListCount; ++i) {
            Q_ReleaseStringListWith(OwnedAt<Q_StringList>(*array, index, shape, shape.stringLists[i]),
                                    release);
        }
    }
    ReleaseBlock(array->items, release);
    *array = {};
}

// Releases what an item owns, except the items of a nested list, which are added to those that wait.
void ReleaseItem(Q_Value* value, Q_ReleaseFunction release, std::vector<Q_ValueList>& waiting) {
    const PayloadShape& shape = PayloadShapeOf(value->tag);
    switch (shape.kind) {
        case PayloadKind::kText:
            ReleaseBlock(value->text, release);
            value->text = nullptr;
            break;
        case PayloadKind::kArray:
            ReleaseArray(&value->array, shape.element, release);
            break;
        case PayloadKind::kStrings:
            Q_ReleaseStringListWith(&value->strings, release);
            break;
        case PayloadKind::kRecord:
            ReleaseBlock(value->record, release);
            value->record = nullptr;
            break;
        case PayloadKind::kList:
            if (value->list != nullptr) {
                waiting.push_back(*value->list);
                release(value->list);
            }
            value->list = nullptr;
            break;
        case PayloadKind::kUndefined:
        case PayloadKind::kNumber:
        case PayloadKind::kBytes:
            break;
    }
}

void ReleaseWaiting(std::vector<Q_ValueList> waiting, Q_ReleaseFunction release) {
    while (!waiting.empty()) {
        const Q_ValueList list = waiting.back();
        waiting.pop_back();
        for (std::uint32_t i = 0; list.items != nullptr && i < list.count; ++i) {
            ReleaseItem(&list.items[i], release, waiting);
        }
        ReleaseBlock(list.items, release);
    }
}

constexpr CopyRules kKitRules = {Q_KitAlloc, false};

}  // namespace

void* Q_KitAlloc(std::size_t size) {
    const auto kitSize = static_cast<std::uint32_t>(size);
    return kitSize == size ? Q_Calloc(kitSize, 1, 0) : nullptr;
}

void Q_KitRelease(void* block) {
    Q_Free(block);
}

char* Q_CopyTextOrEmpty(const char* text) {
    return CopyText(text, kKitRules);
}

Q_Value Q_ApiCopyValue(const Q_Value* value) {
    return CopyValue(*value, kKitRules);
}

void Q_ApiFreeValue(Q_Value* value) {
    if (value != nullptr) {
        Q_ReleaseValueWith(value, Q_KitRelease);
    }
}

void Q_ApiFreeValueList(Q_ValueList* list) {
    if (list != nullptr) {
        const std::uint32_t count = list->count;
        Q_ReleaseValueListWith(list, Q_KitRelease);
        list->count = count;
    }
}

void Q_ApiFreeStringList(Q_StringList* list) {
    if (list != nullptr) {
        Q_ReleaseStringListWith(list, Q_KitRelease);
    }
}

void Q_CopyTextWith(char** out, const char* const* source, Q_AllocFunction allocate) {
    *out = CopyText(*source, {allocate, true});
}

void Q_CopyStringListWith(Q_StringList* out, const Q_StringList* source, Q_AllocFunction allocate) {
    CopyStrings(out, *source, {allocate, true});
}

void Q_CopyValueWith(Q_Value* out, const Q_Value* source, Q_AllocFunction allocate) {
    *out = CopyValue(*source, {allocate, true});
}

void Q_CopyValueListWith(Q_ValueList* out, const Q_ValueList* source, Q_AllocFunction allocate) {
    CopyWaiting({{out, source}}, {allocate, true});
}

void Q_ReleaseStringListWith(Q_StringList* list, Q_ReleaseFunction release) {
    for (std::uint32_t i = 0; list->items != nullptr && i < list->count; ++i) {
        ReleaseBlock(list->items[i], release);
    }
    ReleaseBlock(list->items, release);
    *list = {};
}

void Q_ReleaseValueWith(Q_Value* value, Q_ReleaseFunction release) {
    std::vector<Q_ValueList> waiting;
    ReleaseItem(value, release, waiting);
    ReleaseWaiting(std::move(waiting), release);
}

void Q_ReleaseValueListWith(Q_ValueList* list, Q_ReleaseFunction release) {
    ReleaseWaiting({*list}, release);
    *list = {};
}

}  // namespace ventrix
