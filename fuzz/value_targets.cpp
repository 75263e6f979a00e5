// Values and property lists as they cross the boundary between host and client.
#include <cstdlib>
#include <map>
#include <optional>

#include "bridge/host/properties.h"
#include "bridge/host/values.h"
#include "fuzz/checks.h"
#include "fuzz/targets.h"

namespace ventrix::fuzz {
namespace {

constexpr int kDeepest = 100;

void* Allocate(std::size_t size) {
    return std::malloc(size == 0 ? 1 : size);
}

template <class Item>
Item* NewItems(std::size_t count) {
    return static_cast<Item*>(Q_KitAlloc(count * sizeof(Item)));
}

/// A value of a tag whose payload has a known meaning, or of one that owns nothing.
Q_Value NextValue(Parts& parts, int depth) {
    Q_Value value = {};
    switch (parts.Byte() % 6) {
        case 0:
            value.tag = kIntegerTag;
            value.number = static_cast<std::int32_t>(parts.Number());
            break;
        case 1:
            value.tag = kTextTag;
            value.text = Q_CopyTextOrEmpty(parts.Line().c_str());
            break;
        case 2:
            value.tag = kTextTag;  // Without a string.
            break;
        case 3: {
            value.tag = 6;
            value.strings = {parts.Byte() % 4U, nullptr};
            value.strings.items = NewItems<char*>(value.strings.count);
            for (std::uint32_t i = 0; i < value.strings.count; ++i) {
                value.strings.items[i] = Q_CopyTextOrEmpty(parts.Line().c_str());
            }
            break;
        }
        case 4:
            value.tag = 10;
            value.number = parts.Byte();
            break;
        default:
            value.tag = kListTag;
            value.list = NewItems<Q_ValueList>(1);
            value.list->count = depth < kDeepest ? parts.Byte() % 4U : 0;
            value.list->items = NewItems<Q_Value>(value.list->count);
            for (std::uint32_t i = 0; i < value.list->count; ++i) {
                value.list->items[i] = NextValue(parts, depth + 1);
            }
    }
    return value;
}

std::string Print(const Q_Value& value) {
    std::string text = std::to_string(value.tag) + ":";
    if (value.tag == kTextTag) {
        text.append(value.text == nullptr ? "" : value.text);
    } else if (value.tag == 6) {
        for (std::uint32_t i = 0; i < value.strings.count; ++i) {
            text.append(value.strings.items[i]).append(",");
        }
    } else if (value.tag == kListTag) {
        for (std::uint32_t i = 0; i < value.list->count; ++i) {
            text.append("[").append(Print(value.list->items[i])).append("]");
        }
    } else {
        text.append(std::to_string(value.number));
    }
    return text;
}

}  // namespace

void ValueLists(std::string_view input) {
    Parts parts(input);
    Q_Value value = NextValue(parts, 0);
    const std::string printed = Print(value);
    Q_Value inKit = Q_ApiCopyValue(&value);
    Check(Print(inKit) == printed, "the copy in kit memory differs");
    Q_Value outside = {};
    Q_CopyValueWith(&outside, &inKit, Allocate);
    Q_ApiFreeValue(&inKit);
    Q_ApiFreeValue(&value);
    Check(Print(outside) == printed, "the copy across the boundary differs");
    Q_ReleaseValueWith(&outside, std::free);
}

// Each step sets a property. A map has the values that the list should have.
void PropertyLists(std::string_view input) {
    Parts parts(input);
    Q_PropList list = {};
    std::map<std::int32_t, std::string> expected;
    while (!parts.AtEnd()) {
        const std::int32_t number = 1 + parts.Byte() % 8;
        Q_Value value = NextValue(parts, 0);
        expected[number] = Print(value);
        Q_ApiSetProp(&list, number, &value);
        Q_ApiFreeValue(&value);
    }
    Q_PropList copy = {};
    Q_CopyPropListWith(&copy, &list, Allocate);
    Q_ApiFreePropList(&list);
    Check(copy.count == expected.size(), "a wrong number of properties");
    for (const auto& [number, printed] : expected) {
        const std::int32_t index = Q_ApiFindProp(&copy, number);
        Check(index >= 0 && Print(copy.items[index].value) == printed,
              "a property has another value: " + printed);
    }
    Q_ReleasePropListWith(&copy, std::free);
}

}  // namespace ventrix::fuzz
