// What the component runtime knows of one thread.
#pragma once

#include "platform/com.h"

namespace ventrix::platform {

struct Apartment {
    unsigned entries = 0;              ///< Entries by CoInitialize that were not left yet.
    IMessageFilter* filter = nullptr;  ///< Held with a reference; null for none.

    Apartment() = default;
    ~Apartment();
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

/// This thread's.
Apartment& CurrentApartment();

}  // namespace ventrix::platform
