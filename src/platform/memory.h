// Memory in large pieces. The heap gives it; the system may be told what it is for.
#pragma once

#include <cstddef>

namespace ventrix::platform {

/// Tells the system that this memory, not yet touched, is about to be used from end to end: it then comes in
/// large pages, and not 4 KB at a time with a stop for each. Only a hint, for pieces of some megabytes;
/// smaller ones are passed over.
void ExpectFullUse(void* memory, std::size_t size);

}  // namespace ventrix::platform
