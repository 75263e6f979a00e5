#include "kit/text/case_table.h"

#include <array>
#include <cstddef>

namespace ventrix {
namespace {

struct CasePair {
    unsigned char upper;
    unsigned char lower;
};

constexpr CasePair kAccentedPairs[] = {
    {0x80, 0x8A}, {0x81, 0x8C}, {0x82, 0x8D}, {0x83, 0x8E}, {0x84, 0x96}, {0x85, 0x9A},
    {0x86, 0x9F}, {0xAE, 0xBE}, {0xAF, 0xBF}, {0xCB, 0x88}, {0xCC, 0x8B}, {0xCD, 0x9B},
    {0xCE, 0xCF}, {0xD9, 0xD8}, {0xE5, 0x89}, {0xE6, 0x90}, {0xE7, 0x87}, {0xE8, 0x91},
    {0xE9, 0x8F}, {0xEA, 0x92}, {0xEB, 0x94}, {0xEC, 0x95}, {0xED, 0x93}, {0xEE, 0x97},
    {0xEF, 0x99}, {0xF1, 0x98}, {0xF2, 0x9C}, {0xF3, 0x9E}, {0xF4, 0x9D},
};

constexpr std::array<unsigned char, 256> BuildCaseTable() {
    std::array<unsigned char, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        const bool isCapital = byte >= 'A' && byte <= 'Z';
        table[byte] = static_cast<unsigned char>(isCapital ? byte + ('a' - 'A') : byte);
    }
    for (const CasePair& pair : kAccentedPairs) {
        table[pair.upper] = pair.lower;
    }
    return table;
}

constexpr std::array<unsigned char, 256> kCaseTable = BuildCaseTable();

}  // namespace

unsigned char Q_FoldByte(unsigned char byte) {
    return kCaseTable[byte];
}

}  // namespace ventrix
