#include "desk/toolkit/map_links.h"

#include <algorithm>
#include <set>
#include <utility>

#include "desk/toolkit/dita_classes.h"

namespace ventrix::desk {
namespace {

/// The references below an item that take part in its links.
std::vector<const NavigationItem*> LinkedItems(const std::vector<NavigationItem>& items) {
    std::vector<const NavigationItem*> linked;
    for (const NavigationItem& item : items) {
        if (!item.href.empty() && !item.resourceOnly) {
            linked.push_back(&item);
        }
    }
    return linked;
}

/// The links of the item's page; null if it has no page, or the map gives it no links.
std::vector<MapLink>* LinksOf(const NavigationItem& item, MapLinks& mapLinks) {
    const auto target = item.page && item.linking.from ? DitaTargetOf(item.href) : std::nullopt;
    return target.has_value() ? &mapLinks[target->path] : nullptr;
}

void AddLinkTo(std::vector<MapLink>& links, const char* role, const NavigationItem& item) {
    if (item.linking.to) {
        links.push_back({role, item.href, item.linkText, item.title, item.description, item.page});
    }
}

/// Adds the links among the items below one, as its collection type says.
void AddLinksAmong(const std::vector<const NavigationItem*>& items, const NavigationItem& item,
                   CollectionType collection, std::vector<MapLink>& links) {
    const auto own = static_cast<std::size_t>(std::ranges::find(items, &item) - items.begin());
    if (collection == CollectionType::kSequence) {
        if (own > 0) {
            AddLinkTo(links, "previous", *items[own - 1]);
        }
        if (own + 1 < items.size()) {
            AddLinkTo(links, "next", *items[own + 1]);
        }
    } else if (collection == CollectionType::kFamily) {
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (i != own) {
                AddLinkTo(links, "friend", *items[i]);
            }
        }
    }
}

/// Adds to the links of each item below one. `parent` is null at the top.
void CollectLinks(const std::vector<NavigationItem>& items, const NavigationItem* parent,
                  CollectionType collection, MapLinks& mapLinks) {
    const std::vector<const NavigationItem*> linked = LinkedItems(items);
    for (const NavigationItem& item : items) {
        if (std::vector<MapLink>* links = LinksOf(item, mapLinks)) {
            for (const NavigationItem* child : LinkedItems(item.children)) {
                AddLinkTo(*links, "child", *child);
            }
            AddLinksAmong(linked, item, collection, *links);
            if (parent != nullptr) {
                AddLinkTo(*links, "parent", *parent);
            }
        }
        CollectLinks(item.children, item.page ? &item : parent, item.collection, mapLinks);
    }
}

/// The references below a cell, at all levels.
void CollectReferences(const std::vector<NavigationItem>& items,
                       std::vector<const NavigationItem*>& references) {
    for (const NavigationItem& item : items) {
        if (!item.href.empty()) {
            references.push_back(&item);
        }
        CollectReferences(item.children, references);
    }
}

/// Links the topics of each cell with those of the others.
void CollectFriends(const Relation& relation, MapLinks& mapLinks) {
    for (const NavigationItem& cell : relation.cells) {
        std::vector<const NavigationItem*> own;
        std::vector<const NavigationItem*> others;
        for (const NavigationItem& other : relation.cells) {
            CollectReferences(other.children, &other == &cell ? own : others);
        }
        for (const NavigationItem* item : own) {
            std::vector<MapLink>* links = LinksOf(*item, mapLinks);
            for (std::size_t i = 0; links != nullptr && i < others.size(); ++i) {
                AddLinkTo(*links, "friend", *others[i]);
            }
        }
    }
}

/// A map may relate two topics in several ways. The first link of each role stays.
void RemoveRepeatedLinks(std::vector<MapLink>& links) {
    std::set<std::pair<std::string, std::string>> known;
    std::erase_if(links, [&known](const MapLink& link) {
        return !known.insert({link.role, link.href}).second;
    });
}

xmlNode* RelatedLinks(xmlNode* topic) {
    if (xmlNode* existing = ChildOfType(topic, "topic/related-links")) {
        return existing;
    }
    xmlNode* links = xmlNewDocNode(topic->doc, nullptr, Xml("related-links"), nullptr);
    xmlNewProp(links, Xml("class"), Xml("- topic/related-links "));
    xmlNode* nested = ChildOfType(topic, "topic/topic");
    return nested == nullptr ? xmlAddChild(topic, links) : xmlAddPrevSibling(nested, links);
}

/// The text of the link; empty for the title of the target. A topic without a title is called like its file.
std::string TextFor(const MapLink& map, const NativePath& topic, const TopicSummary& summary) {
    if (!map.text.empty() || !summary.title.empty()) {
        return map.text;
    }
    const std::string name = map.page ? FromFilesystem(ToFilesystem(topic).stem()).utf8 : map.href;
    return map.title.empty() ? name : map.title;
}

void AddLink(xmlNode* links, const MapLink& map, DitaLibrary& library) {
    const auto target = map.page ? DitaTargetOf(map.href) : std::nullopt;
    const NativePath topic = target.has_value() ? target->path : NativePath();
    const TopicSummary summary = target.has_value() ? library.Summary(topic) : TopicSummary();
    if (target.has_value() && !summary.readable) {
        return;
    }
    xmlNode* link = xmlNewChild(links, nullptr, Xml("link"), nullptr);
    xmlNewProp(link, Xml("class"), Xml("- topic/link "));
    xmlNewProp(link, Xml("role"), Xml(map.role.c_str()));
    xmlNewProp(link, Xml("href"), Xml(map.href.c_str()));
    xmlNewProp(link, Xml("format"), Xml(target.has_value() ? "dita" : "html"));
    if (const std::string text = TextFor(map, topic, summary); !text.empty()) {
        xmlNewProp(link, Xml("page-title"), Xml(text.c_str()));
    }
    const std::string& text = map.description.empty() ? summary.shortDescription : map.description;
    if (!text.empty() && map.role == "child") {
        xmlNode* description = xmlNewTextChild(link, nullptr, Xml("desc"), Xml(text.c_str()));
        xmlNewProp(description, Xml("class"), Xml("- topic/desc "));
    }
}

}  // namespace

MapLinks MapLinksOf(const Navigation& navigation) {
    MapLinks mapLinks;
    CollectLinks(navigation.items, nullptr, CollectionType::kUnordered, mapLinks);
    for (const Relation& relation : navigation.relations) {
        for (const NavigationItem& cell : relation.cells) {
            CollectLinks(cell.children, nullptr, cell.collection, mapLinks);
        }
        CollectFriends(relation, mapLinks);
    }
    for (auto& [topic, links] : mapLinks) {
        RemoveRepeatedLinks(links);
    }
    return mapLinks;
}

void AddMapLinks(xmlDoc* document, const MapLinks& mapLinks, const NativePath& topic, DitaLibrary& library) {
    const auto own = mapLinks.find(topic);
    xmlNode* first = FirstTopic(document);
    if (own == mapLinks.end() || first == nullptr || own->second.empty()) {
        return;
    }
    xmlNode* links = RelatedLinks(first);
    for (const MapLink& link : own->second) {
        AddLink(links, link, library);
    }
}

}  // namespace ventrix::desk
