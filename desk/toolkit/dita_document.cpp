#include "desk/toolkit/dita_document.h"

#include <algorithm>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/page_layout.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/reference_path.h"

namespace ventrix::desk {
namespace {

constexpr char kSource[] = "page-source";  ///< The attribute for the file that reused content comes from.

std::string TopicAround(const xmlNode* node) {
    while (node != nullptr && node->type == XML_ELEMENT_NODE && !HasType(node, "topic/topic")) {
        node = node->parent;
    }
    return node != nullptr && node->type == XML_ELEMENT_NODE ? Attribute(node, "id") : std::string();
}

void MakeAbsolute(xmlNode* element, const char* name, const NativePath& path, const DocumentCopies& copies) {
    std::string reference = Attribute(element, name);
    if (reference.empty() || reference.starts_with("-dita-")) {
        return;
    }
    std::size_t hash = std::min(reference.find('#'), reference.size());
    if (reference.compare(hash, 3, "#./") == 0) {
        // The topic that the element is in.
        reference.replace(hash + 1, 1, TopicAround(element));
    }
    const NativePath target = hash == 0 ? path : CopyOf(copies, TargetOf(reference, FolderOf(path)).path);
    if (!target.Empty()) {
        xmlSetProp(element, Xml(name), Xml((FileUri(target) + reference.substr(hash)).c_str()));
    }
}

/// The page that another publication has for its topic.
std::string PeerPage(const std::string& reference, const std::string& format) {
    const std::size_t hash = std::min(reference.find('#'), reference.size());
    const std::string file = reference.substr(0, hash);
    if (!IsTopicFormat(format, {file}) || file.find('.') == std::string::npos) {
        return reference;
    }
    std::string fragment = reference.substr(hash);
    if (const std::size_t slash = fragment.find('/'); slash != std::string::npos) {
        fragment.replace(slash, 1, "__");
    }
    return file.substr(0, file.rfind('.')) + ".html" + fragment;
}

void MakeReferenceAbsolute(xmlNode* element, const NativePath& path, const DocumentCopies& copies) {
    const std::string reference = Attribute(element, "href");
    const std::string scope = reference.empty() ? std::string() : InheritedAttribute(element, "scope");
    if (scope == "peer") {
        xmlSetProp(element, Xml("href"),
                   Xml(PeerPage(reference, InheritedAttribute(element, "format")).c_str()));
    } else if (scope != "external") {
        MakeAbsolute(element, "href", path, copies);
    }
}

void MakeReferencesAbsolute(xmlDoc* document, const NativePath& path, const DocumentCopies& copies) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        // An element of another vocabulary refers within its own content.
        if (node->type != XML_ELEMENT_NODE || node->properties == nullptr || node->ns != nullptr) {
            continue;
        }
        MakeReferenceAbsolute(node, path, copies);
        MakeAbsolute(node, "conref", path, copies);
        MakeAbsolute(node, "conrefend", path, copies);
        if (HasType(node, "topic/object")) {
            MakeAbsolute(node, "data", path, copies);
        }
    }
}

void NoteFiltered(xmlNode* element, FilteredContent& filtered) {
    for (xmlNode* node = element; node != nullptr; node = NextNode(node, element)) {
        if (node->type == XML_ELEMENT_NODE && node->properties != nullptr) {
            filtered.ids.insert(Attribute(node, "id"));
        }
        if (HasType(node, "map/topicref")) {
            filtered.topicrefs.push_back(TopicReferenceOf(node));
        }
    }
}

xmlNode* FindTopic(xmlNode* root, const std::string& id) {
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (HasType(node, "topic/topic") && (id.empty() || Attribute(node, "id") == id)) {
            return node;
        }
    }
    return nullptr;
}

/// The first element with the id below the topic.
xmlNode* FindElement(xmlNode* topic, const std::string& id) {
    for (xmlNode* node = NextNode(topic, topic); node != nullptr; node = NextNode(node, topic)) {
        if (node->type == XML_ELEMENT_NODE && Attribute(node, "id") == id) {
            return node;
        }
    }
    return nullptr;
}

/// Whether an element has no place in a line of text.
bool IsHidden(const xmlNode* element) {
    constexpr const char* kHidden[] = {"topic/indexterm", "topic/data", "topic/draft-comment",
                                       "topic/required-cleanup", "topic/fn"};
    return std::ranges::any_of(kHidden, [element](const char* type) { return HasType(element, type); });
}

}  // namespace

DitaDocument LoadDita(const NativePath& path, const DitaSources& sources) {
    DitaDocument result;
    LenientDocument loaded = LoadLeniently(path, LoadFor::kDita);
    // Only the DTD knows the classes of a specialisation. It is large, so it is read only for an unknown
    // name.
    if (loaded.wellFormed && !AddMissingClasses(loaded.document.get())) {
        loaded = LoadLeniently(path, LoadFor::kStylesheet);
        AddMissingClasses(loaded.document.get());
    }
    if (!loaded.wellFormed) {
        result.reason = path.utf8 + ": " + loaded.reason;
        return result;
    }
    MakeReferencesAbsolute(loaded.document.get(), path, sources.copies);
    result.excluded = !Filter(sources.rules, loaded.document.get(),
                              [&result](xmlNode* excluded) { NoteFiltered(excluded, result.filtered); });
    if (result.excluded) {
        NoteFiltered(xmlDocGetRootElement(loaded.document.get()), result.filtered);
    } else {
        result.document = std::move(loaded.document);
        for (const std::string& entity : loaded.undeclaredEntities) {
            result.remarks.push_back(path.utf8 + ": " + entity);
        }
    }
    return result;
}

TopicReference TopicReferenceOf(const xmlNode* topicref) {
    const std::string keyref = Attribute(topicref, "keyref");
    return {Attribute(topicref, "href"), keyref.substr(0, keyref.find('/')), Attribute(topicref, "format"),
            Attribute(topicref, "keys")};
}

std::optional<DitaTarget> DitaTargetOf(const std::string& absoluteReference) {
    if (!absoluteReference.starts_with("file:")) {
        return std::nullopt;
    }
    DitaTarget target;
    target.path = TargetOf(absoluteReference, {"/"}).path;
    const std::string fragment = FragmentOf(absoluteReference);
    const std::size_t slash = std::min(fragment.find('/'), fragment.size());
    target.topic = fragment.substr(0, slash);
    target.element = slash < fragment.size() ? fragment.substr(slash + 1) : std::string();
    return target;
}

std::string FragmentOf(const std::string& reference) {
    const std::size_t hash = reference.find('#');
    return hash == std::string::npos ? std::string() : reference.substr(hash + 1);
}

NativePath SourceOf(const xmlNode* element) {
    for (const xmlNode* node = element; node->type == XML_ELEMENT_NODE; node = node->parent) {
        if (const std::string source = Attribute(node, kSource); !source.empty()) {
            return TargetOf(source, {"/"}).path;
        }
    }
    return TargetOf(View(element->doc->URL), {"/"}).path;
}

void SetSource(xmlNode* element, const NativePath& file) {
    xmlSetProp(element, Xml(kSource), Xml(FileUri(file).c_str()));
}

std::string AsWritten(const xmlNode* element, const std::string& absoluteReference) {
    const auto target = DitaTargetOf(absoluteReference);
    const NativePath file = SourceOf(element);
    if (!target.has_value() || file.Empty()) {
        return absoluteReference;
    }
    const std::string fragment =
        absoluteReference.substr(std::min(absoluteReference.find('#'), absoluteReference.size()));
    return (target->path == file ? "" : RelativeReference(file, target->path)) + fragment;
}

Subject ReferenceIn(const char* attribute, const xmlNode* element, const std::string& absoluteReference) {
    const auto target = DitaTargetOf(absoluteReference);
    return {.attribute = attribute,
            .value = AsWritten(element, absoluteReference),
            .target = target.has_value() ? target->path : NativePath{}};
}

bool IsTopicFormat(const std::string& format, const NativePath& target) {
    return format == "dita" ||
           (format.empty() && (target.utf8.ends_with(".dita") || target.utf8.ends_with(".xml")));
}

xmlNode* FindTarget(const xmlDoc* document, const DitaTarget& target) {
    xmlNode* root = xmlDocGetRootElement(document);
    if (HasType(root, "map/map")) {
        const std::string& id = target.element.empty() ? target.topic : target.element;
        return id.empty() || Attribute(root, "id") == id ? root : FindElement(root, id);
    }
    xmlNode* topic = FindTopic(root, target.topic);
    return topic == nullptr || target.element.empty() ? topic : FindElement(topic, target.element);
}

xmlNode* FirstTopic(const xmlDoc* document) {
    return FindTopic(xmlDocGetRootElement(document), {});
}

xmlNode* ChildOfType(const xmlNode* parent, std::string_view type) {
    xmlNode* child = parent == nullptr ? nullptr : FirstElement(parent);
    while (child != nullptr && !HasType(child, type)) {
        child = NextElement(child);
    }
    return child;
}

std::string InheritedAttribute(const xmlNode* element, const char* name) {
    for (; element != nullptr && element->type == XML_ELEMENT_NODE; element = element->parent) {
        if (std::string value = Attribute(element, name); !value.empty()) {
            return value;
        }
    }
    return {};
}

std::string TextOf(const xmlNode* node) {
    const XmlString text(node == nullptr ? nullptr : xmlNodeGetContent(node));
    return std::string(View(text.get()));
}

std::string ShownText(const xmlNode* node) {
    std::string text;
    for (const xmlNode* child = node == nullptr ? nullptr : node->children; child != nullptr;
         child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            text += IsHidden(child) ? std::string() : ShownText(child);
        } else if (child->type != XML_COMMENT_NODE && child->type != XML_PI_NODE) {
            text += TextOf(child);
        }
    }
    return text;
}

const xmlNode* ShortDescriptionOf(const xmlNode* topic) {
    const xmlNode* own = ChildOfType(topic, "topic/shortdesc");
    return own != nullptr ? own : ChildOfType(ChildOfType(topic, "topic/abstract"), "topic/shortdesc");
}

}  // namespace ventrix::desk
