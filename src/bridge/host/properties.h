// Search, update, copy and release of property lists. The Q_Api operations work on kit memory; the ...With
// operations take the function that allocates or releases.
#pragma once

#include <cstdint>

#include "bridge/contract/properties.h"
#include "bridge/host/values.h"

namespace ventrix {

/// Result of Q_ApiFindProp if no row has the number.
constexpr std::int32_t kPropNotFound = -4;

/// The index of the first row with this number, or kPropNotFound. Number 0 finds the first row with a name.
/// The list may be null.
std::int32_t Q_ApiFindProp(const Q_PropList* list, std::int32_t number);

/// Writes a deep copy of the value into the first row with this number, or into a new row at the end. If
/// memory for a new row runs out, the list stays as it is.
void Q_ApiSetProp(Q_PropList* list, std::int32_t number, const Q_Value* value);

/// Q_ApiSetProp with a string; null is stored as the empty string.
void Q_ApiSetPropString(Q_PropList* list, std::int32_t number, const char* text);

/// Frees the rows and the array, and empties the list. The list may be null.
void Q_ApiFreePropList(Q_PropList* list);

/// A deep copy in memory of `allocate`. Names are copied only for rows with number 0. Empty if memory runs
/// out.
void Q_CopyPropListWith(Q_PropList* out, const Q_PropList* source, Q_AllocFunction allocate);

void Q_ReleasePropListWith(Q_PropList* list, Q_ReleaseFunction release);

}  // namespace ventrix
