// Properties and property lists, in the binary form in which host and clients exchange them. A property in a
// list owns its value, and its name if its number is 0. A list owns its array. Names are null-terminated.
#pragma once

#include <cstddef>
#include <cstdint>

#include "bridge/contract/values.h"

namespace ventrix {

/// Identifies a property by number, or by name if the number is 0.
struct Q_PropIdent {
    std::int32_t number;
    char* name;
};

struct Q_Prop {
    Q_PropIdent ident;
    Q_Value value;
};

/// A counted array of properties. Empty: count 0 and a null pointer.
struct Q_PropList {
    std::uint32_t count;
    Q_Prop* items;
};

static_assert(sizeof(Q_PropIdent) == 16 && offsetof(Q_PropIdent, name) == 8);
static_assert(sizeof(Q_Prop) == 40 && offsetof(Q_Prop, value) == 16);
static_assert(sizeof(Q_PropList) == 16 && offsetof(Q_PropList, items) == 8);

}  // namespace ventrix
