#include "desk/toolkit/no_prose.h"

#include <algorithm>
#include <vector>

#include "desk/xml/marker_text.h"
#include "desk/xml/markup_in_text.h"

namespace ventrix::desk {
namespace {

/// Elements of DITA that contain no prose, wherever they are.
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

/// An element in a parent with this name; in any parent if that is empty.
struct ChildElement {
    std::string_view parent, name;
};

/// What the DocBook stylesheets sort by, look up or compute with.
constexpr ChildElement kDocBookKeys[] = {
    {"indexterm", "primary"},  {"indexterm", "secondary"}, {"indexterm", "tertiary"},
    {"indexterm", "see"},      {"indexterm", "seealso"},   {"copyright", "year"},
    {"biblioentry", "abbrev"}, {"bibliomixed", "abbrev"},  {"", "biblioid"},
    {"", "citation"},          {"", "citebiblioid"}};

constexpr std::string_view kGlossaryKeys[] = {"glossterm", "firstterm"};

struct OpenElement {
    std::string_view name;
    bool definesKeys = false;
    bool prose = true;
};

std::string_view LocalName(std::string_view name) {
    return name.substr(name.find(':') + 1);
}

/// The metadata of a key definition contains the words that the key stands for.
bool IsProseOfDita(std::string_view name, const OpenElement& parent) {
    if (IsOneOf(name, kNoProse)) {
        return false;
    }
    if (IsOneOf(name, kMapMetadata)) {
        return parent.definesKeys;
    }
    return parent.prose || (IsOneOf(parent.name, kMapMetadata) && IsOneOf(name, kProseOfMaps));
}

bool IsProseOfDocBook(std::string_view name, const OpenElement& parent, bool withGlossary) {
    const auto isHere = [name, &parent](const ChildElement& key) {
        return key.name == name && (key.parent.empty() || key.parent == LocalName(parent.name));
    };
    return parent.prose && std::ranges::none_of(kDocBookKeys, isHere) &&
           !(withGlossary && IsOneOf(name, kGlossaryKeys));
}

/// A copy of the document in which text outside of prose is cleaned. Text counts up to the next tag.
class Cleaning {
  public:
    Cleaning(std::string_view document, Vocabulary vocabulary, const ElementSink& sink)
        : document_(document), vocabulary_(vocabulary), sink_(sink) {}

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
            ForEachElementGroup(
                piece, [this](const ElementGroup& group) { sink_(group.element, at_ + group.begin); });
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
            Copy(EndOfSubset(subset), true);
        }
        CopyPast(">");
    }

    /// The position of its "]".
    std::size_t EndOfSubset(std::size_t from) const {
        for (std::size_t at = document_.find(']', from); at != std::string_view::npos;
             at = document_.find(']', at + 1)) {
            const std::size_t next = document_.find_first_not_of(" \t\r\n", at + 1);
            if (next != std::string_view::npos && document_[next] == '>') {
                return at;
            }
        }
        return document_.size();
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

    bool IsProse(std::string_view name) const {
        const OpenElement parent = open_.empty() ? OpenElement{} : open_.back();
        return vocabulary_ == Vocabulary::kDita
                   ? IsProseOfDita(name, parent)
                   : IsProseOfDocBook(LocalName(name), parent, vocabulary_ == Vocabulary::kDocBookGlossary);
    }

    std::string_view document_;
    Vocabulary vocabulary_;
    const ElementSink& sink_;
    std::string cleaned_;
    std::vector<OpenElement> open_;
    std::size_t at_ = 0;
};

}  // namespace

std::string WithoutMarkersOutsideProse(const std::string& document, Vocabulary vocabulary,
                                       const ElementSink& sink) {
    return vocabulary != Vocabulary::kOther && HoldsMarkerText(document)
               ? Cleaning(document, vocabulary, sink).Run()
               : document;
}

}  // namespace ventrix::desk
