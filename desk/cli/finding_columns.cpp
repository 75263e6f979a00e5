#include "desk/cli/finding_columns.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "desk/xml/markup_in_text.h"
#include "desk/xml/xml_handles.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kNpos = std::string_view::npos;

/// What marks the place of a finding in its file.
struct Needle {
    std::string text;
    bool onlyPlace;      ///< If the line contains it more than once, none of them is meant.
    bool isWord = true;  ///< Begins after whitespace, as an attribute does.
};

/// In the order in which they are looked for.
std::vector<Needle> NeedlesOf(const Subject& subject) {
    if (!subject.element.empty()) {
        return {{'<' + subject.element, true, false}};
    }
    if (subject.attribute.empty()) {
        const std::string name = FromFilesystem(ToFilesystem(subject.target).filename()).utf8;
        return name.empty() ? std::vector<Needle>() : std::vector<Needle>{{name, true, false}};
    }
    const std::string value = EscapedXml(subject.value);
    std::vector<Needle> needles{{subject.attribute + "=\"" + value + '"', false},
                                {subject.attribute + "='" + value + '\'', false}};
    if (value.starts_with('#')) {
        needles.push_back({value + '"', true, false});  // With the name of its own file.
    }
    needles.push_back({subject.attribute + '=', true});
    if (subject.attribute == "href") {
        needles.push_back({"keyref=", true});  // The key gave the href.
    }
    return needles;
}

std::size_t Find(std::string_view part, const Needle& needle, std::size_t from) {
    std::size_t at = part.find(needle.text, from);
    while (needle.isWord && at != kNpos && at > 0 && !IsXmlWhitespace(part[at - 1])) {
        at = part.find(needle.text, at + 1);
    }
    return at;
}

std::size_t PlaceIn(std::string_view part, const std::vector<Needle>& needles) {
    for (const Needle& needle : needles) {
        const std::size_t at = Find(part, needle, 0);
        if (at != kNpos && (!needle.onlyPlace || Find(part, needle, at + 1) == kNpos)) {
            return at;
        }
    }
    return kNpos;
}

/// Where a line, counted from 1, begins; npos if the file has fewer.
std::size_t StartOfLine(std::string_view content, int line) {
    std::size_t start = 0;
    for (; line > 1 && start != kNpos; --line) {
        start = content.find('\n', start);
        start += start == kNpos ? 0 : 1;
    }
    return start;
}

/// The position in the line, else in the tag that ends in it.
std::size_t Locate(std::string_view content, int line, const std::vector<Needle>& needles) {
    const std::size_t start = StartOfLine(content, line);
    if (start == kNpos) {
        return kNpos;
    }
    const std::size_t end = std::min(content.find('\n', start), content.size());
    if (const std::size_t at = PlaceIn(content.substr(start, end - start), needles); at != kNpos) {
        return start + at;
    }
    const std::size_t tag = start == 0 ? kNpos : content.rfind('<', start - 1);
    if (tag == kNpos || tag + TagLength(content.substr(tag)) <= start) {
        return kNpos;
    }
    const std::size_t at = PlaceIn(content.substr(tag, start - tag), needles);
    return at == kNpos ? kNpos : tag + at;
}

bool IsFirstByte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

void MoveTo(std::string_view content, std::size_t at, Finding& finding) {
    const std::string_view before = content.substr(0, at);
    const std::size_t start = before.rfind('\n') + 1;
    finding.line = static_cast<int>(std::ranges::count(before, '\n')) + 1;
    finding.column = static_cast<int>(std::ranges::count_if(before.substr(start), IsFirstByte)) + 1;
}

}  // namespace

void AddColumns(std::vector<Finding>& findings) {
    NativePath file;
    std::string content;
    for (Finding& finding : findings) {
        const bool isOpen = finding.line > 0 && finding.column == 0 && !finding.file.Empty();
        const std::vector<Needle> needles = isOpen ? NeedlesOf(finding.subject) : std::vector<Needle>();
        if (needles.empty()) {
            continue;
        }
        if (file != finding.file) {
            file = finding.file;
            content.clear();
            platform::ReadWholeFile(file.utf8, content);
        }
        if (const std::size_t at = Locate(content, finding.line, needles); at != kNpos) {
            MoveTo(content, at, finding);
        }
    }
}

}  // namespace ventrix::desk
