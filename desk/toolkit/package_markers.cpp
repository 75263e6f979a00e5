#include "desk/toolkit/package_markers.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

#include "desk/xml/inclusions.h"
#include "desk/xml/marker_text.h"
#include "desk/xml/markup_in_text.h"
#include "desk/xml/stylesheet.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

/// Elements that contain no prose, wherever they are.
constexpr std::string_view kNoProse[] = {"dvrResourcePrefix",
                                         "dvrResourceSuffix",
                                         "dvrKeyscopePrefix",
                                         "dvrKeyscopeSuffix",
                                         "shape",
                                         "coords",
                                         "index-sort-as",
                                         "sort-as",
                                         "indexterm",
                                         "index-see",
                                         "index-see-also",
                                         "data",
                                         "data-about",
                                         "prolog",
                                         "metadata"};

/// In the metadata of a map, these are titles and texts for readers; the rest is not.
constexpr std::string_view kProseOfMaps[] = {"navtitle", "linktext", "shortdesc", "searchtitle", "desc"};

constexpr std::string_view kMapMetadata[] = {"topicmeta", "bookmeta"};

template <std::size_t Count>
bool IsOneOf(std::string_view name, const std::string_view (&names)[Count]) {
    return std::ranges::find(names, name) != std::end(names);
}

struct OpenElement {
    std::string_view name;
    bool definesKeys = false;
    bool prose = true;
};

/// A copy of the document in which text outside of prose is cleaned. Text counts up to the next tag.
class Cleaning {
  public:
    explicit Cleaning(std::string_view document) : document_(document) {}

    std::string Run() {
        while (at_ < document_.size()) {
            const std::size_t tag = std::min(document_.find('<', at_), document_.size());
            Copy(tag, open_.empty() || open_.back().prose);
            TakeTag();
        }
        return std::move(cleaned_);
    }

  private:
    void Copy(std::size_t end, bool asItIs) {
        std::string piece(document_.substr(at_, end - at_));
        if (!asItIs) {
            RemoveMarkerGroups(piece);
        }
        cleaned_ += piece;
        at_ = end;
    }

    void CopyPast(std::string_view word) {
        const std::size_t found = document_.find(word, at_);
        Copy(found == std::string_view::npos ? document_.size() : found + word.size(), true);
    }

    void TakeTag() {
        const std::string_view rest = document_.substr(at_);
        if (rest.starts_with("<!--")) {
            CopyPast("-->");
        } else if (rest.starts_with("<![CDATA[")) {
            CopyPast("]]>");
        } else if (rest.starts_with("<?")) {
            CopyPast("?>");
        } else if (rest.starts_with("<!DOCTYPE")) {
            CopyDoctype();
        } else if (!rest.empty()) {
            TakeElementTag(rest.substr(0, TagLength(rest)));
        }
    }

    /// An internal subset contains ">".
    void CopyDoctype() {
        const std::size_t subset = document_.find('[', at_);
        const bool hasSubset = subset < document_.find('>', at_);
        if (hasSubset) {
            const std::size_t end = document_.find("]>", subset);
            Copy(end == std::string_view::npos ? document_.size() : end, true);
        }
        CopyPast(">");
    }

    void TakeElementTag(std::string_view tag) {
        Copy(at_ + tag.size(), true);
        if (tag.starts_with("</")) {
            if (!open_.empty()) {
                open_.pop_back();
            }
        } else if (!tag.ends_with("/>")) {
            open_.push_back(Opened(tag));
        }
    }

    OpenElement Opened(std::string_view tag) const {
        const std::size_t end = tag.find_first_of(" \t\r\n/>", 1);
        OpenElement element{.name = tag.substr(1, end - 1)};
        element.definesKeys = tag.find(" keys=") != std::string_view::npos;
        element.prose = IsProse(element.name);
        return element;
    }

    /// The metadata of a key definition contains the words that the key stands for.
    bool IsProse(std::string_view name) const {
        if (IsOneOf(name, kNoProse)) {
            return false;
        }
        if (open_.empty()) {
            return true;
        }
        const OpenElement& parent = open_.back();
        if (IsOneOf(name, kMapMetadata)) {
            return parent.definesKeys;
        }
        return parent.prose || (IsOneOf(parent.name, kMapMetadata) && IsOneOf(name, kProseOfMaps));
    }

    std::string_view document_;
    std::string cleaned_;
    std::vector<OpenElement> open_;
    std::size_t at_ = 0;
};

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

}  // namespace

std::string WithoutMarkersInMetadata(const std::string& document) {
    return HoldsMarkerText(document) ? Cleaning(document).Run() : document;
}

std::string PreparePackage(const NativePath& folder, bool dita,
                           const std::function<void(const DitaFinding&)>& finding) {
    const std::vector<NativePath> files = XmlFilesBelow(folder);
    const ReferencedIds referenced = ReferencedIn(files);
    for (const NativePath& file : files) {
        const std::string content = ContentOf(file);
        std::string changed = dita ? WithoutMarkersInMetadata(content) : content;
        if (!dita) {
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
    return {};
}

}  // namespace ventrix::desk
