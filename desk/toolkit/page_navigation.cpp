#include "desk/toolkit/page_navigation.h"

#include "desk/toolkit/dita_classes.h"

namespace ventrix::desk {
namespace {

void CollectNeighbours(const std::vector<NavigationItem>& items, const std::string& parent,
                       PageNeighbours& neighbours) {
    for (const NavigationItem& item : items) {
        const auto target = item.page && item.shown ? DitaTargetOf(item.href) : std::nullopt;
        if (!target.has_value()) {
            CollectNeighbours(item.children, parent, neighbours);
            continue;
        }
        Neighbours own{.parent = parent, .children = {}};
        for (const NavigationItem& child : item.children) {
            if (child.page && child.shown) {
                own.children.push_back(child.href);
            }
        }
        neighbours.insert({target->path, std::move(own)});
        CollectNeighbours(item.children, item.href, neighbours);
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

void AddLink(xmlNode* links, const std::string& href, const char* role, DitaLibrary& library) {
    const auto target = DitaTargetOf(href);
    const TopicSummary& summary = library.Summary(target->path);
    if (summary.excluded || summary.title.empty()) {
        return;
    }
    xmlNode* link = xmlNewChild(links, nullptr, Xml("link"), nullptr);
    xmlNewProp(link, Xml("class"), Xml("- topic/link "));
    xmlNewProp(link, Xml("role"), Xml(role));
    xmlNewProp(link, Xml("href"), Xml(href.c_str()));
    xmlNewProp(link, Xml("format"), Xml("dita"));
    if (!summary.shortDescription.empty() && std::string_view(role) == "child") {
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
    return {own.empty() ? item.title : own, RelativeReference(writer.page, topicPage) + anchor};
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
    CollectNeighbours(navigation.items, {}, neighbours);
    return neighbours;
}

void AddNeighbours(xmlDoc* document, const PageNeighbours& neighbours, const NativePath& topic,
                   DitaLibrary& library) {
    const auto own = neighbours.find(topic);
    xmlNode* first = FirstTopic(document);
    if (own == neighbours.end() || first == nullptr ||
        (own->second.parent.empty() && own->second.children.empty())) {
        return;
    }
    xmlNode* links = RelatedLinks(first);
    for (const std::string& child : own->second.children) {
        AddLink(links, child, "child", library);
    }
    if (!own->second.parent.empty()) {
        AddLink(links, own->second.parent, "parent", library);
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
