// Where the text of a page is in the sources of the document. Strings are UTF-8.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "desk/paths/paths.h"
#include "desk/xml/lenient_load.h"

namespace ventrix::desk {

/// A place in a source.
struct ElementSource {
    NativePath file;    ///< Empty if it is not known.
    std::string xpath;  ///< Empty if it is not known.
    int line = 0;       ///< 0 if it is not known.
};

/// An element with text of its own that is in a topic, or that a content reference brings there.
struct Occurrence {
    const NativePath* file;
    const xmlNode* element;
    const xmlNode* reference;  ///< The element of the topic that brings it there; null if none does.
};

/// The occurrences in a topic, each XPath's in document order.
struct TopicContent {
    std::unordered_map<std::string_view, std::vector<Occurrence>> byXPath;
    bool isComplete = true;     ///< False if the topic may get content that is not here.
    bool isPushTarget = false;  ///< Other files push content to it, or to what it reuses.
};

/// A source with what is looked up in it.
struct SourceFile {
    LenientDocument loaded;
    std::unordered_map<std::string, const xmlNode*> elements;  ///< By XPath, as Ventrix writes it.
    std::unordered_map<std::string, std::vector<const xmlNode*>> ids;
    bool hasReferences = false;
    bool isExpanded = false;  ///< `content` is there. Without references, it is not needed.
    TopicContent content;
};

/// What the document's keys stand for: absolute references, by key.
using KeyTargets = std::map<std::string, std::string>;

/// The sources of a document. Each is loaded when it is needed first.
class SourcePlaces {
  public:
    /// `files` are the document's XML files. `document` is what source paths are relative to.
    /// `readKeys` is called when the first content reference with a key is met. `hasPushes` says whether a
    /// file may push content to others (conaction).
    SourcePlaces(std::vector<NativePath> files, const NativePath& document,
                 std::function<KeyTargets()> readKeys, bool hasPushes);

    /// The occurrences of the XPath in the file; none if it is not one of the document's.
    std::vector<Occurrence> OccurrencesIn(const NativePath& file, const std::string& xpath);

    /// Whether OccurrencesIn knows all content of the file.
    bool IsComplete(const NativePath& file);

    /// Whether the content of the file may be replaced by that of others, whose XPaths can be the same.
    bool IsPushTarget(const NativePath& file);

    /// The line is 0 if the XPath leads to no element.
    ElementSource PlaceOf(const NativePath& file, const std::string& xpath);

    /// The place of an element that an occurrence in the file names.
    static ElementSource PlaceOf(const NativePath& file, const xmlNode* element);

    /// The file with this path, relative to the document; empty if it is not one of the document's.
    NativePath FileOf(const std::string& sourcePath) const;

    /// The document's file if it has only one, else empty.
    NativePath OnlyFile() const { return files_.size() == 1 ? files_.front() : NativePath{}; }

    /// Forgets what was loaded if it is much. Occurrences are no longer valid then.
    void LimitMemory();

  private:
    friend class ContentWalk;

    SourceFile& Load(const NativePath& file);
    const TopicContent& ContentOf(const NativePath& file);
    bool IsDocuments(const NativePath& file) const;
    const KeyTargets& Keys();
    const std::set<NativePath>& PushTargets();

    std::vector<NativePath> files_;  ///< Sorted.
    NativePath folder_;
    std::function<KeyTargets()> readKeys_;
    std::optional<KeyTargets> keys_;
    bool hasPushes_;
    std::optional<std::set<NativePath>> pushTargets_;
    std::map<NativePath, SourceFile> loaded_;
    std::size_t elements_ = 0;                                           ///< In all of them.
    std::map<NativePath, SourceFile>::iterator latest_ = loaded_.end();  ///< Mostly the next one, too.
};

}  // namespace ventrix::desk
