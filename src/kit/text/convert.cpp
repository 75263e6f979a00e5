#include "kit/text/convert.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>

#include <cstring>
#include <limits>

#include "kit/text/byte_buffer.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"
#include "kit/text/symbol_sets.h"
#include "kit/text/utf8.h"

namespace ventrix {
namespace {

constexpr char kUtf8Name[] = "UTF-8";
constexpr char kUtf16Name[] = "UTF-16";
constexpr char kLocaleName[] = "locale";

// Converter names by encoding code; the symbol sets have none.
constexpr const char* kConverterNames[] = {
    "velmar-ql-roman-windows", "ISO-8859-1", "US-ASCII",       "windows-1252", "macintosh",        "JIS7",
    "velmar-ql-shift-jis",     "EUC-JP",     "velmar-ql-big5", "EUC-CN",       "velmar-ql-gb2312", "HZ",
    "velmar-ql-ksc-5601",      nullptr,      nullptr,          nullptr,        kUtf8Name,          kUtf16Name,
};
constexpr std::int32_t kCodeCount = sizeof kConverterNames / sizeof *kConverterNames;

const char* ConverterName(std::int32_t code) {
    return code >= 0 && code < kCodeCount ? kConverterNames[code] : nullptr;
}

bool Is(const char* name, const char* known) {
    return Q_StrIEqual(name, known);
}

char16_t UnitAt(const void* text, std::size_t index) {
    char16_t unit = 0;
    std::memcpy(&unit, static_cast<const char*>(text) + index * sizeof unit, sizeof unit);
    return unit;
}

// The length in bytes, without the terminator.
std::uint32_t ByteLength(const void* text, bool isUtf16) {
    if (!isUtf16) {
        return Q_StrLen(static_cast<const char*>(text));
    }
    std::uint32_t units = 0;
    while (UnitAt(text, units) != 0) {
        ++units;
    }
    return units * 2;
}

char* CopyOf(const void* text, bool isUtf16) {
    ByteBuffer copy;
    copy.Append(text, ByteLength(text, isUtf16));
    return copy.TakeText();
}

char* QuestionMarks(bool isUtf16) {
    ByteBuffer marks;
    marks.Append(isUtf16 ? static_cast<const void*>(u"???") : "???", isUtf16 ? 6 : 3);
    return marks.TakeText();
}

// Owns an ICU converter; Get is null if ICU could not open it.
class Converter {
  public:
    explicit Converter(const char* name) {
        UErrorCode status = U_ZERO_ERROR;
        // A null name selects ICU's default converter.
        converter_ = ucnv_open(Is(name, kLocaleName) ? nullptr : name, &status);
        if (U_FAILURE(status) != 0) {
            converter_ = nullptr;
        }
    }
    ~Converter() { ucnv_close(converter_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    UConverter* Get() const { return converter_; }

  private:
    UConverter* converter_ = nullptr;
};

// A conversion walks the source text one character at a time and collects runs: everything between two
// control characters. A run goes through ICU as a whole, first from the source encoding to UTF-16, then from
// UTF-16 to the target encoding; if one side is UTF-16 already, that step is left out. A control character
// ends the run and is appended unconverted, because some converters (JIS7, HZ) use control bytes for
// themselves and others have none of them. Each run opens its own converters, so an encoding with shift
// states starts every run in its initial state. A run that fails contributes nothing, and the next one
// starts afresh.
//
// The job holds the parameters of one conversion, which do not change during it.
struct Job {
    const char* source;
    const char* target;
    bool isFromUtf16;
    bool isToUtf16;
    bool isFromUtf8;
    bool isFromLocale;
    bool keepControls;
    bool escape;
};

Job MakeJob(const char* source, const char* target, bool keepControls, bool escape) {
    const bool hasLocale = Is(source, kLocaleName) || Is(target, kLocaleName);
    return {source,
            target,
            Is(source, kUtf16Name),
            Is(target, kUtf16Name),
            Is(source, kUtf8Name),
            Is(source, kLocaleName),
            keepControls || hasLocale,
            escape};
}

std::int32_t Capacity(std::uint64_t count) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(count < kMost ? count : kMost);
}

void InstallEscape(UConverter* converter) {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_ESCAPE, nullptr, nullptr, nullptr, &status);
}

// The run in UTF-16; empty if it cannot be converted.
ByteBuffer RunToUnits(const Job& job, const ByteBuffer& run) {
    ByteBuffer units;
    const Converter converter(job.source);
    if (converter.Get() == nullptr) {
        return units;
    }
    if (job.escape) {
        InstallEscape(converter.Get());
    }
    ucnv_setFallback(converter.Get(), true);
    // Escapes take more units than the bytes they stand for, so a run of many may not fit; it is then
    // dropped.
    const std::int32_t capacity = Capacity(std::uint64_t{run.Size()} * 2 + 1);
    auto* output =
        reinterpret_cast<UChar*>(units.Extend(static_cast<std::uint64_t>(capacity) * sizeof(UChar)));
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t count =
        ucnv_toUChars(converter.Get(), output, capacity, run.Data(), Capacity(run.Size()), &status);
    units.Shrink(U_FAILURE(status) != 0 ? 0 : static_cast<std::uint32_t>(count) * sizeof(UChar));
    return units;
}

// Appends the units in the target encoding, at most `capacity` bytes; nothing if they cannot be converted.
void AppendUnits(const Job& job, const ByteBuffer& units, std::int32_t capacity, ByteBuffer& output) {
    const Converter converter(job.target);
    if (converter.Get() == nullptr) {
        return;
    }
    const std::uint32_t before = output.Size();
    char* place = output.Extend(static_cast<std::uint64_t>(capacity));
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t count =
        ucnv_fromUChars(converter.Get(), place, capacity, reinterpret_cast<const UChar*>(units.Data()),
                        Capacity(units.Size() / sizeof(UChar)), &status);
    output.Shrink(before + (U_FAILURE(status) != 0 ? 0 : static_cast<std::uint32_t>(count)));
}

// Appends the converted run to the output and empties the run.
void FlushRun(const Job& job, ByteBuffer& run, ByteBuffer& output) {
    if (run.Size() == 0) {
        return;
    }
    const std::uint64_t length = job.isFromUtf16 ? run.Size() / sizeof(UChar) : run.Size();
    const std::uint64_t capacity = job.isFromUtf16 ? length * 4 + 4 : (length * 2 + 1) * 4;
    ByteBuffer converted;
    const ByteBuffer* units = &run;
    if (!job.isFromUtf16) {
        converted = RunToUnits(job, run);
        units = &converted;
    }
    if (job.isToUtf16) {
        output.Append(units->Data(), units->Size());
    } else if (units->Size() > 0) {
        AppendUnits(job, *units, Capacity(capacity), output);
    }
    run.Shrink(0);
}

// The length in bytes of the character at the text.
std::uint32_t CharacterBytes(const Job& job, const Q_Encoding& encoding, const char* text) {
    if (job.isFromUtf16) {
        return sizeof(UChar);
    }
    if (job.isFromUtf8) {
        return Q_Utf8Length(*text);
    }
    if (job.isFromLocale) {
        return 1;
    }
    return Q_IsBytePair(encoding, text[0], text[1]) ? 2 : 1;
}

void AppendControl(const Job& job, char16_t control, ByteBuffer& output) {
    if (job.isToUtf16) {
        output.Append(&control, sizeof control);
    } else {
        const char byte = static_cast<char>(control);
        output.Append(&byte, 1);
    }
}

char* RunJob(const Job& job, const char* text) {
    const Q_Encoding& encoding = Q_EncodingOfConverter(job.source);
    const char* end = text + ByteLength(text, job.isFromUtf16);
    ByteBuffer run;
    ByteBuffer output;
    while (text < end) {
        // The first byte or unit is enough: no longer character begins with a value below 0x20.
        const char16_t value = job.isFromUtf16 ? UnitAt(text, 0) : static_cast<unsigned char>(*text);
        const std::uint32_t length = CharacterBytes(job, encoding, text);
        if (value < 0x20 && !job.keepControls) {
            FlushRun(job, run, output);
            AppendControl(job, value, output);
        } else {
            run.Append(text, length);
        }
        text += length;
    }
    FlushRun(job, run, output);
    return output.TakeText();
}

// Text of a symbol set in UTF-16. Characters that the set does not define are dropped.
ByteBuffer SymbolsToUnits(const char* text, std::int32_t code, bool keepControls, bool isUtf8) {
    ByteBuffer units;
    while (*text != '\0') {
        char16_t decoded[2] = {static_cast<unsigned char>(*text)};
        if (isUtf8) {
            Q_Utf8ToUnits(text, decoded);
            Q_Utf8Next(&text);
        } else {
            ++text;
        }
        const bool isControl = decoded[0] < 0x20 && !keepControls;
        const char16_t unit = isControl ? decoded[0] : Q_SymbolUnit(code, decoded[0]);
        if (unit != kNoSymbol) {
            units.Append(&unit, sizeof unit);
        }
    }
    return units;
}

char* ConvertSymbols(const char* text, std::int32_t source, std::int32_t target, bool keepControls,
                     bool isUtf8) {
    const Q_String units(SymbolsToUnits(text, source, keepControls, isUtf8).TakeText());
    return Q_ConvertText(units.get(), kUtf16Name, ConverterName(target), keepControls, false);
}

}  // namespace

char* Q_ConvertByCode(const void* text, std::int32_t source, std::int32_t target, bool keepControls,
                      bool utf8Input) {
    if (text == nullptr) {
        return nullptr;
    }
    if (source == target) {
        return CopyOf(text, source == kCodeUtf16);
    }
    if (Q_IsSymbolSet(target)) {
        return nullptr;
    }
    if (Q_IsSymbolSet(source)) {
        return ConvertSymbols(static_cast<const char*>(text), source, target, keepControls, utf8Input);
    }
    if (ConverterName(source) == nullptr) {
        Q_Fatal();
    }
    return Q_ConvertText(text, ConverterName(source), ConverterName(target), keepControls, false);
}

char* Q_ConvertText(const void* text, const char* source, const char* target, bool keepControls,
                    bool escape) {
    if (text == nullptr) {
        return nullptr;
    }
    const bool isUtf16 = Is(source, kUtf16Name);
    if (Q_StrLen(source) == 0 || Q_StrLen(target) == 0 || ByteLength(text, isUtf16) == 0) {
        return CopyOf(text, isUtf16);
    }
    if (Is(source, kUtf8Name) && !Q_IsValidUtf8(static_cast<const char*>(text))) {
        return QuestionMarks(Is(target, kUtf16Name));
    }
    if (Is(source, target)) {
        return CopyOf(text, isUtf16);
    }
    return RunJob(MakeJob(source, target, keepControls, escape), static_cast<const char*>(text));
}

char* Q_CurrentToUtf8(const char* text) {
    if (Q_CurrentEncoding() == kUtf8Encoding) {
        return Q_StrDup(text);
    }
    return Q_ConvertText(text, Q_EncodingAt(Q_CurrentEncoding()).converterName, kUtf8Name, false, false);
}

}  // namespace ventrix
