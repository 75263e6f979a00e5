#include "desk/toolkit/package_markers.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <string_view>
#include <vector>

#include "desk/toolkit/left_elements.h"
#include "desk/xml/encodings.h"
#include "desk/xml/inclusions.h"
#include "desk/xml/stylesheet.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

bool IsXml(const fs::path& path) {
    const std::string extension = path.extension().string();
    return extension == ".dita" || extension == ".ditamap" || extension == ".xml";
}

std::vector<NativePath> XmlFilesBelow(const NativePath& folder) {
    std::vector<NativePath> files;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(ToFilesystem(folder), error), end; entry != end;
         entry.increment(error)) {
        if (IsXml(entry->path()) && entry->is_regular_file(error)) {
            files.push_back(FromFilesystem(entry->path()));
        }
    }
    return files;
}

/// Empty if the file cannot be read, which the transformation reports.
std::string BytesOf(const NativePath& file) {
    std::string bytes;
    return platform::ReadWholeFile(file.utf8, bytes) == platform::kErrorNone ? bytes : std::string();
}

/// UTF-16 does not contain ASCII, so it becomes UTF-8.
std::string Readable(const std::string& bytes) {
    const char* const utf16 = Utf16Encoding(bytes);
    return utf16 == nullptr ? bytes : ToUtf8(bytes, utf16).value_or("");
}

std::string LikeBefore(const std::string& content, const std::string& bytesBefore) {
    const char* const utf16 = Utf16Encoding(bytesBefore);
    return utf16 == nullptr ? content : FromUtf8(content, utf16).value_or(bytesBefore);
}

ReferencedIds ReferencedIn(const std::vector<NativePath>& files) {
    ReferencedIds referenced;
    for (const NativePath& file : files) {
        AddReferencedIds(Readable(BytesOf(file)), referenced);
    }
    return referenced;
}

/// The name in the start tag that the element begins with.
std::string NameOf(std::string_view element) {
    return std::string(element.substr(1, element.find_first_of(" \t\r\n/>", 1) - 1));
}

/// What happens to preserved elements, once for each name and reason.
class AffectedElements {
  public:
    /// The position is that of the element in the content of the file.
    void Add(std::string_view element, const std::string& what, const NativePath& file,
             std::string_view content, std::size_t position) {
        const auto [entry, isNew] = found_.try_emplace({NameOf(element), what});
        if (isNew) {
            const auto before = content.substr(0, position);
            entry->second.first = {file, 1 + static_cast<int>(std::ranges::count(before, '\n')), {}};
        }
        ++entry->second.number;
    }

    void Report(const std::function<void(const DitaFinding&)>& finding) const {
        for (const auto& [key, places] : found_) {
            DitaFinding found = places.first;
            found.subject.element = key.first;
            found.text = "<" + key.first + "> is not preserved " + key.second +
                         "; places: " + std::to_string(places.number);
            finding(found);
        }
    }

  private:
    struct Places {
        DitaFinding first;
        int number = 0;
    };
    std::map<std::pair<std::string, std::string>, Places> found_;  ///< By name and what happens.
};

/// The content of a file as the transformation needs it.
std::string Prepared(const NativePath& file, const std::string& content, const LeavingRules& rules,
                     AffectedElements& affected) {
    std::string changed = WithoutMarkersOutsideProse(
        content, rules.vocabulary, [&](std::string_view element, std::size_t position) {
            // Elements in the metadata of DITA are not on the pages anyway.
            if (rules.vocabulary != Vocabulary::kDita) {
                affected.Add(element, "in text that stylesheets sort by or compare", file, content, position);
            }
        });
    changed = WithLeftElements(
        changed, rules, [&](std::string_view element, std::size_t position, std::string_view why) {
            affected.Add(element, "but left to the transformation, because " + std::string(why), file,
                         changed, position);
        });
    if (rules.vocabulary != Vocabulary::kDita) {
        EscapeInclusionPaths(changed);
    }
    return changed;
}

}  // namespace

std::string PreparePackage(const NativePath& folder, Vocabulary vocabulary,
                           const std::function<void(const DitaFinding&)>& finding) {
    const std::vector<NativePath> files = XmlFilesBelow(folder);
    const LeavingRules rules{ReferencedIn(files), vocabulary};
    AffectedElements affected;
    for (const NativePath& file : files) {
        const std::string bytes = BytesOf(file);
        const std::string content = Readable(bytes);
        const std::string changed = Prepared(file, content, rules, affected);
        if (changed != content && !WriteOutput(file, LikeBefore(changed, bytes))) {
            return file.utf8 + " cannot be written; check its permissions and the free space";
        }
    }
    affected.Report(finding);
    return {};
}

}  // namespace ventrix::desk
