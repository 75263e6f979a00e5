#include "desk/toolkit/package_markers.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <string_view>
#include <vector>

#include "desk/xml/inclusions.h"
#include "desk/xml/marker_text.h"
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
std::string ContentOf(const NativePath& file) {
    std::string content;
    return platform::ReadWholeFile(file.utf8, content) == platform::kErrorNone ? content : std::string();
}

ReferencedIds ReferencedIn(const std::vector<NativePath>& files) {
    ReferencedIds referenced;
    for (const NativePath& file : files) {
        AddReferencedIds(ContentOf(file), referenced);
    }
    return referenced;
}

/// The name in the start tag that the element begins with.
std::string NameOf(std::string_view element) {
    return std::string(element.substr(1, element.find_first_of(" \t\r\n/>", 1) - 1));
}

/// Preserved elements that a change of the package takes out of marker text, by name.
class ChangedElements {
  public:
    /// The position is that of the element in the content of the file.
    void Add(std::string_view element, const NativePath& file, std::string_view content,
             std::size_t position) {
        const auto [entry, isNew] = byName_.try_emplace(NameOf(element));
        if (isNew) {
            const auto before = content.substr(0, position);
            entry->second.first = {file, 1 + static_cast<int>(std::ranges::count(before, '\n')), {}};
        }
        ++entry->second.number;
    }

    /// One finding for each name.
    void Report(const std::string& why, const std::function<void(const DitaFinding&)>& finding) const {
        for (const auto& [name, places] : byName_) {
            DitaFinding found = places.first;
            found.text = "preserved <" + name + "> " + why + "; places: " + std::to_string(places.number);
            finding(found);
        }
    }

  private:
    struct Places {
        DitaFinding first;
        int number = 0;
    };
    std::map<std::string, Places> byName_;
};

}  // namespace

std::string PreparePackage(const NativePath& folder, Vocabulary vocabulary,
                           const std::function<void(const DitaFinding&)>& finding) {
    const std::vector<NativePath> files = XmlFilesBelow(folder);
    const ReferencedIds referenced = ReferencedIn(files);
    ChangedElements inKeys;
    for (const NativePath& file : files) {
        const std::string content = ContentOf(file);
        std::string changed = WithoutMarkersOutsideProse(content, vocabulary,
                                                         [&](std::string_view element, std::size_t position) {
                                                             inKeys.Add(element, file, content, position);
                                                         });
        if (vocabulary != Vocabulary::kDita) {
            EscapeInclusionPaths(changed);
        }
        if (const std::size_t restored = RestoreReferenceElements(changed, referenced); restored > 0) {
            finding({file, 0,
                     "preserved elements with a reference, with an id that a reference names, or in a range "
                     "that one reuses: " +
                         std::to_string(restored) +
                         "; they are left to the transformation, and their markup is not preserved"});
        }
        if (changed != content && !WriteOutput(file, changed)) {
            return file.utf8 + " cannot be written; check its permissions and the free space";
        }
    }
    // Elements in the metadata of DITA are not on the pages anyway.
    if (vocabulary != Vocabulary::kDita) {
        inKeys.Report("is only text in an index entry or other text that stylesheets sort by or compare",
                      finding);
    }
    return {};
}

}  // namespace ventrix::desk
