// Copy and release of tagged values. The Q_Api operations work on kit memory; the ...With operations take the
// function that allocates or releases, so that they serve what crosses the boundary to the host.
#pragma once

#include <cstddef>

#include "bridge/contract/values.h"

namespace ventrix {

/// Memory of a given size in bytes, or null.
using Q_AllocFunction = void* (*)(std::size_t size);
/// Takes null.
using Q_ReleaseFunction = void (*)(void* block);

/// The kit's own memory as such functions: zeroed blocks, and Q_Free.
void* Q_KitAlloc(std::size_t size);
void Q_KitRelease(void* block);

/// A copy in kit memory; null gives an empty text. Null when memory runs out.
char* Q_CopyTextOrEmpty(const char* text);

/// A deep copy in kit memory. A null text becomes an empty one, also within lists and records. A tag without
/// a defined payload is copied alone. Where memory runs out the array is null and the count set.
Q_Value Q_ApiCopyValue(const Q_Value* value);

/// Frees what the value owns and clears pointer and count; the tag stays. Null is allowed.
void Q_ApiFreeValue(Q_Value* value);

/// Frees elements and array and clears the pointer; the count stays. Null is allowed.
void Q_ApiFreeValueList(Q_ValueList* list);

/// Frees texts and array and clears both fields. Null is allowed.
void Q_ApiFreeStringList(Q_StringList* list);

/// A null source text stays null.
void Q_CopyTextWith(char** out, const char* const* source, Q_AllocFunction allocate);
void Q_CopyStringListWith(Q_StringList* out, const Q_StringList* source, Q_AllocFunction allocate);

/// As Q_ApiCopyValue, but all 24 bytes are copied first, a null text stays null, and arrays are copied whole.
/// A count without an array, or without memory for it, becomes 0.
void Q_CopyValueWith(Q_Value* out, const Q_Value* source, Q_AllocFunction allocate);

/// Allocates the array also for count 0, with size 0.
void Q_CopyValueListWith(Q_ValueList* out, const Q_ValueList* source, Q_AllocFunction allocate);

/// Release what they own and clear pointer and count.
void Q_ReleaseStringListWith(Q_StringList* list, Q_ReleaseFunction release);
void Q_ReleaseValueWith(Q_Value* value, Q_ReleaseFunction release);
void Q_ReleaseValueListWith(Q_ValueList* list, Q_ReleaseFunction release);

}  // namespace ventrix
