#include "desk/toolkit/dita_map.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <optional>
#include <sstream>

#include "desk/toolkit/conref.h"
#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_document.h"
#include "desk/toolkit/keyref.h"
#include "desk/toolkit/unhandled.h"

namespace ventrix::desk {
namespace {

/// Reading goes through two stages: all maps are loaded and give their keys, since a map may use the keys
/// that another one defines; then the topic references are read in order.
struct MapReader {
    DitaLibrary& library;
    const DitaRun& run;
    Navigation navigation;
    std::map<NativePath, DitaDocument> maps;
    std::vector<NativePath> openMaps;  ///< From the root map down, to detect maps that contain themselves.
};

void Remark(const MapReader& reader, const DitaFinding& finding) {
    reader.run.log("warning: " + finding.file.utf8 + ": " + finding.text);
    reader.run.finding(finding);
}

RemarkSink RemarksOf(const MapReader& reader) {
    return
        [&reader](const xmlNode* place, const char* rule, const std::string& text, const Subject& subject) {
            Remark(reader, {SourceOf(place), static_cast<int>(xmlGetLineNo(place)), text, rule, subject});
        };
}

/// What topicrefs pass on to the topicrefs in them.
struct Inherited {
    std::string scope;
    std::string format;
    std::string linking;
    bool resourceOnly = false;
    bool shown = true;
    TopicMetadata metadata;  ///< Of the topic reference itself; what is its own is not passed on.
};

void ReadMap(MapReader& reader, const DitaTarget& target, const Inherited& inherited,
             std::vector<NavigationItem>& items);

bool EndsWithMap(const std::string& href) {
    return href.substr(0, href.find('#')).ends_with(".ditamap");
}

bool IsMapReference(const std::string& href, const std::string& format) {
    return format == "ditamap" || (format.empty() && EndsWithMap(href));
}

/// With the target of its key, if the key is known.
TopicReference Resolved(TopicReference topicref, const DitaKeys& keys) {
    if (const auto key = keys.find(topicref.key); key != keys.end() && !key->second.excluded) {
        topicref.href = key->second.href;
        topicref.format = topicref.format.empty() ? key->second.format : topicref.format;
    }
    return topicref;
}

/// The map that the topic reference refers to, by its path or by a key that is known so far.
std::optional<NativePath> SubmapOf(const xmlNode* topicref, const DitaKeys& keys) {
    const TopicReference resolved = Resolved(TopicReferenceOf(topicref), keys);
    const auto target =
        IsMapReference(resolved.href, resolved.format) ? DitaTargetOf(resolved.href) : std::nullopt;
    return target.has_value() ? std::optional(target->path) : std::nullopt;
}

std::vector<NativePath> SubmapsOf(xmlDoc* map, const DitaKeys& keys) {
    std::vector<NativePath> submaps;
    xmlNode* root = xmlDocGetRootElement(map);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (!HasType(node, "map/topicref")) {
            continue;
        }
        if (const auto submap = SubmapOf(node, keys)) {
            submaps.push_back(*submap);
        }
    }
    return submaps;
}

const DitaDocument& Load(MapReader& reader, const NativePath& path) {
    const auto known = reader.maps.find(path);
    if (known != reader.maps.end()) {
        return known->second;
    }
    DitaDocument& map = reader.maps[path];
    map = LoadDita(path, reader.library.Sources());
    if (map.document != nullptr) {
        ResolveConrefs(map.document.get(), nullptr, reader.library, RemarksOf(reader));
        ReportUnhandled(map.document.get(), RemarksOf(reader));
    } else if (!map.excluded) {
        reader.run.log("warning: " + map.reason);
        reader.run.unread(map.reason);
    }
    return map;
}

void ApplyKeys(MapReader& reader, const DitaDocument& map) {
    if (map.document == nullptr) {
        return;
    }
    const RemarkSink remarks = RemarksOf(reader);
    ResolveConrefs(map.document.get(), &reader.navigation.keys, reader.library, remarks);
    ResolveKeyrefs(map.document.get(), reader.navigation.keys, reader.library, remarks);
}

/// Loads the maps and those below them, and collects their keys. Breadth first, as a definition in a map
/// counts before those in its submaps.
void CollectMaps(MapReader& reader, std::deque<NativePath> waiting) {
    while (!waiting.empty()) {
        const NativePath path = waiting.front();
        waiting.pop_front();
        if (reader.maps.contains(path)) {
            continue;
        }
        const DitaDocument& loaded = Load(reader, path);
        if (loaded.document != nullptr) {
            CollectKeys(loaded.document.get(), reader.navigation.keys);
            std::ranges::copy(SubmapsOf(loaded.document.get(), {}), std::back_inserter(waiting));
        }
    }
}

/// Maps that others name by key come after those that they name by path. They may define the keys of further
/// ones.
void LoadMaps(MapReader& reader, const NativePath& map) {
    std::size_t loadedMaps = 0;
    for (std::deque<NativePath> waiting{map}; !waiting.empty();) {
        CollectMaps(reader, std::move(waiting));
        waiting.clear();
        if (reader.maps.size() == loadedMaps) {
            break;
        }
        loadedMaps = reader.maps.size();
        DitaKeys keys = reader.navigation.keys;
        ResolveKeyChains(keys);
        for (const auto& [path, loaded] : reader.maps) {
            if (loaded.document != nullptr) {
                std::ranges::copy(SubmapsOf(loaded.document.get(), keys), std::back_inserter(waiting));
            }
        }
    }
    ResolveKeyChains(reader.navigation.keys);
}

Inherited InheritedBy(const xmlNode* topicref, Inherited inherited) {
    const auto take = [topicref](const char* name, std::string& value) {
        if (const std::string own = Attribute(topicref, name); !own.empty()) {
            value = own;
        }
    };
    take("scope", inherited.scope);
    take("format", inherited.format);
    take("linking", inherited.linking);
    const std::string role = Attribute(topicref, "processing-role");
    inherited.resourceOnly = (inherited.resourceOnly && role != "normal") || role == "resource-only";
    inherited.metadata = ReadMapMetadata(topicref, std::move(inherited.metadata.branch));
    const std::string toc = Attribute(topicref, "toc");
    inherited.shown = toc.empty() ? inherited.shown : toc != "no";
    return inherited;
}

CollectionType CollectionOf(const xmlNode* topicref) {
    const std::string type = Attribute(topicref, "collection-type");
    return type == "sequence" ? CollectionType::kSequence
           : type == "family" ? CollectionType::kFamily
                              : CollectionType::kUnordered;
}

Linking LinkingOf(const std::string& value) {
    return {.from = value != "none" && value != "targetonly", .to = value != "none" && value != "sourceonly"};
}

NavigationItem ItemOf(const xmlNode* topicref, const Inherited& inherited) {
    NavigationItem item;
    item.href = Attribute(topicref, "href");
    const auto target = DitaTargetOf(item.href);
    item.title = NavigationTitle(topicref);
    item.titleLocked = Attribute(topicref, "locktitle") == "yes" && !item.title.empty();
    item.linkText = MapTextOf(topicref, "linktext");
    item.description = MapTextOf(topicref, "shortdesc");
    item.resourceOnly = inherited.resourceOnly;
    item.shown = inherited.shown && !inherited.resourceOnly;
    item.page =
        target.has_value() && !inherited.resourceOnly && IsTopicFormat(inherited.format, target->path);
    item.linking = LinkingOf(inherited.resourceOnly ? "none" : inherited.linking);
    item.collection = CollectionOf(topicref);
    item.metadata = inherited.metadata;
    return item;
}

void ReadTopicrefs(MapReader& reader, const xmlNode* parent, const Inherited& inherited,
                   std::vector<NavigationItem>& items);

void ReadTopicref(MapReader& reader, const xmlNode* topicref, const Inherited& outer,
                  std::vector<NavigationItem>& items) {
    if (HasType(topicref, "ditavalref-d/ditavalref") || HasType(topicref, "subjectScheme/subjectdef") ||
        Attribute(topicref, "print") == "printonly") {
        return;
    }
    const Inherited inherited = InheritedBy(topicref, outer);
    const std::string href = Attribute(topicref, "href");
    const auto target = DitaTargetOf(href);
    if (target.has_value() && IsMapReference(href, inherited.format)) {
        // The format describes the submap, not the topics in it.
        Inherited inside = inherited;
        inside.format.clear();
        ReadMap(reader, *target, inside, items);
        ReadTopicrefs(reader, topicref, inside, items);
        return;
    }
    NavigationItem& item = items.emplace_back(ItemOf(topicref, inherited));
    if (HasType(topicref, "mapgroup-d/topicgroup")) {
        item.title.clear();
    }
    ReadTopicrefs(reader, topicref, inherited, item.children);
}

/// What each column of a relationship table passes on to its cells.
std::vector<Inherited> ColumnsOf(const xmlNode* table, const Inherited& inherited) {
    std::vector<Inherited> columns;
    const xmlNode* head = ChildOfType(table, "map/relheader");
    for (const xmlNode* column = head == nullptr ? nullptr : FirstElement(head); column != nullptr;
         column = NextElement(column)) {
        columns.push_back(InheritedBy(column, inherited));
    }
    return columns;
}

void ReadRelationshipTable(MapReader& reader, const xmlNode* table, const Inherited& outer) {
    const Inherited inherited = InheritedBy(table, outer);
    const std::vector<Inherited> columns = ColumnsOf(table, inherited);
    for (const xmlNode* row = FirstElement(table); row != nullptr; row = NextElement(row)) {
        if (!HasType(row, "map/relrow")) {
            continue;
        }
        Relation relation;
        for (const xmlNode* cell = FirstElement(row); cell != nullptr; cell = NextElement(cell)) {
            NavigationItem& read = relation.cells.emplace_back();
            read.collection = CollectionOf(cell);
            const std::size_t column = relation.cells.size() - 1;
            ReadTopicrefs(reader, cell,
                          InheritedBy(cell, column < columns.size() ? columns[column] : inherited),
                          read.children);
        }
        reader.navigation.relations.push_back(std::move(relation));
    }
}

void ReadTopicrefs(MapReader& reader, const xmlNode* parent, const Inherited& inherited,
                   std::vector<NavigationItem>& items) {
    for (xmlNode* child = FirstElement(parent); child != nullptr; child = NextElement(child)) {
        if (HasType(child, "map/topicref")) {
            ReadTopicref(reader, child, inherited, items);
        } else if (HasType(child, "map/reltable")) {
            ReadRelationshipTable(reader, child, inherited);
        }
    }
}

/// The library that a book belongs to, its main title and what stands beside it, as one title.
std::string BookTitle(const xmlNode* title) {
    std::string text;
    for (const xmlNode* part = FirstElement(title); part != nullptr; part = NextElement(part)) {
        text += (text.empty() ? "" : " ") + TextOf(part);
    }
    return text;
}

std::string MapTitle(const xmlNode* root) {
    const xmlNode* title = ChildOfType(root, "topic/title");
    const std::string text = HasType(title, "bookmap/booktitle") ? BookTitle(title) : TextOf(title);
    return text.empty() ? Attribute(root, "title") : text;
}

std::string LanguageOf(const xmlNode* root) {
    const XmlString language(xmlNodeGetLang(root));
    return std::string(View(language.get()));
}

/// Reads the whole map, or the branch that the reference to it names.
void ReadMap(MapReader& reader, const DitaTarget& target, const Inherited& inherited,
             std::vector<NavigationItem>& items) {
    const NativePath& path = target.path;
    auto& open = reader.openMaps;
    if (std::find(open.begin(), open.end(), path) != open.end()) {
        Remark(reader, {path, 0, "the map contains itself; remove the reference to it"});
        return;
    }
    const bool isNew = !reader.maps.contains(path);  // A key or reused content led to it.
    const DitaDocument& map = Load(reader, path);
    if (isNew) {
        ApplyKeys(reader, map);
    }
    if (map.document == nullptr) {
        return;
    }
    const xmlNode* root = xmlDocGetRootElement(map.document.get());
    if (open.empty()) {
        reader.navigation.title = MapTitle(root);
        reader.navigation.language = LanguageOf(root);
    }
    const xmlNode* place = FindTarget(map.document.get(), target);
    open.push_back(path);
    if (HasType(place, "map/topicref")) {
        ReadTopicref(reader, place, inherited, items);
    } else {
        ReadTopicrefs(reader, root, InheritedBy(root, inherited), items);
    }
    open.pop_back();
    if (place == nullptr) {
        Remark(reader,
               {path, 0,
                "the map has no branch with the id \"" +
                    (target.element.empty() ? target.topic : target.element) + "\"; the whole map is used",
                kDeadReference});
    }
}

/// Keys that the rest of the maps defines stay.
void NoteExcludedKeys(const std::string& names, DitaKeys& keys) {
    DitaKey excluded;
    excluded.excluded = true;
    std::istringstream stream(names);
    for (std::string name; stream >> name;) {
        keys.insert({name, excluded});
    }
}

/// The keys, and the topic or the content of the map, of a topic reference that the filter removed. `maps`
/// has those that are noted.
void NoteExcluded(MapReader& reader, const TopicReference& topicref, std::set<NativePath>& maps) {
    NoteExcludedKeys(topicref.definedKeys, reader.navigation.keys);
    const TopicReference resolved = Resolved(topicref, reader.navigation.keys);
    const auto target = DitaTargetOf(resolved.href);
    if (!target.has_value()) {
        return;
    }
    if (!IsMapReference(resolved.href, resolved.format)) {
        reader.navigation.excludedTopics.insert(target->path);
        return;
    }
    if (!maps.insert(target->path).second) {
        return;
    }
    const DitaDocument map = LoadDita(target->path, reader.library.Sources());
    for (const TopicReference& filtered : map.filtered.topicrefs) {
        NoteExcluded(reader, filtered, maps);
    }
    xmlNode* root = map.document == nullptr ? nullptr : xmlDocGetRootElement(map.document.get());
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (HasType(node, "map/topicref")) {
            NoteExcluded(reader, TopicReferenceOf(node), maps);
        }
    }
}

void NoteAllExcluded(MapReader& reader) {
    std::set<NativePath> maps;
    for (const auto& [path, map] : reader.maps) {
        for (const TopicReference& filtered : map.filtered.topicrefs) {
            NoteExcluded(reader, filtered, maps);
        }
    }
}

}  // namespace

Navigation ReadNavigation(const NativePath& map, DitaLibrary& library, const DitaRun& run) {
    MapReader reader{.library = library, .run = run, .navigation = {}, .maps = {}, .openMaps = {}};
    LoadMaps(reader, map);
    NoteAllExcluded(reader);
    for (const auto& [path, loaded] : reader.maps) {
        ApplyKeys(reader, loaded);
    }
    std::vector<NavigationItem> items;
    ReadMap(reader, {.path = map, .topic = {}, .element = {}}, {}, items);
    reader.navigation.items = std::move(items);
    return std::move(reader.navigation);
}

}  // namespace ventrix::desk
