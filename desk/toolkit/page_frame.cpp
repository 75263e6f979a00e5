#include "desk/toolkit/page_frame.h"

#include <algorithm>
#include <filesystem>

namespace ventrix::desk {
namespace {

constexpr std::size_t kStartPage = 0;        ///< Its entry in the contents.
constexpr std::size_t kShownWhole = 100;     ///< Contents up to this size are shown whole.
constexpr std::size_t kShownNeighbours = 8;  ///< On either side, in larger contents.
constexpr std::size_t kShownAncestors = 6;

/// A frame while it is built.
struct Frame {
    xmlNode* root;
    const FramedPage& framed;
    const Contents& contents;
    std::vector<std::size_t> path;  ///< The page's entry and those above it, from the top. May be empty.
};

xmlNode* AddElement(xmlNode* parent, const char* name) {
    return xmlNewChild(parent, nullptr, Xml(name), nullptr);
}

void SetAttribute(xmlNode* element, const char* name, const std::string& value) {
    if (!value.empty()) {
        xmlNewProp(element, Xml(name), Xml(value.c_str()));
    }
}

/// An element with the label and the link of an entry.
xmlNode* AddEntry(const Frame& frame, xmlNode* parent, const char* name, const ContentsEntry& entry) {
    xmlNode* element = AddElement(parent, name);
    SetAttribute(element, "title", entry.label);
    SetAttribute(element, "href", LinkTo(entry, frame.framed.page));
    return element;
}

/// Without the start page. Of a deep path only the last entries.
std::vector<std::size_t> PathTo(const Contents& contents, const NativePath& page) {
    std::vector<std::size_t> path;
    const auto found = contents.byPage.find(page);
    std::size_t entry = found == contents.byPage.end() ? kStartPage : found->second;
    for (; entry != kStartPage && path.size() <= kShownAncestors; entry = contents.entries[entry].parent) {
        path.push_back(entry);
    }
    std::ranges::reverse(path);
    return path;
}

bool IsOnPath(const Frame& frame, std::size_t entry) {
    return std::ranges::find(frame.path, entry) != frame.path.end();
}

void AddLevel(const Frame& frame, xmlNode* parent, std::size_t above);

void AddItem(const Frame& frame, xmlNode* parent, std::size_t index) {
    const ContentsEntry& entry = frame.contents.entries[index];
    xmlNode* item = AddEntry(frame, parent, "item", entry);
    if (!frame.path.empty() && frame.path.back() == index) {
        SetAttribute(item, "current", "page");
    }
    if (frame.contents.entries.size() <= kShownWhole || IsOnPath(frame, index)) {
        AddLevel(frame, item, index);
    } else if (!entry.children.empty()) {
        SetAttribute(item, "closed", "yes");
    }
}

/// The entries below one. Of many, those around the one that leads to the page.
void AddLevel(const Frame& frame, xmlNode* parent, std::size_t above) {
    const std::vector<std::size_t>& children = frame.contents.entries[above].children;
    std::size_t first = 0;
    std::size_t end = children.size();
    if (frame.contents.entries.size() > kShownWhole) {
        // Children are in ascending order.
        const auto own = std::ranges::find_first_of(children, frame.path);
        const auto place = own == children.end() ? 0 : static_cast<std::size_t>(own - children.begin());
        first = place - std::min(place, kShownNeighbours);
        end = std::min(children.size(), place + kShownNeighbours + 1);
    }
    if (first > 0) {
        AddElement(parent, "more");
    }
    for (std::size_t i = first; i < end; ++i) {
        AddItem(frame, parent, children[i]);
    }
    if (end < children.size()) {
        AddElement(parent, "more");
    }
}

void AddContents(const Frame& frame) {
    const bool isCut = !frame.path.empty() && frame.contents.entries[frame.path.front()].parent != kStartPage;
    if (isCut) {
        AddElement(frame.root, "more");
    }
    AddLevel(frame, frame.root, isCut ? frame.contents.entries[frame.path.front()].parent : kStartPage);
}

void AddBreadcrumb(const Frame& frame) {
    for (const std::size_t entry : frame.path) {
        if (entry != frame.path.back()) {
            AddEntry(frame, frame.root, "crumb", frame.contents.entries[entry]);
        }
    }
}

void AddPreviousAndNext(const Frame& frame) {
    const std::vector<std::size_t>& reading = frame.contents.reading;
    const auto own = frame.contents.byPage.find(frame.framed.page);
    if (own == frame.contents.byPage.end()) {
        return;
    }
    const auto place = std::ranges::lower_bound(reading, own->second);
    if (place != reading.begin()) {
        AddEntry(frame, frame.root, "previous", frame.contents.entries[*(place - 1)]);
    }
    if (place + 1 != reading.end()) {
        AddEntry(frame, frame.root, "next", frame.contents.entries[*(place + 1)]);
    }
}

std::string Extension(const NativePath& file) {
    return FromFilesystem(ToFilesystem(file).extension()).utf8;
}

}  // namespace

PageAssets AssetsFor(const PageDesign& design, const PageLayout& layout, const NativePath& dataFolder) {
    const auto asset = [&layout](const NativePath& source, const std::string& name) {
        return PageAsset{source, {layout.assets.utf8 + name}};
    };
    PageAssets assets;
    assets.styleSheets.push_back(asset({dataFolder.utf8 + "pages.css"}, "pages.css"));
    assets.script = asset({dataFolder.utf8 + "pages.js"}, "pages.js");
    if (!design.styleSheet.Empty()) {
        assets.styleSheets.push_back(asset(design.styleSheet, "custom.css"));
    }
    if (!design.logo.Empty()) {
        assets.logo.push_back(asset(design.logo, "logo" + Extension(design.logo)));
    }
    return assets;
}

void AddPageFrame(xmlDoc* document, const FramedPage& framed, const Contents& contents,
                  const PageAssets& assets) {
    const Frame frame{.root = AddElement(xmlDocGetRootElement(document), "page-frame"),
                      .framed = framed,
                      .contents = contents,
                      .path = PathTo(contents, framed.page)};
    const ContentsEntry& start = contents.entries[kStartPage];
    SetAttribute(frame.root, "title", framed.title);
    SetAttribute(frame.root, "window-title", framed.windowTitle);
    SetAttribute(frame.root, "description", framed.description);
    for (const MetadataEntry& entry : framed.metadata) {
        xmlNode* meta = AddElement(frame.root, "meta");
        SetAttribute(meta, "name", entry.name);
        SetAttribute(meta, "content", entry.content);
    }
    SetAttribute(frame.root, "site", start.label);
    SetAttribute(frame.root, "home", LinkTo(start, framed.page));
    for (const PageAsset& logo : assets.logo) {
        SetAttribute(frame.root, "logo", RelativeReference(framed.page, logo.target));
    }
    for (const PageAsset& sheet : assets.styleSheets) {
        SetAttribute(AddElement(frame.root, "style"), "href", RelativeReference(framed.page, sheet.target));
    }
    SetAttribute(AddElement(frame.root, "script"), "href",
                 RelativeReference(framed.page, assets.script.target));
    const bool isStart = framed.page == start.page;
    SetAttribute(frame.root, "start", isStart ? "yes" : "");
    if (!isStart) {
        AddBreadcrumb(frame);
        AddContents(frame);
    }
    AddPreviousAndNext(frame);
}

}  // namespace ventrix::desk
