#include "bridge/open_script.h"

#include "bridge/properties.h"
#include "kit/format/format.h"
#include "kit/memory.h"
#include "platform/exception.h"

namespace ventrix {
namespace {

// The order is the order in the list.
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

void WriteRow(Q_Prop* row, const OpenScriptRow& from) {
    row->ident.number = from.number;
    row->value.tag = from.tag;
    // A text starts as null; the row came zeroed.
    if (from.tag == kIntegerTag) {
        row->value.number = from.value;
    }
}

[[noreturn]] void EndForWrongTable() {
    Q_Print(nullptr, "Error: Default params list has an incorrect number of items.\n");
    platform::RaisePlatformException(1);
}

}  // namespace

Q_PropList Q_OpenScriptOfRows(std::span<const OpenScriptRow> rows) {
    auto* items = static_cast<Q_Prop*>(Q_Calloc(kOpenScriptRowCount, sizeof(Q_Prop), 0));
    if (items == nullptr) {
        return {};
    }
    if (rows.size() != kOpenScriptRowCount) {
        EndForWrongTable();
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        WriteRow(&items[i], rows[i]);
    }
    return {kOpenScriptRowCount, items};
}

Q_PropList Q_ApiDefaultOpenScript() {
    return Q_OpenScriptOfRows(kDefaultRows);
}

}  // namespace ventrix
