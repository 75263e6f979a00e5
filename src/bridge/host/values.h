// Copy and release of tagged values, which the host operations take and return. The Q_Api operations work on
// kit memory. The ...With operations take the function that allocates or releases, for data that cross the
// boundary to the host.
#pragma once

#include <cstddef>

#include "bridge/contract/values.h"

namespace ventrix {

/// Returns a block of this size in bytes, or null.
using Q_AllocFunction = void* (*)(std::size_t size);
using Q_ReleaseFunction = void (*)(void* block);

/// These functions for kit memory. Blocks are zeroed. Q_KitRelease accepts null.
void* Q_KitAlloc(std::size_t size);
void Q_KitRelease(void* block);

/// A copy in kit memory; null gives the empty string. Null if memory runs out.
char* Q_CopyTextOrEmpty(const char* text);

/// A deep copy in kit memory. A null string becomes the empty string, also within lists and records. If the
/// tag has no defined payload, only the tag is copied. If memory for an array runs out, the array is null and
/// the count is set.
Q_Value Q_ApiCopyValue(const Q_Value* value);

/// Frees what the value owns and clears pointer and count; the tag stays. The value may be null.
void Q_ApiFreeValue(Q_Value* value);

/// Frees the elements and the array and clears the pointer; the count stays. The list may be null.
void Q_ApiFreeValueList(Q_ValueList* list);

/// Frees the strings and the array and clears both fields. The list may be null.
void Q_ApiFreeStringList(Q_StringList* list);

/// Copies with `allocate`. A null string stays null.
void Q_CopyTextWith(char** out, const char* const* source, Q_AllocFunction allocate);
void Q_CopyStringListWith(Q_StringList* out, const Q_StringList* source, Q_AllocFunction allocate);

/// As Q_ApiCopyValue with these differences: all 24 bytes are copied, so a payload that is not defined is
/// copied as it is; a null string stays null; and the count of a null array, or of one for which memory runs
/// out, becomes 0.
void Q_CopyValueWith(Q_Value* out, const Q_Value* source, Q_AllocFunction allocate);

/// Calls `allocate` also for count 0, with size 0.
void Q_CopyValueListWith(Q_ValueList* out, const Q_ValueList* source, Q_AllocFunction allocate);

/// Release the contents and clear pointer and count.
void Q_ReleaseStringListWith(Q_StringList* list, Q_ReleaseFunction release);
void Q_ReleaseValueWith(Q_Value* value, Q_ReleaseFunction release);
void Q_ReleaseValueListWith(Q_ValueList* list, Q_ReleaseFunction release);

}  // namespace ventrix
