// The layout of each tag's payload, as a table. Copy and release both follow it, so neither can treat a tag
// in its own way.
#pragma once

#include <cstdint>

namespace ventrix {

enum class PayloadKind : std::uint8_t {
    kUndefined,  ///< Not defined, owns nothing.
    kNumber,
    kBytes,  ///< The 16 bytes themselves, owns nothing.
    kText,
    kArray,
    kStrings,
    kRecord,
    kList,
};

/// An array element: its size and the offsets of the strings and string lists that it owns, in bytes.
struct ElementShape {
    std::uint32_t size;
    std::uint32_t textCount;
    std::uint32_t texts[3];
    std::uint32_t stringListCount;
    std::uint32_t stringLists[2];
};

struct PayloadShape {
    PayloadKind kind;
    ElementShape element;  ///< Only for kArray.
};

/// The layout of a tag's payload; kUndefined for a tag outside the table.
const PayloadShape& PayloadShapeOf(std::uint32_t tag);

}  // namespace ventrix
