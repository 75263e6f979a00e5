#include "markers/xml/references.h"

#include <libxml/entities.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "markers/xml/characters.h"
#include "markers/xml/escaping.h"
#include "markers/xml/libxml.h"

namespace ventrix::xml {
namespace {

constexpr char kReplacementCharacter[] = "\xEF\xBF\xBD";

void AppendUtf8(std::string& out, std::uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | code >> 6);
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | code >> 12);
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | code >> 18);
        out += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

/// The code of a character reference's name, as in "#65" or "#x41"; nothing for another name.
std::optional<std::uint32_t> CharacterCode(std::string_view name) {
    if (!name.starts_with('#')) {
        return std::nullopt;
    }
    const bool hex = name.size() > 1 && name[1] == 'x';
    name.remove_prefix(hex ? 2 : 1);
    std::uint32_t code = 0;
    std::from_chars(name.data(), name.data() + name.size(), code, hex ? 16 : 10);
    return code;
}

bool IsCharacter(std::uint32_t code) {
    std::string utf8;
    AppendUtf8(utf8, code);
    return code <= 0x10FFFF && CharacterLength(utf8) == utf8.size();
}

/// The kind of a character reference of this name, as in "#65".
ReferenceKind CharacterKind(std::string_view name) {
    const bool hex = name.starts_with("#x");
    const std::string_view digits = name.substr(hex ? 2 : 1);
    std::uint32_t code = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
    if (error != std::errc() || end != digits.data() + digits.size() || !IsCharacter(code)) {
        return ReferenceKind::kOther;
    }
    const bool whitespace = code == ' ' || code == '\t' || code == '\n' || code == '\r';
    return whitespace ? ReferenceKind::kWhitespace : ReferenceKind::kCharacter;
}

/// The name between the "&" at `at` and the next ";"; empty if there is none.
std::string_view NameAt(std::string_view raw, std::size_t at) {
    const std::size_t end = raw.find(';', at);
    return end == std::string_view::npos ? std::string_view() : raw.substr(at + 1, end - at - 1);
}

std::string_view Replacement(std::string_view name, xmlDoc* dtd) {
    const std::string terminated(name);
    const xmlEntity* entity = dtd == nullptr ? nullptr : xmlGetDocEntity(dtd, Chars(terminated));
    const bool internal =
        entity != nullptr && entity->etype == XML_INTERNAL_GENERAL_ENTITY && entity->content != nullptr;
    return internal ? View(entity->content) : std::string_view();
}

/// Appends the character that the reference at the "&" stands for, if it is a character reference or a
/// predefined entity. The length of the reference; 0 for another one.
std::size_t AppendReferred(std::string& out, std::string_view raw, std::size_t at) {
    if (const NamedCharacter named = NamedCharacterAt(raw.substr(at)); named.length != 0) {
        out += named.character;
        return named.length;
    }
    const std::string_view name = NameAt(raw, at);
    if (const auto code = CharacterCode(name)) {
        AppendUtf8(out, *code);
        return name.size() + 2;
    }
    return 0;
}

void AppendValue(std::string& out, std::string_view raw, xmlDoc* dtd, int depth) {
    for (std::size_t at = 0; at < raw.size() && out.size() < kExpansionLimit; ++at) {
        const char c = raw[at];
        if (c == '&') {
            if (const std::size_t length = AppendReferred(out, raw, at); length != 0) {
                at += length - 1;
                continue;
            }
            const std::string_view name = NameAt(raw, at);
            if (depth < kDeepestEntity) {
                AppendValue(out, Replacement(name, dtd), dtd, depth + 1);
            }
            at += name.size() + 1;
        } else if (c == '\r' && at + 1 < raw.size() && raw[at + 1] == '\n') {
            continue;
        } else {
            out += c == '\t' || c == '\n' || c == '\r' ? ' ' : c;
        }
    }
}

void AppendExpanded(std::string& out, std::string_view content, xmlDoc* dtd, int depth) {
    for (std::size_t at = 0; at < content.size() && out.size() < kExpansionLimit; ++at) {
        const std::string_view name = content[at] == '&' ? NameAt(content, at) : std::string_view();
        if (name.empty() || name[0] == '#' || NamedCharacterAt(content.substr(at)).length != 0) {
            out += content[at];
        } else {
            if (depth < kDeepestEntity) {
                AppendExpanded(out, Replacement(name, dtd), dtd, depth + 1);
            }
            at += name.size() + 1;
        }
    }
}

using Escapes = std::pair<char, std::string_view>;

constexpr EscapeTable kTextEscapes =
    MakeEscapeTable(std::array<Escapes, 4>{{{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\r', "&#13;"}}});

constexpr EscapeTable kTextEscapesWithReturns = MakeEscapeTable(
    std::array<Escapes, 5>{{{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\r', "&#13;"}, {'\n', "\r\n"}}});

constexpr EscapeTable kQuotedEscapes = Combine(kMarkupEscapes, kTextEscapes);
constexpr EscapeTable kQuotedEscapesWithReturns = Combine(kMarkupEscapes, kTextEscapesWithReturns);

constexpr EscapeTable ValueEscapes(Escapes quote) {
    return MakeEscapeTable(std::array<Escapes, 7>{{{'&', "&amp;"},
                                                   {'<', "&lt;"},
                                                   {'>', "&gt;"},
                                                   {'\t', "&#9;"},
                                                   {'\n', "&#10;"},
                                                   {'\r', "&#13;"},
                                                   std::move(quote)}});
}

constexpr EscapeTable kValueEscapes = ValueEscapes({'"', "&quot;"});
constexpr EscapeTable kValueEscapesInApostrophes = ValueEscapes({'\'', "&#39;"});

/// Copies the runs of bytes that stay as they are, and escapes what is between them. `skip` returns the next
/// position that may need an escape.
template <typename Skip>
void AppendXml(std::string& xml, std::string_view text, const EscapeTable& table, Skip skip) {
    std::size_t run = 0;
    for (std::size_t at = skip(0); at < text.size(); at = skip(at)) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const Escape& escape = table[byte];
        const bool isPlain = byte >= ' ' && byte <= '~';
        const std::size_t length = isPlain ? 1 : CharacterLength(text.substr(at, 4));
        if (length > 1 || (length == 1 && escape.length == 1)) {
            at += length;
            continue;
        }
        xml.append(text, run, at - run);
        xml += length == 0 ? std::string_view(kReplacementCharacter)
                           : std::string_view(escape.text.data(), escape.length);
        run = ++at;
    }
    xml.append(text, run);
}

}  // namespace

Reference ReadReference(std::string_view text) {
    if (const NamedCharacter named = NamedCharacterAt(text); named.length != 0) {
        return {ReferenceKind::kCharacter, named.length};
    }
    const auto end = static_cast<std::size_t>(
        std::ranges::find_if(text.substr(1), [](char c) { return c == ';' || c == '<' || c == '&'; }) -
        text.begin());
    if (end == text.size() || text[end] != ';') {
        return {ReferenceKind::kOther, 1};
    }
    const std::string_view name = text.substr(1, end - 1);
    if (name.starts_with('#')) {
        return {CharacterKind(name), end + 1};
    }
    return {ReferenceKind::kOther, end + 1};
}

void AppendDecodedText(std::string& out, std::string_view raw) {
    if (raw.find('\r') != std::string_view::npos) {
        // Line ends come first: the carriage return of a character reference is not part of one.
        AppendDecodedText(out, NormalizeLineEnds(raw));
        return;
    }
    // A reference is longer than the character that it stands for, so the result fits into as many bytes.
    const std::size_t start = out.size();
    out.resize(start + raw.size());
    char* to = out.data() + start;
    std::string character;
    for (std::size_t mark = 0; (mark = raw.find('&')) != std::string_view::npos;) {
        to = std::copy_n(raw.data(), mark, to);
        raw.remove_prefix(mark);
        if (const NamedCharacter named = NamedCharacterAt(raw); named.length != 0) {
            *to++ = named.character;
            raw.remove_prefix(named.length);
            continue;
        }
        character.clear();
        const std::size_t length = AppendReferred(character, raw, 0);
        to = std::ranges::copy(character, to).out;
        raw.remove_prefix(length != 0 ? length : std::min(NameAt(raw, 0).size() + 2, raw.size()));
    }
    to = std::ranges::copy(raw, to).out;
    out.resize(static_cast<std::size_t>(to - out.data()));
}

std::string NormalizeLineEnds(std::string_view raw) {
    std::string out;
    out.reserve(raw.size());
    for (std::size_t at = 0; at < raw.size(); ++at) {
        if (raw[at] != '\r') {
            out += raw[at];
        } else if (at + 1 == raw.size() || raw[at + 1] != '\n') {
            out += '\n';
        }
    }
    return out;
}

std::string DecodeAttributeValue(std::string_view raw, xmlDoc* dtd) {
    std::string out;
    out.reserve(raw.size());
    AppendValue(out, raw, dtd, 0);
    return out;
}

std::string CollapseSpaces(std::string_view value) {
    std::string out;
    for (const char c : value) {
        if (c != ' ' || (!out.empty() && out.back() != ' ')) {
            out += c;
        }
    }
    if (out.ends_with(' ')) {
        out.pop_back();
    }
    return out;
}

void AppendEscapedText(std::string& xml, std::string_view text, LineEnd lineEnd) {
    AppendXml(xml, text, lineEnd == LineEnd::kLineFeed ? kTextEscapes : kTextEscapesWithReturns,
              [&](std::size_t at) { return SkipAllBut(text, at, '&', '<', '>'); });
}

void AppendQuotedText(std::string& xml, std::string_view markup, LineEnd lineEnd) {
    AppendEscaped(xml, markup, lineEnd == LineEnd::kLineFeed ? kQuotedEscapes : kQuotedEscapesWithReturns);
}

void AppendEscapedValue(std::string& xml, std::string_view value, char quote) {
    AppendXml(xml, value, quote == '"' ? kValueEscapes : kValueEscapesInApostrophes,
              [&](std::size_t at) { return SkipAllBut(value, at, '&', '<', '>', quote); });
}

std::string ExpandEntity(std::string_view name, xmlDoc* dtd) {
    std::string out;
    AppendExpanded(out, Replacement(name, dtd), dtd, 0);
    return out;
}

}  // namespace ventrix::xml
