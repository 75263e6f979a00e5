#include "desk/toolkit/dita_keys.h"

#include <sstream>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_document.h"

namespace ventrix::desk {
namespace {

constexpr int kMaxChain = 20;

std::string KeyText(const xmlNode* topicref) {
    const xmlNode* meta = ChildOfType(topicref, "map/topicmeta");
    const xmlNode* keywords = ChildOfType(meta, "topic/keywords");
    for (const std::string& text :
         {TextOf(ChildOfType(keywords, "topic/keyword")), TextOf(ChildOfType(meta, "topic/keytext")),
          MapTextOf(topicref, "linktext")}) {
        if (!text.empty()) {
            return text;
        }
    }
    return NavigationTitle(topicref);
}

}  // namespace

std::string MapTextOf(const xmlNode* topicref, const std::string& element) {
    const xmlNode* meta = ChildOfType(topicref, "map/topicmeta");
    const std::string text = TextOf(ChildOfType(meta, "map/" + element));
    return text.empty() ? TextOf(ChildOfType(meta, "topic/" + element)) : text;
}

std::string NavigationTitle(const xmlNode* topicref) {
    const xmlNode* meta = ChildOfType(topicref, "map/topicmeta");
    const std::string title = TextOf(ChildOfType(meta, "topic/navtitle"));
    return title.empty() ? Attribute(topicref, "navtitle") : title;
}

void CollectKeys(xmlDoc* map, DitaKeys& keys) {
    xmlNode* root = xmlDocGetRootElement(map);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (!HasType(node, "map/topicref") || xmlHasProp(node, Xml("keys")) == nullptr) {
            continue;
        }
        std::istringstream names(Attribute(node, "keys"));
        for (std::string name; names >> name;) {
            keys.insert({name,
                         {.href = Attribute(node, "href"),
                          .text = KeyText(node),
                          .format = InheritedAttribute(node, "format"),
                          .scope = InheritedAttribute(node, "scope"),
                          .keyref = Attribute(node, "keyref")}});
        }
    }
}

bool IsExcludedKey(const DitaKeys& keys, const std::string& key) {
    const auto known = keys.find(key);
    return known != keys.end() && known->second.excluded;
}

void ResolveKeyChains(DitaKeys& keys) {
    for (auto& [name, key] : keys) {
        for (int length = 0; !key.keyref.empty() && length < kMaxChain; ++length) {
            const auto next = keys.find(key.keyref.substr(0, key.keyref.find('/')));
            if (next == keys.end()) {
                break;
            }
            const DitaKey& other = next->second;
            if (!other.href.empty()) {
                key.href = other.href;
                key.format = other.format;
                key.scope = other.scope;
            }
            key.text = key.text.empty() ? other.text : key.text;
            key.keyref = other.keyref == key.keyref ? std::string() : other.keyref;
        }
    }
}

}  // namespace ventrix::desk
