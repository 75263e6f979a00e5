// Tables of a string and what it is turned into, and long strings.
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

namespace ventrix::test {

struct TextRow {
    std::string input;
    std::string output;
};

template <class Function>
void ExpectRows(std::span<const TextRow> rows, Function outputOf) {
    for (const TextRow& row : rows) {
        EXPECT_EQ(outputOf(row.input), row.output) << row.input;
    }
}

inline std::string Repeated(std::string_view text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

}  // namespace ventrix::test
