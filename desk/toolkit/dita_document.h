// One DITA map or topic, made ready for a transformation: classes filled in, excluded elements gone, and
// references to local files turned into absolute `file:` URIs, so that an element may move to another
// document.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "desk/toolkit/ditaval.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

struct DitaDocument {
    XmlDocument document;  ///< Null if it is missing, not well-formed, or excluded as a whole.
    bool excluded = false;
    std::vector<std::string> remarks;  ///< Entities that nobody declares, whose text is missing.
    std::string reason;                ///< Why it cannot be read; one line, empty if it can or is excluded.
};

DitaDocument LoadDita(const NativePath& path, const Ditaval& rules);

/// What an absolute reference points to.
struct DitaTarget {
    NativePath path;
    std::string topic;    ///< The topic's id; empty for the first topic.
    std::string element;  ///< The element's id within the topic; empty for the topic itself.
};

/// Nothing if the reference names no local file, as a web address.
std::optional<DitaTarget> DitaTargetOf(const std::string& absoluteReference);

/// Whether a reference with this `format`, which may be empty, leads to a topic: one that says so, or whose
/// file looks like one.
bool IsTopicFormat(const std::string& format, const NativePath& target);

/// The element that a target names in a document; null if it is not there.
xmlNode* FindTarget(const xmlDoc* document, const DitaTarget& target);

/// The first topic, which in a document of several is not the root; null if there is none.
xmlNode* FirstTopic(const xmlDoc* document);

/// The first child element of the type; null if there is none.
xmlNode* ChildOfType(const xmlNode* parent, std::string_view type);

/// All text below the node, inline elements and all.
std::string TextOf(const xmlNode* node);

}  // namespace ventrix::desk
