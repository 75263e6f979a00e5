// Message templates: texts with places for arguments. "%0" to "%9" insert an argument, "%p" the host's name,
// "%u" the user's name, "%%" a percent sign; "%{0 any words}" is a long form of "%0". All texts are in the
// current encoding.
#pragma once

#include <cstdint>

namespace ventrix {

constexpr int kTemplateSlots = 10;

/// One argument: a type letter, or 0 for none, and the value that goes with it.
struct Q_TemplateArgument {
    char type;  ///< "d", "x", "X" and "r" (a string id) have an integer, "f" a number, "s" a text, "p" a
                ///< pointer.
    union {
        std::int32_t integer;
        double number;
        const char* text;
        const void* pointer;
    };
};

struct Q_TemplateArguments {
    Q_TemplateArgument slots[kTemplateSlots];
};

/// Expands the template into the output, which has size bytes with the terminator. An inserted text that is
/// too long for what the rest of the template leaves is shortened in its middle. A missing argument gives
/// "???". Null arguments are none. Always 0.
int Q_ExpandTemplate(const char* text, char* output, std::uint32_t size,
                     const Q_TemplateArguments* arguments);

/// Expands the resource string with the arguments that the type string tells: one letter for each, at most
/// ten, up to the first that is none. 0, or -1 and the empty text if there is no such string.
int Q_LoadResourceTemplate(std::uint32_t id, char* output, std::uint32_t size, const char* types, ...);

/// "Quorlane Xml Author", in any case, makes "%p" "Quorlane XML Author"; any other name makes it "Quorlane".
/// Always 0.
int Q_SetHostVariant(const char* name);

/// The name for "%u", copied. Null or empty, as at load: nothing is inserted.
void Q_SetUserName(const char* name);

}  // namespace ventrix
