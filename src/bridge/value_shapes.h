// What each tag's payload is made of, as data: copy and release walk the same table.
#pragma once

#include <cstdint>

namespace ventrix {

enum class PayloadKind : std::uint8_t {
    kUndefined,  ///< No payload that anyone owns.
    kNumber,
    kBytes,  ///< The payload's own bytes.
    kText,
    kArray,
    kStrings,
    kRecord,
    kList,
};

/// One array element: its size and the offsets of what it owns.
struct ElementShape {
    std::uint32_t size;
    std::uint32_t textCount;
    std::uint32_t texts[3];
    std::uint32_t stringListCount;
    std::uint32_t stringLists[2];
};

struct PayloadShape {
    PayloadKind kind;
    ElementShape element;  ///< Of kind Array only.
};

/// The shape of a tag's payload; Undefined for a tag outside the table.
const PayloadShape& PayloadShapeOf(std::uint32_t tag);

}  // namespace ventrix
