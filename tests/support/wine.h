// Whether the tests run under Wine, which lacks some of what Windows does.
#pragma once

#include "platform/library.h"

namespace ventrix::test {

inline bool UnderWine() {
    return platform::FindSymbol(platform::OpenLibrary("ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace ventrix::test
