#include "bridge/host/value_shapes.h"

#include <cstddef>
#include <iterator>

#include "bridge/contract/values.h"

namespace ventrix {
namespace {

constexpr PayloadShape kUndefinedPayload = {PayloadKind::kUndefined, {}};
constexpr PayloadShape kNumber = {PayloadKind::kNumber, {}};
constexpr PayloadShape kBytes = {PayloadKind::kBytes, {}};

constexpr PayloadShape PlainArray(std::uint32_t elementSize) {
    return {PayloadKind::kArray, {elementSize, 0, {}, 0, {}}};
}

// Indexed by tag.
constexpr PayloadShape kShapes[] = {
    kUndefinedPayload,
    kNumber,
    kNumber,
    {PayloadKind::kText, {}},
    kNumber,
    PlainArray(4),
    {PayloadKind::kStrings, {}},
    PlainArray(8),
    {PayloadKind::kArray, {sizeof(Q_Tag8Element), 1, {offsetof(Q_Tag8Element, text)}, 0, {}}},
    kBytes,
    kBytes,
    kUndefinedPayload,
    PlainArray(8),
    PlainArray(4),
    PlainArray(1),
    PlainArray(4),
    kUndefinedPayload,
    {PayloadKind::kArray,
     {sizeof(Q_Tag17Element),
      3,
      {offsetof(Q_Tag17Element, text), offsetof(Q_Tag17Element, secondText),
       offsetof(Q_Tag17Element, thirdText)},
      2,
      {offsetof(Q_Tag17Element, firstStrings), offsetof(Q_Tag17Element, secondStrings)}}},
    {PayloadKind::kArray,
     {sizeof(Q_Tag18Element), 1, {offsetof(Q_Tag18Element, text)}, 1, {offsetof(Q_Tag18Element, strings)}}},
    {PayloadKind::kRecord, {}},
    {PayloadKind::kList, {}},
    {PayloadKind::kArray,
     {sizeof(Q_Tag21Element),
      1,
      {offsetof(Q_Tag21Element, text)},
      2,
      {offsetof(Q_Tag21Element, firstStrings), offsetof(Q_Tag21Element, secondStrings)}}},
    {PayloadKind::kArray, {sizeof(Q_Tag22Element), 0, {}, 1, {offsetof(Q_Tag22Element, strings)}}},
};

}  // namespace

const PayloadShape& PayloadShapeOf(std::uint32_t tag) {
    return tag < std::size(kShapes) ? kShapes[tag] : kUndefinedPayload;
}

}  // namespace ventrix
