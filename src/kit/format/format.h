// The kit's printf: a format engine that writes through a sink, into a buffer or to the console.
// The conversions are those of "dioxXucsfeEgGp%n" as in the C library, and "C", whose argument points to a
// character of the current encoding. A null text prints as the empty text.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "kit/channels/channels.h"

namespace ventrix {

/// Takes count bytes and answers how many it took.
using Q_FormatSink = std::uint32_t (*)(void* context, const char* text, std::uint32_t count);

/// Formats and hands the pieces to the sink, in order. The sum of its answers. Null reads as the empty
/// format. From a "%" that begins no conversion on, the format is written as it stands.
std::uint32_t Q_FormatCore(Q_FormatSink sink, void* context, const char* format, std::va_list arguments);

/// Formats into the destination, which the caller makes large enough, and terminates it. A null destination
/// is allowed.
void Q_FormatText(char* destination, const char* format, ...);

/// Formats to the channel, or for a null channel to the console. The bytes taken.
std::uint32_t Q_Print(Q_Channel* channel, const char* format, ...);

}  // namespace ventrix
