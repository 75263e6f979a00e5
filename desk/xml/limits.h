// The limits within which the desk host reads XML. libxml2's own limits are switched off, because they refuse
// large documents that the module accepts; these take their place. docs/limits.md describes them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ventrix::desk {

/// Bytes of one file: libxml2 counts them in an int.
inline constexpr std::uint64_t kMaxFileBytes = 2'147'483'647;

/// Elements from the root down.
inline constexpr int kMaxElementDepth = 1'000;

/// On one element, or declared for one. libxml2 compares each with all the others.
inline constexpr std::size_t kMaxAttributes = 1'000;

/// Bytes that the entities of a document, its DTD included, expand to.
inline constexpr std::size_t kMaxExpansionBytes = 64'000'000;

/// Entities within entities.
inline constexpr int kMaxEntityDepth = 40;

}  // namespace ventrix::desk
