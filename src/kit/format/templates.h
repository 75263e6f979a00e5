// Message templates: strings with placeholders. "%0" to "%9" insert an argument, "%p" the host's name, "%u"
// the user's name, and "%%" a percent sign. "%{0 any words}" is a long form of "%0". All strings are in the
// kit's current encoding.
#pragma once

#include <cstdint>

namespace ventrix {

constexpr int kTemplateSlots = 10;

/// One argument: a type letter, or 0 for no argument, and its value.
struct Q_TemplateArgument {
    /// "d", "x", "X" and "r" (the id of a resource string) use `integer`, "f" `number`, "s" `text`, "p"
    /// `pointer`.
    char type;
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

/// Expands the template into the output, whose size in bytes includes the terminator. An inserted string that
/// does not fit, with the rest of the template after it, is shortened in the middle, or cut off if fewer than
/// six bytes are left for it. A missing argument gives "???"; null `arguments` means that all are missing.
/// Always 0.
int Q_ExpandTemplate(const char* text, char* output, std::uint32_t size,
                     const Q_TemplateArguments* arguments);

/// Expands a resource string. `types` has one type letter for each argument, at most ten; a character that is
/// not a type letter ends the list. 0, or -1 and the empty string if there is no such resource.
int Q_LoadResourceTemplate(std::uint32_t id, char* output, std::uint32_t size, const char* types, ...);

/// Sets what "%p" inserts: for the name "Quorlane Xml Author", in any case, "Quorlane XML Author"; for any
/// other name "Quorlane". Always 0.
int Q_SetHostVariant(const char* name);

/// Sets the name that "%u" inserts; it is copied. Null, or the empty string as initially, inserts nothing.
void Q_SetUserName(const char* name);

}  // namespace ventrix
