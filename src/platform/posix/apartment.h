// The state of the component runtime for one thread.
#pragma once

#include "platform/com.h"

namespace ventrix::platform {

struct Apartment {
    unsigned entries = 0;              ///< CoInitialize calls without their CoUninitialize.
    IMessageFilter* filter = nullptr;  ///< Owns a reference; null for none.

    Apartment() = default;
    ~Apartment();
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

/// The state of this thread.
Apartment& CurrentApartment();

}  // namespace ventrix::platform
