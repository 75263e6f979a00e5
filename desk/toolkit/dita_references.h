// What the references inside a topic come to: content pulled in from other topics, texts that keys stand for,
// and the titles of link targets. Every document is read under one set of rules.
#pragma once

#include <list>
#include <map>
#include <string>
#include <unordered_map>

#include "desk/toolkit/dita_document.h"
#include "desk/toolkit/dita_map.h"

namespace ventrix::desk {

struct TopicTexts {
    std::string title;
    std::string shortDescription;
    bool excluded = false;
    std::unordered_map<std::string, std::string> titles;  ///< By "topic" and by "topic/element", for links.
};

/// Reads other documents when they are asked for. The last few stay in memory, and of all of them the titles.
class DitaLibrary {
  public:
    explicit DitaLibrary(const Ditaval& rules) : rules_(rules) {}

    /// Null if the document cannot be read or is excluded. It stays the library's, until eight others were
    /// asked for.
    const xmlDoc* Document(const NativePath& path);

    /// All empty if the document cannot be read.
    const TopicTexts& Texts(const NativePath& path);

  private:
    struct Entry {
        NativePath path;
        DitaDocument loaded;
    };
    const DitaDocument& Load(const NativePath& path);

    const Ditaval& rules_;
    std::list<Entry> recent_;
    std::map<NativePath, TopicTexts> texts_;
};

/// Replaces each element that has a `conref` by a copy of its target, which may refer further. What cannot be
/// resolved stays, with a warning.
void ResolveConrefs(xmlDoc* document, DitaLibrary& library, const MessageSink& warnings);

/// Gives elements with a `keyref` the key's reference, and its text where they have none.
void ResolveKeyrefs(xmlDoc* document, const std::map<std::string, DitaKey>& keys,
                    const MessageSink& warnings);

/// The title to show for an absolute reference; empty if its target has none.
std::string TitleOf(const std::string& absoluteReference, DitaLibrary& library);

}  // namespace ventrix::desk
