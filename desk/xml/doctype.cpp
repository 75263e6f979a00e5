#include "desk/xml/doctype.h"

#include <algorithm>

#include "desk/xml/encodings.h"

namespace ventrix::desk {
namespace {

constexpr std::string_view kWhitespace = " \t\r\n";
constexpr std::size_t kNpos = std::string_view::npos;

/// A position in the prolog. Each step moves it past what it skips; if that is cut off, to the end of the
/// document.
struct Cursor {
    std::string_view text;
    std::size_t at = 0;

    bool Sees(std::string_view word) const { return text.substr(at).starts_with(word); }
    void SkipWhitespace() { at = std::min(text.find_first_not_of(kWhitespace, at), text.size()); }
    void SkipPast(std::string_view word) {
        const std::size_t found = text.find(word, at);
        at = found == kNpos ? text.size() : found + word.size();
    }
    void SkipName() { at = std::min(text.find_first_of(" \t\r\n/>[", at), text.size()); }
    void SkipLiteral() {
        const char quote = at < text.size() ? text[at] : '\0';
        if (quote == '"' || quote == '\'') {
            ++at;
            SkipPast({&quote, 1});
        }
    }
    void SkipWord(std::string_view word) {
        at += word.size();
        SkipWhitespace();
    }
};

/// Moves to the DOCTYPE or to the root's start tag, past the XML declaration, comments and processing
/// instructions.
void SkipMisc(Cursor& cursor) {
    while (true) {
        cursor.SkipWhitespace();
        if (cursor.Sees("<?")) {
            cursor.SkipPast("?>");
        } else if (cursor.Sees("<!--")) {
            cursor.SkipPast("-->");
        } else {
            return;
        }
    }
}

std::string Quoted(std::string_view systemId) {
    return "\"" + std::string(systemId) + "\"";
}

/// The range of the system id in a DOCTYPE, quotes included; an empty range is where it has to be inserted.
struct SystemIdPlace {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool needsKeyword = false;
};

SystemIdPlace FindSystemId(Cursor cursor) {
    cursor.SkipWord("<!DOCTYPE");
    cursor.SkipName();
    const std::size_t afterName = cursor.at;
    cursor.SkipWhitespace();
    if (cursor.Sees("PUBLIC")) {
        cursor.SkipWord("PUBLIC");
        cursor.SkipLiteral();
        const std::size_t afterPublic = cursor.at;
        cursor.SkipWhitespace();
        if (!cursor.Sees("\"") && !cursor.Sees("'")) {
            return {afterPublic, afterPublic};
        }
    } else if (cursor.Sees("SYSTEM")) {
        cursor.SkipWord("SYSTEM");
    } else {
        return {afterName, afterName, true};
    }
    const std::size_t begin = cursor.at;
    cursor.SkipLiteral();
    return {begin, cursor.at};
}

std::string WithChangedDoctype(const Cursor& doctype, std::string_view systemId) {
    const SystemIdPlace place = FindSystemId(doctype);
    std::string changed(doctype.text.substr(0, place.begin));
    changed += place.needsKeyword ? " SYSTEM " : (place.begin == place.end ? " " : "");
    changed += Quoted(systemId);
    return changed.append(doctype.text.substr(place.end));
}

std::string WithNewDoctype(const Cursor& root, std::string_view systemId) {
    Cursor afterName = root;
    ++afterName.at;
    afterName.SkipName();
    const std::string_view name = root.text.substr(root.at + 1, afterName.at - root.at - 1);
    std::string changed(root.text.substr(0, root.at));
    changed.append("<!DOCTYPE ").append(name).append(" SYSTEM ").append(Quoted(systemId)).append(">\n");
    return changed.append(root.text.substr(root.at));
}

bool IsUtf16(std::string_view text) {
    const std::string_view start = text.substr(0, 2);
    return start == "\xFF\xFE" || start == "\xFE\xFF" || start == std::string_view("<\0", 2) ||
           start == std::string_view("\0<", 2);
}

std::string Utf8Of(std::string_view utf16) {
    const bool bigEndian = utf16.starts_with("\xFE\xFF") || utf16.starts_with(std::string_view("\0", 1));
    if (Utf16Encoding(utf16) != nullptr) {
        utf16.remove_prefix(2);
    }
    return ToUtf8(utf16, bigEndian ? "UTF-16BE" : "UTF-16LE").value_or(std::string());
}

void DeclareUtf8(std::string& text) {
    Cursor cursor{.text = text};
    if (!cursor.Sees("<?xml")) {
        return;
    }
    cursor.SkipPast("?>");
    const std::size_t encoding = text.substr(0, cursor.at).find("encoding");
    if (encoding == kNpos) {
        return;
    }
    cursor.at = std::min(text.find_first_of("\"'", encoding), text.size());
    const std::size_t begin = cursor.at;
    cursor.SkipLiteral();
    text.replace(begin, cursor.at - begin, "\"UTF-8\"");
}

/// Past a byte order mark and what precedes the DOCTYPE or the root.
Cursor AfterMisc(std::string_view text) {
    Cursor cursor{.text = text};
    if (cursor.Sees("\xEF\xBB\xBF")) {
        cursor.at = 3;
    }
    SkipMisc(cursor);
    return cursor;
}

}  // namespace

std::optional<std::string> WithSystemId(std::string_view text, std::string_view systemId) {
    std::string converted;
    if (IsUtf16(text)) {
        converted = Utf8Of(text);
        DeclareUtf8(converted);
        text = converted;
    }
    const Cursor cursor = AfterMisc(text);
    if (cursor.Sees("<!DOCTYPE")) {
        return WithChangedDoctype(cursor, systemId);
    }
    return cursor.Sees("<") ? std::optional(WithNewDoctype(cursor, systemId)) : std::nullopt;
}

bool HasDoctype(std::string_view text) {
    return AfterMisc(text).Sees("<!DOCTYPE");
}

std::string WithoutAddedDoctype(std::string_view text) {
    Cursor cursor = AfterMisc(text);
    const std::size_t begin = cursor.at;
    if (!cursor.Sees("<!DOCTYPE")) {
        return std::string(text);
    }
    cursor.at = FindSystemId(cursor).end;
    cursor.SkipPast(">");
    cursor.SkipWhitespace();
    return std::string(text.substr(0, begin)).append(text.substr(cursor.at));
}

}  // namespace ventrix::desk
