#include "desk/cli/published_pages.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

#include "desk/xml/limits.h"
#include "desk/xml/marker_text.h"
#include "desk/xml/markup_in_text.h"
#include "platform/native_files.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

/// A tags attribute contains none after decoding.
bool ContainsMarkers(std::string_view text) {
    return FindOpeningWord(text) != std::string_view::npos;
}

/// Empty if the page cannot be read.
std::string ReadPage(const fs::path& path) {
    std::string content;
    platform::ReadRegularFile(path, kMaxFileBytes, content);
    return content;
}

std::string_view LeadingName(std::string_view text) {
    const auto end = std::ranges::find_if(
        text, [](unsigned char c) { return c <= ' ' || c == '=' || c == '/' || c == '>'; });
    return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

/// Inspects the attribute values of one start tag. `tag` begins after the "<".
void InspectTag(std::string_view tag, const NativePath& page, PublishedPages& found) {
    const std::string_view element = LeadingName(tag);
    std::size_t at = element.size();
    while ((at = tag.find('=', at)) != std::string_view::npos && at + 1 < tag.size()) {
        const char quote = tag[at + 1];
        const std::size_t end =
            quote == '"' || quote == '\'' ? tag.find(quote, at + 2) : std::string_view::npos;
        if (end == std::string_view::npos) {
            return;
        }
        if (ContainsMarkers(tag.substr(at + 2, end - at - 2))) {
            const std::size_t name = tag.find_last_of(" \t\r\n", at) + 1;
            if (found.markedValues++ == 0) {
                found.firstMarkedValue = page.utf8 + ": <" + std::string(element) + " " +
                                         std::string(tag.substr(name, at - name)) + ">";
            }
        }
        at = end + 1;
    }
}

void InspectPage(const std::string& text, const NativePath& page, PublishedPages& found) {
    if (!ContainsMarkers(text)) {
        return;
    }
    bool markedText = false;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t open = std::min(text.find('<', at), text.size());
        markedText = markedText || ContainsMarkers(std::string_view(text).substr(at, open - at));
        const std::string_view rest = std::string_view(text).substr(open);
        const std::string_view tag = rest.substr(0, TagLength(rest));
        InspectTag(tag.substr(std::min<std::size_t>(tag.size(), 1)), page, found);
        at = open + tag.size();
    }
    if (markedText) {
        found.markedTexts.push_back(page);
    }
}

std::vector<fs::path> PagesAt(const fs::path& place) {
    std::vector<fs::path> pages;
    std::error_code error;
    if (fs::is_regular_file(place, error)) {
        return {place};
    }
    for (fs::recursive_directory_iterator entry(place, error), end; entry != end; entry.increment(error)) {
        const fs::path extension = entry->path().extension();
        if (entry->is_regular_file(error) && (extension == ".html" || extension == ".htm")) {
            pages.push_back(entry->path());
        }
    }
    std::ranges::sort(pages);
    return pages;
}

std::string StemBelow(const fs::path& path, const fs::path& folder) {
    return path.lexically_relative(folder).replace_extension().generic_string();
}

}  // namespace

PageSources::PageSources(const std::vector<NativePath>& sources, const NativePath& document,
                         const NativePath& resultFolder)
    : resultFolder_(ToFilesystem(NormalPath(resultFolder))) {
    const fs::path folder = ToFilesystem(FolderOf(document));
    for (const NativePath& source : sources) {
        const auto [known, isNew] = byStem_.emplace(StemBelow(ToFilesystem(source), folder), source);
        if (!isNew) {
            known->second = {};
        }
    }
}

NativePath PageSources::SourceOf(const NativePath& page) const {
    const auto found = byStem_.find(StemBelow(ToFilesystem(page), resultFolder_));
    return found == byStem_.end() ? NativePath{} : found->second;
}

void InspectPages(const NativePath& place, PublishedPages& found) {
    for (const fs::path& page : PagesAt(ToFilesystem(place))) {
        found.files.push_back(FromFilesystem(page));
        InspectPage(ReadPage(page), found.files.back(), found);
    }
}

}  // namespace ventrix::desk
