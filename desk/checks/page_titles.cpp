#include "desk/checks/page_titles.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "desk/xml/markup_in_text.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kNpos = std::string_view::npos;

/// The name in a start tag; empty for anything else.
std::string_view NameIn(std::string_view tag) {
    return tag.substr(1, tag.find_first_of(" \t\r\n/>", 1) - 1);
}

std::string WithoutTags(std::string_view title, const std::vector<std::string>& elements) {
    std::string plain;
    std::size_t depth = 0;  // In an element whose tags are taken out.
    while (!title.empty()) {
        const std::size_t size =
            title.front() == '<' ? TagLength(title) : std::min(title.find('<'), title.size());
        const std::string_view piece = title.substr(0, size);
        title.remove_prefix(size);
        const bool begins =
            piece.starts_with('<') && std::ranges::find(elements, NameIn(piece)) != elements.end();
        if (!piece.starts_with('<') || (depth == 0 && !begins)) {
            plain += piece;
        } else if (piece.starts_with("</")) {
            --depth;
        } else if (!piece.ends_with("/>") && !piece.starts_with("<!") && !piece.starts_with("<?")) {
            ++depth;
        }
    }
    return plain;
}

}  // namespace

bool MakeTitlePlain(std::string& page, const std::vector<std::string>& elements) {
    const std::size_t tag = page.find("<title", page.find("<head"));
    const std::size_t end = tag == kNpos ? kNpos : page.find("</title>", tag);
    if (end == kNpos || std::min(page.find("</head>"), page.find("<body")) < tag) {
        return false;
    }
    const std::size_t begin = std::min(tag + TagLength(std::string_view(page).substr(tag)), end);
    const std::string plain = WithoutTags(std::string_view(page).substr(begin, end - begin), elements);
    const bool isChanged = plain.size() < end - begin;
    page.replace(begin, end - begin, plain);
    return isChanged;
}

std::vector<Finding> MakeTitlesPlain(const std::vector<NativePath>& pages,
                                     const std::vector<std::string>& elements) {
    std::vector<Finding> findings;
    for (const NativePath& file : elements.empty() ? std::vector<NativePath>() : pages) {
        std::error_code error;
        std::string page;
        // A page that cannot be read has been reported by the module.
        if (!fs::is_symlink(ToFilesystem(file), error) &&
            platform::ReadWholeFile(file.utf8, page) == platform::kErrorNone &&
            MakeTitlePlain(page, elements) &&
            platform::WriteWholeFile(file.utf8, page) != platform::kErrorNone) {
            findings.push_back({file, 0, "not-cleaned",
                                "cannot be written, so that its title contains the tags of elements"});
        }
    }
    return findings;
}

}  // namespace ventrix::desk
