// Tables of a text and what becomes of it.
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>

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

}  // namespace ventrix::test
