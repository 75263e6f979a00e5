// One DITA map or topic, prepared for a transformation: missing classes added, excluded elements removed, and
// references to local files turned into absolute `file:` URIs, so that an element can be moved to another
// document. References to topics of other publications (scope="peer") lead to their pages. Strings are UTF-8.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "desk/toolkit/ditaval.h"
#include "desk/toolkit/document_copies.h"
#include "desk/xml/subject.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

/// Receives what could not be done in a document: the element, the rule (dita_run.h), one line of text, and
/// what it is about.
using RemarkSink = std::function<void(const xmlNode* place, const char* rule, const std::string& text,
                                      const Subject& subject)>;

/// What a topic reference refers to, as far as it says so.
struct TopicReference {
    std::string href;  ///< Absolute.
    std::string key;
    std::string format;
    std::string definedKeys;  ///< Separated by spaces.
};

/// What the filter removed from a document, for messages. Of an excluded document it is everything.
struct FilteredContent {
    std::set<std::string> ids;
    std::vector<TopicReference> topicrefs;
};

struct DitaDocument {
    XmlDocument document;  ///< Null if it is missing, not well-formed, or excluded as a whole.
    bool excluded = false;
    FilteredContent filtered;
    std::vector<std::string> remarks;  ///< Undeclared entities, whose replacement text is missing.
    std::string reason;                ///< Why it cannot be read, one line; empty if it can or is excluded.
};

/// What applies to all documents of a run.
struct DitaSources {
    Ditaval rules;
    std::string filterNames;  ///< Of the DITAVAL files, for messages.
    DocumentCopies
        copies;  ///< An absolute reference in a copy leads to an original; it is turned to the copy.
};

DitaDocument LoadDita(const NativePath& path, const DitaSources& sources);

/// Of a topic reference itself; a key without the element that may follow it.
TopicReference TopicReferenceOf(const xmlNode* topicref);

/// What an absolute reference points to.
struct DitaTarget {
    NativePath path;
    std::string topic;    ///< The topic's id; empty for the first topic.
    std::string element;  ///< The element's id in the topic; empty for the topic itself.
};

/// Nothing if the reference does not name a local file: a web address, for example.
std::optional<DitaTarget> DitaTargetOf(const std::string& absoluteReference);

/// What follows the "#" of a reference; empty if it has none.
std::string FragmentOf(const std::string& reference);

/// The file that an element of a document was written in. Content that is reused in another document keeps
/// its own.
NativePath SourceOf(const xmlNode* element);

/// The element and its content were written in this file, not in that of their document.
void SetSource(xmlNode* element, const NativePath& file);

/// An absolute reference as the element's author would write it, for a message: relative to its own file.
std::string AsWritten(const xmlNode* element, const std::string& absoluteReference);

/// An attribute with an absolute reference.
Subject ReferenceIn(const char* attribute, const xmlNode* element, const std::string& absoluteReference);

/// Whether a reference leads to a topic: because its `format`, which may be empty, says so, or else by the
/// file's extension.
bool IsTopicFormat(const std::string& format, const NativePath& target);

/// The element that a target names in a document; null if it does not exist.
xmlNode* FindTarget(const xmlDoc* document, const DitaTarget& target);

/// The first topic, which is not the root if the document contains several; null if there is none.
xmlNode* FirstTopic(const xmlDoc* document);

/// The first child element of this type; null if there is none, or `parent` is null.
xmlNode* ChildOfType(const xmlNode* parent, std::string_view type);

/// The attribute's value, or that of the nearest element around it that has one; empty if there is none.
std::string InheritedAttribute(const xmlNode* element, const char* name);

/// The text content of the node and its descendants; empty for null.
std::string TextOf(const xmlNode* node);

/// The same without what a page does not show there, such as index terms, comments and footnotes.
std::string ShownText(const xmlNode* node);

/// Null if the topic, which may be null, has none.
const xmlNode* ShortDescriptionOf(const xmlNode* topic);

}  // namespace ventrix::desk
