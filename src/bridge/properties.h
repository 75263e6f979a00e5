// Search, update and release of property lists in kit memory, and release with a function of the caller's.
#pragma once

#include <cstdint>

#include "bridge/contract/properties.h"
#include "bridge/values.h"

namespace ventrix {

/// Q_ApiFindProp's answer where no row has the number.
constexpr std::int32_t kPropNotFound = -4;

/// The index of the first row with the number, or kPropNotFound; 0 finds the first named row. A null list
/// has no rows.
std::int32_t Q_ApiFindProp(const Q_PropList* list, std::int32_t number);

/// Writes a deep copy of the value into the row with the number, or into a new row at the end.
void Q_ApiSetProp(Q_PropList* list, std::int32_t number, const Q_Value* value);

/// Q_ApiSetProp with a text; a null text is stored as the empty text.
void Q_ApiSetPropString(Q_PropList* list, std::int32_t number, const char* text);

/// Frees rows and array and empties the list. Null is allowed.
void Q_ApiFreePropList(Q_PropList* list);

/// A deep copy, with its memory from the function; names only of rows without a number. Empty without memory.
void Q_CopyPropListWith(Q_PropList* out, const Q_PropList* source, Q_AllocFunction allocate);

void Q_ReleasePropListWith(Q_PropList* list, Q_ReleaseFunction release);

}  // namespace ventrix
