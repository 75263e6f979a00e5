#include "kit/text/encodings.h"

#include <array>
#include <cstddef>

#include "kit/text/strings.h"

namespace ventrix {
namespace {

struct ByteRange {
    unsigned first;
    unsigned last;
};

std::array<Q_Encoding, kEncodingCount> registry;
bool isBuilt = false;
std::int32_t current = 0;

std::bitset<256> Flags(std::initializer_list<ByteRange> ranges) {
    std::bitset<256> flags;
    for (const ByteRange& range : ranges) {
        for (unsigned byte = range.first; byte <= range.last; ++byte) {
            flags.set(byte);
        }
    }
    return flags;
}

std::array<Q_Encoding, kEncodingCount> BuildRegistry() {
    return {{
        {"QuorlRoman", "velmar-ql-roman-windows", {}, {}},
        {"JISX0208.ShiftJIS", "velmar-ql-shift-jis", Flags({{0x81, 0x9F}, {0xE0, 0xFC}}),
         Flags({{0x40, 0x7E}, {0x80, 0xFC}})},
        {"KSC5601-1992", "velmar-ql-ksc-5601", Flags({{0xA1, 0xFE}}), Flags({{0xA1, 0xFE}})},
        {"BIG5", "velmar-ql-big5", Flags({{0xA1, 0xFE}}), Flags({{0x40, 0x7E}, {0xA1, 0xFE}})},
        {"GB2312-80.EUC", "velmar-ql-gb2312", Flags({{0x81, 0xFE}}), Flags({{0x40, 0xFE}})},
        {"UTF-8", "UTF-8", {}, {}},
    }};
}

// Lookups build the registry too, but only Q_SetEncoding makes Q_EncodingsReady true: start-up relies on it
// to select a first encoding.
const std::array<Q_Encoding, kEncodingCount>& Registry() {
    if (registry[0].name == nullptr) {
        registry = BuildRegistry();
    }
    return registry;
}

std::int32_t Find(const char* text, const char* Q_Encoding::*field, std::int32_t otherwise) {
    for (std::size_t index = 0; index < Registry().size(); ++index) {
        if (Q_StrIEqual(text, Registry()[index].*field)) {
            return static_cast<std::int32_t>(index);
        }
    }
    return otherwise;
}

}  // namespace

std::int32_t Q_SetEncoding(const char* name) {
    isBuilt = true;
    current = Find(name, &Q_Encoding::name, current);
    return current;
}

bool Q_EncodingsReady() {
    return isBuilt;
}

std::int32_t Q_CurrentEncoding() {
    return current;
}

std::int32_t Q_EncodingIndex(const char* name) {
    return Find(name, &Q_Encoding::name, 0);
}

const Q_Encoding& Q_EncodingAt(std::int32_t index) {
    const bool isKnown = index >= 0 && index < kEncodingCount;
    return Registry()[isKnown ? static_cast<std::size_t>(index) : 0];
}

const Q_Encoding& Q_EncodingOfConverter(const char* converterName) {
    return Q_EncodingAt(Find(converterName, &Q_Encoding::converterName, 0));
}

bool Q_IsBytePair(const Q_Encoding& encoding, char first, char second) {
    return encoding.firstBytes.test(static_cast<unsigned char>(first)) &&
           encoding.secondBytes.test(static_cast<unsigned char>(second));
}

}  // namespace ventrix
