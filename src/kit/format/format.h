// The kit's printf: formatted output to a sink, into a buffer, or to a channel or the console. The
// conversions "dioxXucsfeEgGp%n" work as in the C library; "C" takes a pointer to one character and prints it
// if UTF-8 is the current encoding, else nothing. A null string prints as the empty string.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "kit/channels/channels.h"

namespace ventrix {

/// Takes count bytes and returns the number that it accepted.
using Q_FormatSink = std::uint32_t (*)(void* context, const char* text, std::uint32_t count);

/// Formats and passes the pieces to the sink in order. Returns the sum of what the sink returned. A null
/// format reads as the empty string. From a "%" that does not begin a valid conversion on, the rest of the
/// format is written unchanged.
std::uint32_t Q_FormatCore(Q_FormatSink sink, void* context, const char* format, std::va_list arguments);

/// Formats into the destination and terminates it. The caller makes sure that it is large enough. With a
/// null destination nothing happens.
void Q_FormatText(char* destination, const char* format, ...);

/// Formats to the channel, or to the console (console.h) if it is null. Returns the bytes accepted.
std::uint32_t Q_Print(Q_Channel* channel, const char* format, ...);

}  // namespace ventrix
