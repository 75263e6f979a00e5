// Tagged values and counted arrays, in the binary form in which host and clients exchange them.
// A value owns its payload; a list owns its array and everything that its elements own. Strings are
// null-terminated, in the connection's text mode. Of most tags only the layout is known, not the meaning.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ventrix {

struct Q_Value;

/// The layout that all counted arrays share. Empty: count 0 and a null pointer.
struct Q_CountedArray {
    std::uint32_t count;
    void* items;
};

struct Q_StringList {
    std::uint32_t count;
    char** items;
};

struct Q_ValueList {
    std::uint32_t count;
    Q_Value* items;
};

/// The tags whose payload has a known meaning. The union of Q_Value gives the layout of the others.
constexpr std::uint32_t kIntegerTag = 1;  ///< Payload: number.
constexpr std::uint32_t kTextTag = 3;     ///< Payload: text.
constexpr std::uint32_t kListTag = 20;    ///< Payload: list.

struct Q_Value {
    std::uint32_t tag;
    union {
        std::int32_t number;     ///< 1, 2, 4
        char* text;              ///< 3
        Q_CountedArray array;    ///< 5, 7, 8, 12 to 15, 17, 18, 21, 22
        Q_StringList strings;    ///< 6
        void* pointer;           ///< 9; copied as it is, owns nothing
        std::uint8_t bytes[16];  ///< 10
        void* record;            ///< 19: one block of kRecordSize bytes without pointers
        Q_ValueList* list;       ///< 20
    };
};

constexpr std::uint32_t kRecordSize = 24;

/// An element of the array of tag 8.
struct Q_Tag8Element {
    std::uint8_t head[8];
    char* text;
    std::uint8_t tail[8];
};

/// An element of the array of tag 17.
struct Q_Tag17Element {
    char* text;
    std::uint8_t middle[16];
    Q_StringList firstStrings;
    Q_StringList secondStrings;
    char* secondText;
    char* thirdText;
};

/// An element of the array of tag 18.
struct Q_Tag18Element {
    char* text;
    Q_StringList strings;
    std::uint8_t tail[8];
};

/// An element of the array of tag 21.
struct Q_Tag21Element {
    char* text;
    Q_StringList firstStrings;
    Q_StringList secondStrings;
    std::uint8_t tail[8];
};

/// An element of the array of tag 22.
struct Q_Tag22Element {
    std::uint8_t head[8];
    Q_StringList strings;
};

static_assert(sizeof(Q_CountedArray) == 16 && offsetof(Q_CountedArray, items) == 8);
static_assert(sizeof(Q_StringList) == 16 && offsetof(Q_StringList, items) == 8);
static_assert(sizeof(Q_ValueList) == 16 && offsetof(Q_ValueList, items) == 8);
static_assert(sizeof(Q_Value) == 24 && offsetof(Q_Value, number) == 8 && offsetof(Q_Value, text) == 8);
static_assert(sizeof(Q_Tag8Element) == 24 && offsetof(Q_Tag8Element, text) == 8);
static_assert(sizeof(Q_Tag17Element) == 72 && offsetof(Q_Tag17Element, firstStrings) == 24 &&
              offsetof(Q_Tag17Element, secondText) == 56);
static_assert(sizeof(Q_Tag18Element) == 32 && offsetof(Q_Tag18Element, strings) == 8);
static_assert(sizeof(Q_Tag21Element) == 48 && offsetof(Q_Tag21Element, secondStrings) == 24);
static_assert(sizeof(Q_Tag22Element) == 24 && offsetof(Q_Tag22Element, strings) == 8);

}  // namespace ventrix
