// Resolves the references in a topic or map: content that is reused from other topics (conref, conkeyref),
// text and targets that keys are defined as (keyref), the lines of code samples (coderef), and the words for
// link targets. All documents are filtered with the same rules. Strings are UTF-8.
#pragma once

#include <list>
#include <map>
#include <string>
#include <unordered_map>

#include "desk/toolkit/dita_document.h"
#include "desk/toolkit/dita_keys.h"
#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

struct TopicSummary {
    std::string topicId;  ///< Of the first topic.
    std::string title;
    std::string shortDescription;
    bool excluded = false;
    bool readable = false;  ///< Exists, is well-formed and not excluded.
    /// The words for links, by "topic" and by "topic/element": titles, defined terms, numbers of list items.
    std::unordered_map<std::string, std::string> titles;
};

/// Loads the documents that topics refer to. The most recently used ones stay in memory, and the titles of
/// all. `sources` and `unread`, which receives why a document could not be read, must outlive the library.
class DitaLibrary {
  public:
    DitaLibrary(const DitaSources& sources, const MessageSink& unread) : sources_(sources), unread_(unread) {}

    const DitaSources& Sources() const { return sources_; }

    /// From now on, phrases that a key gives their text have it, also in summaries. The keys must exist as
    /// long as the library is used. Documents that were requested before are freed.
    void UseKeys(const DitaKeys& keys);

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

    const DitaSources& sources_;
    const MessageSink& unread_;
    const DitaKeys* keys_ = nullptr;
    std::list<Entry> recent_;
    std::map<NativePath, TopicSummary> summaries_;
};

/// Replaces each element that has a `conref` or `conkeyref` with a copy of its target, or of its target and
/// the elements up to that of `conrefend`, in which further ones are replaced too. An element whose target
/// cannot be found is kept, and reported as a remark. Without keys, only `conref` counts.
void ResolveConrefs(xmlDoc* document, const DitaKeys& keys, DitaLibrary& library, const RemarkSink& remarks);

/// Gives elements with a `keyref` the key's reference, and the key's text if they are empty.
void ResolveKeyrefs(xmlDoc* document, const DitaKeys& keys, DitaLibrary& library, const RemarkSink& remarks);

/// Replaces each `coderef` with the lines of its file.
void ResolveCoderefs(xmlDoc* document, const RemarkSink& remarks);

/// The words to show for an absolute reference; empty if its target has none.
std::string TitleOf(const std::string& absoluteReference, DitaLibrary& library);

}  // namespace ventrix::desk
