#include "desk/toolkit/dita_map.h"

#include <algorithm>
#include <sstream>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_document.h"

namespace ventrix::desk {
namespace {

struct MapReader {
    const Ditaval& rules;
    const MessageSink& warnings;
    Navigation navigation;
    std::vector<NativePath> openMaps;  ///< From the root map down, to detect maps that contain themselves.
};

/// What topicrefs pass on to the topicrefs in them.
struct Inherited {
    std::string scope;
    std::string format;
    bool resourceOnly = false;
    bool shown = true;
};

void ReadMap(MapReader& reader, const NativePath& path, const Inherited& inherited,
             std::vector<NavigationItem>& items);

bool EndsWithMap(const std::string& href) {
    return href.substr(0, href.find('#')).ends_with(".ditamap");
}

std::string NavigationTitle(const xmlNode* topicref) {
    const xmlNode* meta = ChildOfType(topicref, "map/topicmeta");
    const std::string title = TextOf(ChildOfType(meta, "topic/navtitle"));
    return title.empty() ? Attribute(topicref, "navtitle") : title;
}

std::string KeyText(const xmlNode* topicref) {
    const xmlNode* meta = ChildOfType(topicref, "map/topicmeta");
    const xmlNode* keywords = ChildOfType(meta, "topic/keywords");
    for (const xmlNode* source :
         {ChildOfType(keywords, "topic/keyword"), ChildOfType(meta, "topic/linktext")}) {
        if (source != nullptr) {
            return TextOf(source);
        }
    }
    return NavigationTitle(topicref);
}

void ReadKeys(MapReader& reader, const xmlNode* topicref) {
    std::istringstream keys(Attribute(topicref, "keys"));
    for (std::string key; keys >> key;) {
        reader.navigation.keys.insert({key, {Attribute(topicref, "href"), KeyText(topicref)}});
    }
}

Inherited InheritedBy(const xmlNode* topicref, Inherited inherited) {
    const auto take = [topicref](const char* name, std::string& value) {
        if (const std::string own = Attribute(topicref, name); !own.empty()) {
            value = own;
        }
    };
    take("scope", inherited.scope);
    take("format", inherited.format);
    const std::string role = Attribute(topicref, "processing-role");
    const bool keyDefinition = HasType(topicref, "mapgroup-d/keydef") && role != "normal";
    inherited.resourceOnly =
        (inherited.resourceOnly && role != "normal") || role == "resource-only" || keyDefinition;
    const std::string toc = Attribute(topicref, "toc");
    inherited.shown = toc.empty() ? inherited.shown : toc != "no";
    return inherited;
}

void ReadTopicrefs(MapReader& reader, const xmlNode* parent, const Inherited& inherited,
                   std::vector<NavigationItem>& items);

void ReadTopicref(MapReader& reader, const xmlNode* topicref, const Inherited& outer,
                  std::vector<NavigationItem>& items) {
    ReadKeys(reader, topicref);
    const Inherited inherited = InheritedBy(topicref, outer);
    NavigationItem item;
    item.href = Attribute(topicref, "href");
    const auto target = DitaTargetOf(item.href);
    if (target.has_value() &&
        (inherited.format == "ditamap" || (inherited.format.empty() && EndsWithMap(item.href)))) {
        // The format describes the submap, not the topics in it.
        Inherited inside = inherited;
        inside.format.clear();
        ReadMap(reader, target->path, inside, items);
        return;
    }
    item.title = NavigationTitle(topicref);
    item.shown = inherited.shown && !inherited.resourceOnly;
    item.page =
        target.has_value() && !inherited.resourceOnly && IsTopicFormat(inherited.format, target->path);
    ReadTopicrefs(reader, topicref, inherited, item.children);
    // A group without a title does not add a level to the navigation.
    if (item.href.empty() && item.title.empty()) {
        std::move(item.children.begin(), item.children.end(), std::back_inserter(items));
    } else {
        items.push_back(std::move(item));
    }
}

/// The topics of relationship tables get pages, but do not appear in the table of contents.
void ReadRelationshipTable(MapReader& reader, xmlNode* table, Inherited inherited,
                           std::vector<NavigationItem>& items) {
    inherited.shown = false;
    for (xmlNode* node = NextNode(table, table); node != nullptr; node = NextNode(node, table)) {
        if (HasType(node, "map/topicref") && !HasType(node->parent, "map/topicref")) {
            ReadTopicref(reader, node, inherited, items);
        }
    }
}

void ReadTopicrefs(MapReader& reader, const xmlNode* parent, const Inherited& inherited,
                   std::vector<NavigationItem>& items) {
    for (xmlNode* child = FirstElement(parent); child != nullptr; child = NextElement(child)) {
        if (HasType(child, "map/topicref")) {
            ReadTopicref(reader, child, inherited, items);
        } else if (HasType(child, "map/reltable")) {
            ReadRelationshipTable(reader, child, inherited, items);
        }
    }
}

std::string MapTitle(const xmlNode* root) {
    const xmlNode* title = ChildOfType(root, "topic/title");
    const xmlNode* bookTitle = ChildOfType(title, "bookmap/mainbooktitle");
    const std::string text = TextOf(bookTitle == nullptr ? title : bookTitle);
    return text.empty() ? Attribute(root, "title") : text;
}

std::string LanguageOf(const xmlNode* root) {
    const XmlString language(xmlNodeGetLang(root));
    return std::string(View(language.get()));
}

void ReadMap(MapReader& reader, const NativePath& path, const Inherited& inherited,
             std::vector<NavigationItem>& items) {
    auto& open = reader.openMaps;
    if (std::find(open.begin(), open.end(), path) != open.end()) {
        reader.warnings(path.utf8 + ": the map contains itself; remove the reference to it");
        return;
    }
    const DitaDocument map = LoadDita(path, reader.rules);
    if (map.document == nullptr) {
        if (!map.excluded) {
            reader.warnings(map.reason);
        }
        return;
    }
    const xmlNode* root = xmlDocGetRootElement(map.document.get());
    if (open.empty()) {
        reader.navigation.title = MapTitle(root);
        reader.navigation.language = LanguageOf(root);
    }
    open.push_back(path);
    ReadTopicrefs(reader, root, inherited, items);
    open.pop_back();
}

}  // namespace

Navigation ReadNavigation(const NativePath& map, const Ditaval& rules, const MessageSink& warnings) {
    MapReader reader{.rules = rules, .warnings = warnings, .navigation = {}, .openMaps = {}};
    std::vector<NavigationItem> items;
    ReadMap(reader, map, {}, items);
    reader.navigation.items = std::move(items);
    return std::move(reader.navigation);
}

}  // namespace ventrix::desk
