#include "desk/toolkit/contents.h"

#include <utility>

#include "desk/xml/marker_text.h"

namespace ventrix::desk {
namespace {

struct Builder {
    Contents contents;
    const PageLayout& layout;
    DitaLibrary& library;
};

std::string FileName(const NativePath& path) {
    return FromFilesystem(ToFilesystem(path).filename()).utf8;
}

std::string FirstGiven(const std::string& preferred, const std::string& fallback) {
    return preferred.empty() ? fallback : preferred;
}

/// The entry of a topic; without a title if it has no page.
ContentsEntry TopicEntry(const Builder& builder, const NavigationItem& item, const DitaTarget& target) {
    const NativePath page = PageOf(builder.layout, target.path);
    if (page.Empty() || !builder.library.Summary(target.path).readable) {
        return {};
    }
    const TopicTitles own = TitlesOf(item.href, builder.library);
    const std::string title =
        item.titleLocked ? item.title : FirstGiven(FirstGiven(own.navigation, own.title), item.title);
    const std::string name = FromFilesystem(ToFilesystem(target.path).stem()).utf8;
    return {.title = FirstGiven(title, name),
            .label = {},
            .page = page,
            .address = target.topic.empty() ? std::string() : "#" + target.topic};
}

/// The entry of an item; without a title if the publication does not contain it.
ContentsEntry EntryOf(const Builder& builder, const NavigationItem& item) {
    const auto target = DitaTargetOf(item.href);
    const std::string title = FirstGiven(item.title, item.href.empty() ? std::string() : item.linkText);
    if (!target.has_value()) {
        return {.title = FirstGiven(title, item.href), .label = {}, .page = {}, .address = item.href};
    }
    if (item.page) {
        return TopicEntry(builder, item, *target);
    }
    NativePath output = OutputOf(builder.layout, target->path);
    if (output.Empty()) {
        return {};
    }
    return {.title = FirstGiven(title, FileName(target->path)),
            .label = {},
            .page = std::move(output),
            .address = {}};
}

std::size_t Add(Contents& contents, ContentsEntry entry, std::size_t parent) {
    const std::size_t index = contents.entries.size();
    entry.label = PlainText(entry.title);
    entry.parent = parent;
    contents.entries.push_back(std::move(entry));
    if (index != parent) {
        contents.entries[parent].children.push_back(index);
    }
    return index;
}

/// Makes the entry the one that its page is read at, unless the page has one already.
void AddToReading(Contents& contents, std::size_t index) {
    if (contents.byPage.insert({contents.entries[index].page, index}).second) {
        contents.reading.push_back(index);
    }
}

void AddItems(Builder& builder, std::size_t parent, const std::vector<NavigationItem>& items) {
    for (const NavigationItem& item : items) {
        ContentsEntry entry = item.shown ? EntryOf(builder, item) : ContentsEntry{};
        std::size_t place = parent;
        if (!entry.title.empty()) {
            place = Add(builder.contents, std::move(entry), parent);
            if (item.page) {
                AddToReading(builder.contents, place);
            }
        }
        AddItems(builder, place, item.children);
    }
}

void AddDocumentItems(const Contents& contents, std::size_t parent, xmlNode* place) {
    const NativePath& page = contents.entries.front().page;
    for (const std::size_t child : contents.entries[parent].children) {
        const ContentsEntry& entry = contents.entries[child];
        xmlNode* item = xmlNewChild(place, nullptr, Xml("item"), nullptr);
        xmlNewProp(item, Xml("title"), Xml(entry.title.c_str()));
        if (const std::string link = LinkTo(entry, page); !link.empty()) {
            xmlNewProp(item, Xml("href"), Xml(link.c_str()));
        }
        AddDocumentItems(contents, child, item);
    }
}

}  // namespace

Contents ContentsOfTopic(const NativePath& startPage, const std::string& title) {
    Contents contents;
    Add(contents, {.title = title, .label = {}, .page = startPage, .address = {}}, 0);
    AddToReading(contents, 0);
    return contents;
}

Contents ContentsOfMap(const Navigation& navigation, const PageLayout& layout, const NativePath& startPage,
                       const std::string& title, DitaLibrary& library) {
    Builder builder{.contents = ContentsOfTopic(startPage, title), .layout = layout, .library = library};
    builder.contents.language = navigation.language;
    AddItems(builder, 0, navigation.items);
    return std::move(builder.contents);
}

std::string LinkTo(const ContentsEntry& entry, const NativePath& fromPage) {
    return entry.page.Empty() ? entry.address : RelativeReference(fromPage, entry.page) + entry.address;
}

XmlDocument ContentsDocument(const Contents& contents) {
    XmlDocument document(xmlNewDoc(Xml("1.0")));
    xmlNode* root = xmlNewDocNode(document.get(), nullptr, Xml("contents"), nullptr);
    xmlDocSetRootElement(document.get(), root);
    xmlNewProp(root, Xml("title"), Xml(contents.entries.front().title.c_str()));
    xmlNewProp(root, Xml("language"), Xml(contents.language.c_str()));
    AddDocumentItems(contents, 0, root);
    return document;
}

std::string PlainText(std::string text) {
    RemoveMarkerGroups(text);
    std::string plain;
    bool pending = false;
    for (const char c : text) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            pending = !plain.empty();
            continue;
        }
        plain += pending ? " " : "";
        plain += c;
        pending = false;
    }
    return plain;
}

}  // namespace ventrix::desk
