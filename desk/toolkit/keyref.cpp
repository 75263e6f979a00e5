#include "desk/toolkit/keyref.h"

#include <algorithm>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_run.h"

namespace ventrix::desk {
namespace {

bool IsLink(const xmlNode* node) {
    return HasType(node, "topic/xref") || HasType(node, "topic/link");
}

void SetIfAbsent(xmlNode* element, const char* name, const std::string& value) {
    if (!value.empty() && Attribute(element, name).empty()) {
        xmlSetProp(element, Xml(name), Xml(value.c_str()));
    }
}

std::string WithElement(const std::string& href, const std::string& elementId) {
    if (elementId.empty()) {
        return href;
    }
    return href + (href.find('#') == std::string::npos ? "#/" : "/") + elementId;
}

void ApplyKey(xmlNode* element, const DitaKey& key, const std::string& elementId, DitaLibrary& library) {
    const bool isTopicref = HasType(element, "map/topicref");
    const bool isImage = HasType(element, "topic/image");
    const std::string href = key.href.empty() ? std::string() : WithElement(key.href, elementId);
    if (!href.empty() && (IsLink(element) || IsPhrase(element) || isImage || isTopicref)) {
        xmlSetProp(element, Xml("href"), Xml(href.c_str()));
        SetIfAbsent(element, "format", key.format);
        SetIfAbsent(element, "scope", key.scope);
    }
    if (isTopicref || isImage || !TextOf(element).empty() || FirstElement(element) != nullptr) {
        return;
    }
    std::string text = key.text;
    if (text.empty() && IsPhrase(element) && !href.empty()) {
        text = TitlesOf(href, library).title;
    }
    if (HasType(element, "topic/link")) {
        SetIfAbsent(element, "page-title", text);
    } else {
        xmlNodeAddContent(element, Xml(text.c_str()));
    }
}

/// Whether a page would show nothing of the element. An image has to have a target and so has a related link;
/// the title of a target stands in for the text of others.
bool ShowsNothing(const xmlNode* element) {
    if (!Attribute(element, "href").empty() || HasType(element, "map/topicref")) {
        return false;
    }
    return HasType(element, "topic/image") || HasType(element, "topic/link") ||
           ((HasType(element, "topic/xref") || IsPhrase(element)) && TextOf(element).empty() &&
            FirstElement(element) == nullptr);
}

}  // namespace

void ResolveKeyrefs(xmlDoc* document, const DitaKeys& keys, DitaLibrary& library, const RemarkSink& remarks) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        const std::string reference = node->type == XML_ELEMENT_NODE && node->properties != nullptr
                                          ? Attribute(node, "keyref")
                                          : std::string();
        if (reference.empty() || HasType(node, "subjectScheme/subjectdef")) {
            continue;
        }
        const std::size_t slash = std::min(reference.find('/'), reference.size());
        const std::string name = reference.substr(0, slash);
        const auto key = keys.find(name);
        if (key == keys.end() || key->second.excluded) {
            remarks(
                node, kUnknownKey,
                "keyref=\"" + reference + "\": " +
                    (IsExcludedKey(keys, name) ? library.ExcludedKey() : "the map does not define this key"),
                {.attribute = "keyref", .value = reference});
            continue;
        }
        ApplyKey(node, key->second, slash < reference.size() ? reference.substr(slash + 1) : std::string(),
                 library);
        if (ShowsNothing(node)) {
            remarks(node, kUnknownKey,
                    "keyref=\"" + reference + "\": the key gives <" + std::string(View(node->name)) +
                        "> neither a text nor a target, so that it is missing on the page",
                    {.attribute = "keyref", .value = reference});
        }
    }
}

}  // namespace ventrix::desk
