#include "bridge/open_script.h"

#include <iterator>

#include "kit/memory.h"

namespace ventrix {
namespace {

struct OpenScriptRow {
    std::int32_t number;
    std::int32_t value;
    std::uint32_t tag = kIntegerTag;
};

// In list order, which is not the order of the numbers. A row of tag 3 starts with a null string.
constexpr OpenScriptRow kDefaultRows[] = {
    {1, 0},
    {5, 1},
    {7, 0},
    {8, 0},
    {33, 0},
    {43, 0},
    {9, 0},
    {10, 0},
    {11, 0},
    {13, 0},
    {2, 0},
    {14, 0},
    {15, 0},
    {16, 12},
    {17, 5},
    {18, 0},
    {19, 0},
    {20, 0},
    {21, 5},
    {22, 0},
    {23, 0},
    {28, 0},
    {24, 0},
    {25, 0},
    {32, 0},
    {26, 1},
    {27, 0},
    {29, 0},
    {6, 0},
    {30, 0},
    {42, 0},
    {4, 0},
    {3, 0},
    {12, 0},
    {31, 0, kTextTag},
    {36, 12},
    {35, 12},
    {52, 12},
    {34, 0, kTextTag},
    {37, 0},
    {38, 0, kTextTag},
    {39, 0, kTextTag},
    {40, 0},
    {41, 0},
    {44, 0},
    {45, 0},
    {46, 0},
    {47, 0},
    {48, 0},
    {49, 0},
    {50, 0},
    {51, 0},
    {53, -1},
    {54, 0},
};

static_assert(std::size(kDefaultRows) == 54, "the numbers 1 to 54, each once");

}  // namespace

Q_PropList Q_ApiDefaultOpenScript() {
    constexpr std::uint32_t kRowCount = std::size(kDefaultRows);
    auto* items = static_cast<Q_Prop*>(Q_Calloc(kRowCount, sizeof(Q_Prop), 0));
    if (items == nullptr) {
        return {};
    }
    for (std::uint32_t i = 0; i < kRowCount; ++i) {
        items[i].ident.number = kDefaultRows[i].number;
        items[i].value.tag = kDefaultRows[i].tag;
        if (kDefaultRows[i].tag == kIntegerTag) {
            items[i].value.number = kDefaultRows[i].value;
        }
    }
    return {kRowCount, items};
}

}  // namespace ventrix
