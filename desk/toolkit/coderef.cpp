#include "desk/toolkit/coderef.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <vector>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_run.h"
#include "desk/xml/file_access.h"
#include "desk/xml/limits.h"
#include "platform/native_files.h"

namespace ventrix::desk {
namespace {

using Lines = std::vector<std::string_view>;

/// The lines from `first` on and before `end`, counted from 0.
struct LineRange {
    std::size_t first = 0;
    std::size_t end = static_cast<std::size_t>(-1);
};

Lines LinesOf(std::string_view content) {
    Lines lines;
    while (!content.empty()) {
        const std::size_t end = std::min(content.find('\n'), content.size());
        lines.push_back(content.substr(0, end));
        content.remove_prefix(std::min(end + 1, content.size()));
    }
    return lines;
}

/// The two parts of a fragment such as "token=first,last"; the last one is empty if there is no comma.
/// Nothing if the fragment does not begin with the name.
std::optional<std::pair<std::string, std::string>> PartsAfter(std::string_view name,
                                                              std::string_view fragment) {
    if (!fragment.starts_with(name)) {
        return std::nullopt;
    }
    fragment.remove_prefix(name.size());
    const std::size_t comma = std::min(fragment.find(','), fragment.size());
    return std::pair(std::string(fragment.substr(0, comma)),
                     std::string(fragment.substr(std::min(comma + 1, fragment.size()))));
}

/// Whether the text is empty, so that the value stays, or a number and nothing else.
bool ReadNumber(std::string_view text, std::size_t& value) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const auto end = std::from_chars(text.data(), text.data() + text.size(), value);
    return text.empty() || (end.ec == std::errc() && end.ptr == text.data() + text.size());
}

/// "#line-range(5,10)", counted from 1.
std::optional<LineRange> NumberedRange(std::string_view fragment) {
    if (!fragment.ends_with(')')) {
        return std::nullopt;
    }
    const auto parts = PartsAfter("line-range(", fragment.substr(0, fragment.size() - 1));
    LineRange range{.first = 1};
    if (!parts.has_value() || !ReadNumber(parts->first, range.first) ||
        !ReadNumber(parts->second, range.end) || range.first == 0) {
        return std::nullopt;
    }
    --range.first;
    return range;
}

/// "#line=4,10" of RFC 5147, which counts the positions between lines.
std::optional<LineRange> PositionRange(std::string_view fragment) {
    const auto parts = PartsAfter("line=", fragment);
    LineRange range;
    const bool valid = parts.has_value() && fragment.find(',') != std::string_view::npos &&
                       ReadNumber(parts->first, range.first) && ReadNumber(parts->second, range.end);
    return valid ? std::optional(range) : std::nullopt;
}

/// The first line from `begin` on that contains the text.
std::size_t FindLine(const Lines& lines, std::size_t begin, const std::string& text) {
    while (begin < lines.size() && lines[begin].find(text) == std::string_view::npos) {
        ++begin;
    }
    return begin;
}

/// "#token=begin,end": the lines between those that contain the tokens. Nothing if one of them is not found.
std::optional<LineRange> TokenRange(std::string_view fragment, const Lines& lines) {
    const auto tokens = PartsAfter("token=", fragment);
    if (!tokens.has_value()) {
        return std::nullopt;
    }
    LineRange range{.first = 0, .end = lines.size()};
    if (!tokens->first.empty()) {
        range.first = FindLine(lines, 0, tokens->first) + 1;
    }
    if (!tokens->second.empty()) {
        range.end = FindLine(lines, range.first, tokens->second);
    }
    const bool found = range.first <= lines.size() && (tokens->second.empty() || range.end < lines.size());
    return found ? std::optional(range) : std::nullopt;
}

/// Nothing if the fragment is in no known form or names what the file does not contain.
std::optional<LineRange> RangeIn(std::string_view fragment, const Lines& lines) {
    if (fragment.empty()) {
        return LineRange();
    }
    for (const auto& range :
         {NumberedRange(fragment), PositionRange(fragment), TokenRange(fragment, lines)}) {
        if (range.has_value()) {
            return range;
        }
    }
    return std::nullopt;
}

std::string Joined(const Lines& lines, const LineRange& range) {
    std::string text;
    for (std::size_t line = range.first; line < std::min(range.end, lines.size()); ++line) {
        text.append(line == range.first ? "" : "\n").append(lines[line]);
    }
    std::erase(text, '\r');
    return text;
}

bool ReadCode(const std::optional<DitaTarget>& target, std::string& content) {
    ReadScope* scope = ReadScope::Current();
    return target.has_value() && (scope == nullptr || scope->Permits(target->path, nullptr)) &&
           !platform::ReadRegularFile(ToFilesystem(target->path), kMaxFileBytes, content) &&
           xmlCheckUTF8(Xml(content.c_str())) != 0;
}

/// The text that the element stands for.
std::string CodeOf(const xmlNode* element, const RemarkSink& remarks) {
    const std::string href = Attribute(element, "href");
    std::string content;
    if (!ReadCode(DitaTargetOf(href), content)) {
        remarks(element, kDeadReference,
                "coderef \"" + AsWritten(element, href) +
                    "\" is not a readable UTF-8 file; its lines are missing",
                ReferenceIn("href", element, href));
        return {};
    }
    const Lines lines = LinesOf(content);
    const auto range = RangeIn(FragmentOf(href), lines);
    if (!range.has_value()) {
        remarks(element, kDeadReference,
                "coderef \"" + AsWritten(element, href) +
                    "\" names no lines of the file, so that all are shown; write #line-range(FIRST,LAST), "
                    "#line=BEFORE,AFTER or #token=START,END",
                ReferenceIn("href", element, href));
    }
    return Joined(lines, range.value_or(LineRange()));
}

}  // namespace

void ResolveCoderefs(xmlDoc* document, const RemarkSink& remarks) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr;) {
        if (!HasType(node, "pr-d/coderef")) {
            node = NextNode(node, root);
            continue;
        }
        xmlNode* text = xmlNewDocText(document, Xml(CodeOf(node, remarks).c_str()));
        xmlReplaceNode(node, text);
        xmlFreeNode(node);
        node = NextNode(text, root);
    }
}

}  // namespace ventrix::desk
