// Resolves the references in a topic: content that is reused from other topics (conref), text that keys are
// defined as (keyref), and the titles of link targets. All documents are filtered with the same rules.
// Strings are UTF-8.
#pragma once

#include <list>
#include <map>
#include <string>
#include <unordered_map>

#include "desk/toolkit/dita_document.h"
#include "desk/toolkit/dita_map.h"

namespace ventrix::desk {

struct TopicSummary {
    std::string title;
    std::string shortDescription;
    bool excluded = false;
    std::unordered_map<std::string, std::string> titles;  ///< By "topic" and by "topic/element", for links.
};

/// Loads the documents that topics refer to. The most recently used ones stay in memory, and the titles of
/// all. `rules` and `unread`, which receives why a document could not be read, must outlive the library.
class DitaLibrary {
  public:
    DitaLibrary(const Ditaval& rules, const MessageSink& unread) : rules_(rules), unread_(unread) {}

    /// Null if the document cannot be read or is excluded. The library owns it and may free it when eight
    /// other documents have been requested.
    const xmlDoc* Document(const NativePath& path);

    /// All strings are empty if the document cannot be read.
    const TopicSummary& Summary(const NativePath& path);

  private:
    struct Entry {
        NativePath path;
        DitaDocument loaded;
    };
    const DitaDocument& Load(const NativePath& path);

    const Ditaval& rules_;
    const MessageSink& unread_;
    std::list<Entry> recent_;
    std::map<NativePath, TopicSummary> summaries_;
};

/// Replaces each element that has a `conref` with a copy of its target, in which further ones are replaced
/// too. An element whose target cannot be found is kept, and reported as a warning.
void ResolveConrefs(xmlDoc* document, DitaLibrary& library, const MessageSink& warnings);

/// Gives elements with a `keyref` the key's reference, and the key's text if they are empty.
void ResolveKeyrefs(xmlDoc* document, const std::map<std::string, DitaKey>& keys,
                    const MessageSink& warnings);

/// The title to show for an absolute reference; empty if its target has none.
std::string TitleOf(const std::string& absoluteReference, DitaLibrary& library);

}  // namespace ventrix::desk
