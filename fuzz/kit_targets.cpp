// The parsers of the client kit: paths, formatted input and output, templates, encodings.
#include <cstdio>
#include <memory>
#include <vector>

#include "fileset/path_classification.h"
#include "fuzz/checks.h"
#include "fuzz/targets.h"
#include "kit/format/format.h"
#include "kit/format/scan.h"
#include "kit/format/templates.h"
#include "kit/paths/file_path.h"
#include "kit/paths/portable_path.h"
#include "kit/paths/resolve_path.h"
#include "kit/resource_strings.h"
#include "kit/text/characters.h"
#include "kit/text/convert.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"

namespace ventrix::fuzz {
namespace {

std::string TextOf(const Q_String& text) {
    return text == nullptr ? std::string() : text.get();
}

void CheckClassification(const std::string& path, const std::string& other) {
    const std::string common = CommonBaseFolder({path, other});
    Check(path.starts_with(common) && other.starts_with(common), "not a common folder: " + common);
    Check(path.starts_with(PathRoot(path)), "the root is not the beginning of " + path);
    const std::string name = FileNameOf(path);
    Check(EndsWith(path, name), "the name is not the end of " + path);
}

/// A path from a drive without empty components keeps its portable form.
void CheckPortable(const std::string& path) {
    const Q_String portable(Q_NativeToPortable(path.c_str(), nullptr));
    const Q_String native(portable == nullptr ? nullptr : Q_PortableToNative(portable.get()));
    const bool isPlain = path.starts_with("C:\\") && path.find("\\\\") == std::string::npos &&
                         path.find_first_of("<>/") == std::string::npos;
    if (native != nullptr && isPlain) {
        const std::string again = TextOf(Q_String(Q_NativeToPortable(native.get(), nullptr)));
        Check(again == portable.get(), path + " has two portable forms: " + portable.get() + " and " + again);
    }
}

/// As many pointers as conversions are allowed, each to room for anything that the text may hold.
constexpr std::size_t kScanPointers = 8;

std::size_t CountOf(std::string_view text, char c) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), c));
}

}  // namespace

// The first line is a path, the second a folder or another path, the rest portable text.
void Paths(std::string_view input) {
    Parts parts(input);
    const std::string path = parts.Line();
    const std::string base = parts.Line();
    const std::string joined = JoinPath(base, path);
    Check(joined.size() < kPathBufferSize, "the joined path is too long");
    const std::string relative = RelativeTo(path, base);
    Check(relative.size() < kPathBufferSize, "the relative path is too long");
    CheckClassification(path, base);
    CheckPortable(path);
    const Q_String native(Q_PortableToNative(parts.Rest().c_str()));
    Check(TextOf(native).size() < kPathBufferSize, "the native path is too long");
}

// The first line is a format, the rest the text. Every conversion stores through a pointer, so that pointers
// to memory as long as the text suit any format.
void Scan(std::string_view input) {
    Parts parts(input);
    const std::string format = parts.Line();
    const std::string text = parts.Rest();
    if (CountOf(format, '%') > kScanPointers) {
        return;
    }
    std::vector<std::unique_ptr<char[]>> stores;
    for (std::size_t i = 0; i < kScanPointers; ++i) {
        stores.push_back(std::make_unique<char[]>(text.size() + 16));
    }
    const int count =
        Q_ScanText(text.c_str(), format.c_str(), stores[0].get(), stores[1].get(), stores[2].get(),
                   stores[3].get(), stores[4].get(), stores[5].get(), stores[6].get(), stores[7].get());
    Check(count >= -1 && count <= static_cast<int>(kScanPointers), "a wrong number of items");
}

#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
#endif

namespace {

constexpr std::size_t kLongestOutput = 20000;

template <class Argument>
void CheckFormat(const std::string& format, Argument argument, bool isStandard) {
    std::vector<char> ours(kLongestOutput);
    Q_FormatText(ours.data(), format.c_str(), argument);
    if (isStandard) {
        std::vector<char> theirs(kLongestOutput);
        std::snprintf(theirs.data(), theirs.size(), format.c_str(), argument);
        Check(std::string(ours.data()) == theirs.data(),
              format + " gives " + ours.data() + " instead of " + theirs.data());
    }
}

/// The longest run of digits is too short for an output of more than kLongestOutput bytes. A size such as
/// "I32" does not end a run, since what stands before and after it becomes one number.
bool HasShortNumbers(std::string_view text) {
    std::size_t run = 0;
    for (const char c : text) {
        run = c >= '0' && c <= '9' ? run + 1 : c == 'I' ? run : 0;
        if (run > 4) {
            return false;
        }
    }
    return true;
}

/// The part between "%" and the letter as every C library takes it: flags, width, precision, size, each at
/// most once and in this order, and no flag without an effect on the letter.
bool IsStandardHead(std::string_view head) {
    const auto skip = [&](std::string_view set, std::size_t most) {
        while (most > 0 && !head.empty() && set.find(head[0]) != std::string_view::npos) {
            head.remove_prefix(1);
            --most;
        }
    };
    skip("+-", 2);
    if (head.starts_with('0')) {
        return false;
    }
    skip("0123456789", 3);
    if (head.starts_with('.')) {
        head.remove_prefix(1);
        skip("0123456789", 2);
    }
    return head.empty() || head == "l" || head == "ll" || head == "h" || head == "hh";
}

}  // namespace

// A byte chooses the conversion, a line is what stands between "%" and its letter, and the rest the argument.
void Format(std::string_view input) {
    constexpr std::string_view kLetters = "dioxXucsfeEgG%";
    Parts parts(input);
    const char letter = kLetters[parts.Byte() % kLetters.size()];
    const std::string head = parts.Line();
    const bool consumesMore = head.find_first_of("*%dioxXucsfeEgGpnC") != std::string::npos;
    if (consumesMore || head.find('\0') != std::string::npos || !HasShortNumbers(head) || head.size() > 60) {
        return;
    }
    const std::string format = "<%" + head + letter + ">";
    const bool isStandard = IsStandardHead(head);
    if (letter == 's') {
        const std::string text = parts.Rest().substr(0, 1000);
        CheckFormat(format, text.c_str(), head.find('l') == std::string::npos && isStandard);
    } else if (std::string_view("feEgG").find(letter) != std::string_view::npos) {
        const std::int64_t bits = parts.Number();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        const bool takesLongDouble = head.find('L') != std::string::npos;
        if (!takesLongDouble) {
            CheckFormat(format, number, isStandard && head.find_first_of("hl") == std::string::npos);
        }
    } else if (letter == 'c') {
        CheckFormat(format, 1 + parts.Byte() % 127,
                    isStandard && head.find_first_of("hl") == std::string::npos);
    } else if (letter == '%') {
        CheckFormat(format, 0, false);
    } else if (head.find_first_of("ljztLI") != std::string::npos) {
        CheckFormat(format, static_cast<long long>(parts.Number()), isStandard);
    } else {
        CheckFormat(format, static_cast<int>(parts.Number()), isStandard);
    }
}

// A byte gives the size of the output, a line the template, the rest the inserted string.
void Templates(std::string_view input) {
    Parts parts(input);
    const std::uint32_t size = 1U + parts.Byte();
    const std::string text = parts.Line();
    const std::string inserted = parts.Rest();
    Q_TemplateArguments arguments = {};
    arguments.slots[0] = {'s', {}};
    arguments.slots[0].text = inserted.c_str();
    arguments.slots[1] = {'d', {}};
    arguments.slots[1].integer = -7;
    arguments.slots[2] = {'f', {}};
    arguments.slots[2].number = 2.5;
    arguments.slots[3] = {'r', {}};
    arguments.slots[3].integer = 1;
    // Neither is longer than the output, since the template's own text is not cut for what it inserts.
    std::vector<char> output(size);
    Q_ExpandTemplate(text.c_str(), output.data(), size, &arguments);
    Check(std::memchr(output.data(), '\0', size) != nullptr, "the expansion is not terminated");
    std::string escapes = text + '\0';
    Q_ExpandByteEscapes(escapes.data());
    Check(std::strlen(escapes.c_str()) <= 4 * text.size(), "byte escapes make the text longer");
}

// A byte each for the two encodings, the options and a length, then the text.
void Encodings(std::string_view input) {
    constexpr int kCodes = 18;
    Parts parts(input);
    const int source = parts.Byte() % kCodes;
    const int target = parts.Byte() % kCodes;
    const std::uint8_t options = parts.Byte();
    const std::uint32_t length = parts.Byte();
    std::string text = parts.Rest().substr(0, 500);
    text.append(2 + text.size() % 2, '\0');  // Terminated as bytes and as UTF-16.
    const Q_String converted(
        Q_ConvertByCode(text.c_str(), source, target, (options & 1) != 0, (options & 2) != 0));
    if (source == kCodeUtf8 && target == kCodeUtf16 && converted != nullptr) {
        const Q_String back(
            Q_ConvertByCode(converted.get(), kCodeUtf16, kCodeUtf8, (options & 1) != 0, false));
        const Q_String once(Q_ConvertByCode(back.get(), kCodeUtf8, kCodeUtf16, (options & 1) != 0, false));
        const Q_String twice(Q_ConvertByCode(once.get(), kCodeUtf16, kCodeUtf8, (options & 1) != 0, false));
        Check(TextOf(back) == TextOf(twice), "UTF-16 does not represent all of UTF-8");
    }
    for (std::int32_t encoding = 0; encoding < kEncodingCount; ++encoding) {
        const std::uint32_t cut = Q_CutPoint(text.c_str(), length, encoding);
        Check(cut <= length, "a cut past the limit");
        std::vector<char> copy(length + 1);
        Q_StrCopyChars(copy.data(), text.c_str(), length + 1, encoding);
        Check(std::memchr(copy.data(), '\0', copy.size()) != nullptr, "the copy is not terminated");
        Q_StrFindLastChar(text.c_str(), '\\', encoding);
    }
}

}  // namespace ventrix::fuzz
