// The script under which the kit opens a document unless a client changes rows of it.
#pragma once

#include <cstdint>
#include <span>

#include "bridge/contract/properties.h"

namespace ventrix {

constexpr std::uint32_t kOpenScriptRowCount = 54;

/// A row as the table of defaults holds it. A text row starts with a null text.
struct OpenScriptRow {
    std::int32_t number;
    std::int32_t value;
    std::uint32_t tag = kIntegerTag;
};

/// A new list of 54 rows, the caller's to free with Q_ApiFreePropList. Empty when memory runs out.
Q_PropList Q_ApiDefaultOpenScript();

/// The same from another table. One that has not exactly 54 rows is an error in the program: it is told on
/// the console and ends the process with the platform exception, code 1.
Q_PropList Q_OpenScriptOfRows(std::span<const OpenScriptRow> rows);

}  // namespace ventrix
