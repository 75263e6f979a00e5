#include "bridge/value_shapes.h"

#include <cstddef>
#include <iterator>

#include "bridge/contract/values.h"

namespace ventrix {
namespace {

constexpr PayloadShape undefinedPayload = {PayloadKind::Undefined, {}};
constexpr PayloadShape number = {PayloadKind::Number, {}};
constexpr PayloadShape bytes = {PayloadKind::Bytes, {}};

constexpr PayloadShape PlainArray(std::uint32_t elementSize) {
    return {PayloadKind::Array, {elementSize, 0, {}, 0, {}}};
}

constexpr PayloadShape shapes[] = {
    undefinedPayload,
    number,
    number,
    {PayloadKind::Text, {}},
    number,
    PlainArray(4),
    {PayloadKind::Strings, {}},
    PlainArray(8),
    {PayloadKind::Array, {sizeof(Q_Tag8Element), 1, {offsetof(Q_Tag8Element, text)}, 0, {}}},
    bytes,
    bytes,
    undefinedPayload,
    PlainArray(8),
    PlainArray(4),
    PlainArray(1),
    PlainArray(4),
    undefinedPayload,
    {PayloadKind::Array,
     {sizeof(Q_Tag17Element),
      3,
      {offsetof(Q_Tag17Element, text), offsetof(Q_Tag17Element, secondText),
       offsetof(Q_Tag17Element, thirdText)},
      2,
      {offsetof(Q_Tag17Element, firstStrings), offsetof(Q_Tag17Element, secondStrings)}}},
    {PayloadKind::Array,
     {sizeof(Q_Tag18Element), 1, {offsetof(Q_Tag18Element, text)}, 1, {offsetof(Q_Tag18Element, strings)}}},
    {PayloadKind::Record, {}},
    {PayloadKind::List, {}},
    {PayloadKind::Array,
     {sizeof(Q_Tag21Element),
      1,
      {offsetof(Q_Tag21Element, text)},
      2,
      {offsetof(Q_Tag21Element, firstStrings), offsetof(Q_Tag21Element, secondStrings)}}},
    {PayloadKind::Array, {sizeof(Q_Tag22Element), 0, {}, 1, {offsetof(Q_Tag22Element, strings)}}},
};

}  // namespace

const PayloadShape& PayloadShapeOf(std::uint32_t tag) {
    return tag < std::size(shapes) ? shapes[tag] : undefinedPayload;
}

}  // namespace ventrix
