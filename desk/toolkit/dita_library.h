// The documents that topics refer to, and their titles. All documents are filtered with the same rules.
// Strings are UTF-8.
#pragma once

#include <list>
#include <map>
#include <string>
#include <unordered_map>

#include "desk/toolkit/dita_document.h"
#include "desk/toolkit/dita_keys.h"
#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

struct TopicTitles {
    std::string title;
    std::string navigation;  ///< For the contents, instead of the title; may be empty.
};

struct TopicSummary {
    std::string topicId;  ///< Of the first topic.
    std::string title;
    std::string shortDescription;
    bool excluded = false;
    bool readable = false;                                ///< Exists, is well-formed and not excluded.
    std::unordered_map<std::string, TopicTitles> topics;  ///< Of all topics, by id.
};

/// Loads the documents that topics refer to. The most recently used ones stay in memory, and the titles of
/// all. `sources` and `unread`, which receives why a document could not be read, must outlive the library.
class DitaLibrary {
  public:
    DitaLibrary(const DitaSources& sources, const MessageSink& unread) : sources_(sources), unread_(unread) {}

    const DitaSources& Sources() const { return sources_; }

    /// What to say of a key whose definition the filter excludes.
    std::string ExcludedKey() const {
        return "the filter (" + sources_.filterNames + ") excludes the definition of this key";
    }

    /// From now on, phrases that a key gives their text have it, also in summaries. The keys must exist as
    /// long as the library is used. Documents that were requested before are freed.
    void UseKeys(const DitaKeys& keys);

    /// Null if the document cannot be read or is excluded. The library owns it and may free it when eight
    /// other documents have been requested.
    const xmlDoc* Document(const NativePath& path);

    /// Whether the filter excludes the target of a reference.
    bool IsExcluded(const DitaTarget& target);

    /// All strings are empty if the document cannot be read.
    const TopicSummary& Summary(const NativePath& path);

  private:
    struct Entry {
        NativePath path;
        DitaDocument loaded;
    };
    const DitaDocument& Load(const NativePath& path);

    const DitaSources& sources_;
    const MessageSink& unread_;
    const DitaKeys* keys_ = nullptr;
    std::list<Entry> recent_;
    std::map<NativePath, TopicSummary> summaries_;
};

/// The titles of the topic that an absolute reference leads to; empty if it leads to no topic.
TopicTitles TitlesOf(const std::string& absoluteReference, DitaLibrary& library);

}  // namespace ventrix::desk
