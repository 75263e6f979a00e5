#include "desk/toolkit/page_navigation.h"

#include <algorithm>
#include <utility>

#include "desk/toolkit/dita_classes.h"

namespace ventrix::desk {
namespace {

bool HasPage(const NavigationItem& item) {
    return item.page && item.shown;
}

/// The topics below an item that take part in its links; a heading or group stands for those in it.
std::vector<const NavigationItem*> TopicsIn(const std::vector<NavigationItem>& items) {
    std::vector<const NavigationItem*> topics;
    for (const NavigationItem& item : items) {
        if (HasPage(item)) {
            topics.push_back(&item);
        }
    }
    return topics;
}

void AddLinkTo(std::vector<MapLink>& links, const char* role, const NavigationItem& item) {
    if (item.linking.to) {
        links.push_back({role, item.href, item.titleLocked ? item.title : std::string()});
    }
}

/// The links among the topics below one, as its collection type says.
std::vector<MapLink> LinksAmong(const std::vector<const NavigationItem*>& topics, std::size_t own,
                                CollectionType collection) {
    std::vector<MapLink> links;
    if (collection == CollectionType::kSequence) {
        if (own > 0) {
            AddLinkTo(links, "previous", *topics[own - 1]);
        }
        if (own + 1 < topics.size()) {
            AddLinkTo(links, "next", *topics[own + 1]);
        }
    } else if (collection == CollectionType::kFamily) {
        for (std::size_t i = 0; i < topics.size(); ++i) {
            if (i != own) {
                AddLinkTo(links, "sibling", *topics[i]);
            }
        }
    }
    return links;
}

void CollectNeighbours(const std::vector<NavigationItem>& items, const NavigationItem* parent,
                       CollectionType collection, PageNeighbours& neighbours) {
    const std::vector<const NavigationItem*> topics = TopicsIn(items);
    std::size_t number = 0;
    for (const NavigationItem& item : items) {
        const auto target = HasPage(item) ? DitaTargetOf(item.href) : std::nullopt;
        if (!target.has_value()) {
            CollectNeighbours(item.children, parent, item.collection, neighbours);
            continue;
        }
        std::vector<MapLink> links;
        for (const NavigationItem* child : TopicsIn(item.children)) {
            AddLinkTo(links, "child", *child);
        }
        for (MapLink& link : LinksAmong(topics, number, collection)) {
            links.push_back(std::move(link));
        }
        ++number;
        if (parent != nullptr) {
            AddLinkTo(links, "parent", *parent);
        }
        neighbours.insert({target->path, item.linking.from ? std::move(links) : std::vector<MapLink>()});
        CollectNeighbours(item.children, &item, item.collection, neighbours);
    }
}

void AddFriends(const NavigationItem& item, const Relation& relation, std::size_t cell,
                PageNeighbours& neighbours) {
    const auto target = item.page && item.linking.from ? DitaTargetOf(item.href) : std::nullopt;
    if (!target.has_value()) {
        return;
    }
    std::vector<MapLink>& links = neighbours[target->path];
    for (std::size_t other = 0; other < relation.cells.size(); ++other) {
        for (const NavigationItem& related : relation.cells[other]) {
            const bool known = std::ranges::any_of(links, [&](const MapLink& link) {
                return link.role == "friend" && link.href == related.href;
            });
            if (other != cell && related.linking.to && !known) {
                links.push_back({"friend", related.href, related.title, related.page});
            }
        }
    }
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

void AddLink(xmlNode* links, const MapLink& map, DitaLibrary& library) {
    const auto target = map.page ? DitaTargetOf(map.href) : std::nullopt;
    const TopicSummary summary = target.has_value() ? library.Summary(target->path) : TopicSummary();
    if (summary.excluded || (target.has_value() && summary.title.empty() && map.title.empty())) {
        return;
    }
    xmlNode* link = xmlNewChild(links, nullptr, Xml("link"), nullptr);
    xmlNewProp(link, Xml("class"), Xml("- topic/link "));
    xmlNewProp(link, Xml("role"), Xml(map.role.c_str()));
    xmlNewProp(link, Xml("href"), Xml(map.href.c_str()));
    xmlNewProp(link, Xml("format"), Xml(target.has_value() ? "dita" : "html"));
    if (!target.has_value() || summary.title.empty()) {
        xmlNewProp(link, Xml("page-title"), Xml((map.title.empty() ? map.href : map.title).c_str()));
    }
    if (!summary.shortDescription.empty() && map.role == "child") {
        xmlNode* description =
            xmlNewTextChild(link, nullptr, Xml("desc"), Xml(summary.shortDescription.c_str()));
        xmlNewProp(description, Xml("class"), Xml("- topic/desc "));
    }
}

}  // namespace

PageNeighbours NeighboursIn(const Navigation& navigation) {
    PageNeighbours neighbours;
    CollectNeighbours(navigation.items, nullptr, CollectionType::kUnordered, neighbours);
    for (const Relation& relation : navigation.relations) {
        for (std::size_t cell = 0; cell < relation.cells.size(); ++cell) {
            for (const NavigationItem& item : relation.cells[cell]) {
                AddFriends(item, relation, cell, neighbours);
            }
        }
    }
    return neighbours;
}

void AddNeighbours(xmlDoc* document, const PageNeighbours& neighbours, const NativePath& topic,
                   DitaLibrary& library) {
    const auto own = neighbours.find(topic);
    xmlNode* first = FirstTopic(document);
    if (own == neighbours.end() || first == nullptr || own->second.empty()) {
        return;
    }
    xmlNode* links = RelatedLinks(first);
    for (const MapLink& link : own->second) {
        AddLink(links, link, library);
    }
}

}  // namespace ventrix::desk
