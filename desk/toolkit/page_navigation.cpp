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

struct ContentsWriter {
    const PageLayout& layout;
    const NativePath& page;
    const std::set<NativePath>& written;
    DitaLibrary& library;
};

/// The title and the reference of an item; both empty if the publication does not contain it.
std::pair<std::string, std::string> TitleAndReference(const ContentsWriter& writer,
                                                      const NavigationItem& item) {
    const auto target = DitaTargetOf(item.href);
    if (!target.has_value()) {
        return {item.title.empty() ? item.href : item.title, item.href};
    }
    if (!item.page) {
        const NativePath output = OutputOf(writer.layout, target->path);
        const std::string title =
            item.title.empty() ? FromFilesystem(ToFilesystem(target->path).filename()).utf8 : item.title;
        return output.Empty() ? std::pair<std::string, std::string>()
                              : std::pair(title, RelativeReference(writer.page, output));
    }
    const NativePath topicPage = PageOf(writer.layout, target->path);
    const std::string own = TitleOf(item.href, writer.library);
    if (!writer.written.contains(topicPage)) {
        return {};
    }
    const std::string anchor = target->topic.empty() ? "" : "#" + target->topic;
    const std::string name = FromFilesystem(ToFilesystem(target->path).stem()).utf8;
    const std::string title = item.titleLocked || own.empty() ? item.title : own;
    return {title.empty() ? name : title, RelativeReference(writer.page, topicPage) + anchor};
}

void AddItems(const ContentsWriter& writer, xmlNode* parent, const std::vector<NavigationItem>& items) {
    for (const NavigationItem& item : items) {
        const auto [title, reference] =
            item.shown ? TitleAndReference(writer, item) : std::pair<std::string, std::string>();
        xmlNode* place = parent;
        if (!title.empty()) {
            place = xmlNewChild(parent, nullptr, Xml("item"), nullptr);
            xmlNewProp(place, Xml("title"), Xml(title.c_str()));
            if (!reference.empty()) {
                xmlNewProp(place, Xml("href"), Xml(reference.c_str()));
            }
        }
        AddItems(writer, place, item.children);
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

XmlDocument ContentsDocument(const Navigation& navigation, const PageLayout& layout, const NativePath& page,
                             const std::set<NativePath>& written, DitaLibrary& library) {
    XmlDocument document(xmlNewDoc(Xml("1.0")));
    xmlNode* root = xmlNewDocNode(document.get(), nullptr, Xml("contents"), nullptr);
    xmlDocSetRootElement(document.get(), root);
    xmlNewProp(root, Xml("title"), Xml(navigation.title.c_str()));
    xmlNewProp(root, Xml("language"), Xml(navigation.language.c_str()));
    AddItems({.layout = layout, .page = page, .written = written, .library = library}, root,
             navigation.items);
    return document;
}

}  // namespace ventrix::desk
