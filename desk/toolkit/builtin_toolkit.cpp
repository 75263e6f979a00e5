#include "desk/toolkit/builtin_toolkit.h"

#include <deque>
#include <filesystem>
#include <set>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_map.h"
#include "desk/toolkit/dita_references.h"
#include "desk/toolkit/page_layout.h"
#include "desk/toolkit/page_navigation.h"

namespace ventrix::desk {
namespace {

/// The state of a run. It goes through three stages. First, the map gives the navigation, the keys and the
/// topics that wait for a page. Then each waiting topic becomes a page (MakePage); a link to a topic that the
/// map does not name makes that topic wait too, so the list grows until every topic that can be reached has
/// its page. Last, the table of contents becomes the index, when it is known which pages exist.
struct Publication {
    const DitaRun& run;
    const Ditaval& rules;
    const Stylesheet& stylesheet;
    PageLayout layout;
    Navigation navigation;
    PageNeighbours neighbours;
    DitaLibrary& library;
    std::deque<NativePath> waiting;
    std::set<NativePath> known;  ///< Topics that wait or have their page.
    std::set<NativePath> copied;
    MessageSink warn;
    std::set<NativePath> written;  ///< Pages.
    int warnings = 0;
    std::string failure;  ///< The first page or file that could not be written.
};

void Fail(Publication& publication, const std::string& reason) {
    publication.run.log("error: " + reason);
    if (publication.failure.empty()) {
        publication.failure = reason;
    }
}

void ReportUnread(Publication& publication, const std::string& reason) {
    publication.warn(reason);
    publication.run.unread(reason);
}

void WaitForPage(Publication& publication, const NativePath& topic) {
    if (publication.known.insert(topic).second) {
        publication.waiting.push_back(topic);
    }
}

void WaitForPages(Publication& publication, const std::vector<NavigationItem>& items) {
    for (const NavigationItem& item : items) {
        const auto target = item.page ? DitaTargetOf(item.href) : std::nullopt;
        if (target.has_value()) {
            WaitForPage(publication, target->path);
        }
        WaitForPages(publication, item.children);
    }
}

void CopyFile(Publication& publication, const NativePath& source, const NativePath& target) {
    if (target.Empty() || !publication.copied.insert(source).second) {
        return;
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(ToFilesystem(source), error)) {
        ReportUnread(publication, source.utf8 + ": the file is missing");
        return;
    }
    std::filesystem::create_directories(ToFilesystem(target).parent_path(), error);
    std::filesystem::copy_file(ToFilesystem(source), ToFilesystem(target),
                               std::filesystem::copy_options::overwrite_existing, error);
    if (error) {
        Fail(publication, target.utf8 + " cannot be written: " + error.message());
    }
}

std::string Anchor(const DitaTarget& target) {
    if (target.topic.empty()) {
        return {};
    }
    return "#" + target.topic + (target.element.empty() ? "" : "__" + target.element);
}

/// Makes a link to a topic lead to its page. A link to an excluded topic loses its target.
void LinkToTopic(Publication& publication, xmlNode* element, const DitaTarget& target,
                 const NativePath& page) {
    if (publication.library.Summary(target.path).excluded) {
        xmlUnsetProp(element, Xml("href"));
        return;
    }
    WaitForPage(publication, target.path);
    const NativePath targetPage = PageOf(publication.layout, target.path);
    const std::string reference =
        (targetPage == page ? "" : RelativeReference(page, targetPage)) + Anchor(target);
    const std::string href = reference.empty() ? RelativeReference(page, targetPage) : reference;
    const std::string absolute = Attribute(element, "href");
    xmlSetProp(element, Xml("href"), Xml(href.c_str()));
    const xmlNode* text = HasType(element, "topic/link") ? ChildOfType(element, "topic/linktext") : element;
    if (TextOf(text).empty()) {
        const std::string title = TitleOf(absolute, publication.library);
        xmlSetProp(element, Xml("page-title"), Xml((title.empty() ? href : title).c_str()));
    }
}

void RewriteReference(Publication& publication, xmlNode* element, const char* name, const NativePath& page) {
    const auto target = DitaTargetOf(Attribute(element, name));
    if (!target.has_value()) {
        return;
    }
    const bool link = HasType(element, "topic/xref") || HasType(element, "topic/link");
    const NativePath output = OutputOf(publication.layout, target->path);
    if (output.Empty()) {
        publication.warn(target->path.utf8 + ": is outside the folders of the document and is left out");
    } else if (link && IsTopicFormat(Attribute(element, "format"), target->path)) {
        LinkToTopic(publication, element, *target, page);
    } else {
        CopyFile(publication, target->path, output);
        xmlSetProp(element, Xml(name), Xml(RelativeReference(page, output).c_str()));
    }
}

void RewriteReferences(Publication& publication, xmlDoc* document, const NativePath& page) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type == XML_ELEMENT_NODE && node->properties != nullptr) {
            RewriteReference(publication, node, "href", page);
            RewriteReference(publication, node, "data", page);
        }
    }
}

/// The serialised page; empty, with an error in the log, if the stylesheet fails.
std::string Rendered(Publication& publication, xmlDoc* document, const NativePath& source) {
    const TransformJob job{.stylesheet = publication.stylesheet,
                           .document = document,
                           .sourcePath = source,
                           .outputPath = {},
                           .parameters = {{"language", publication.navigation.language}}};
    const Transformed result = Transform(job, publication.warn);
    if (!result.done) {
        Fail(publication, source.utf8 + ": the stylesheet failed on this topic");
    }
    return result.output;
}

void Write(Publication& publication, const NativePath& page, const std::string& content) {
    if (content.empty()) {
        return;
    }
    if (!WriteOutput(page, content)) {
        Fail(publication, page.utf8 + " cannot be written; check its permissions and the free space");
        return;
    }
    publication.written.insert(page);
    publication.run.log("page " + page.utf8);
}

struct Counter {
    const char* type;
    bool needsTitle;
    int count = 0;
};

/// Numbers footnotes, and figures and tables that have a title, in the attribute "page-number". A stylesheet
/// would have to count the preceding ones again for each.
void AddPageNumbers(xmlDoc* document) {
    Counter counters[] = {{"topic/fig", true}, {"topic/table", true}, {"topic/fn", false}};
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        for (Counter& counter : counters) {
            if (HasType(node, counter.type) &&
                (!counter.needsTitle || ChildOfType(node, "topic/title") != nullptr)) {
                xmlSetProp(node, Xml("page-number"), Xml(std::to_string(++counter.count).c_str()));
            }
        }
    }
}

/// The order matters. Reused content brings key references and links with it; keys and neighbours add links,
/// which RewriteReferences then directs to pages; page numbers count the final elements. Elements get the
/// names of their base types last, for the stylesheet alone.
void MakePage(Publication& publication, const NativePath& topic) {
    const NativePath page = PageOf(publication.layout, topic);
    if (page.Empty()) {
        publication.warn(topic.utf8 + ": is outside the folders of the document and is left out");
        return;
    }
    DitaDocument loaded = LoadDita(topic, publication.rules);
    if (loaded.document == nullptr) {
        if (!loaded.excluded) {
            ReportUnread(publication, loaded.reason);
        }
        return;
    }
    for (const std::string& remark : loaded.remarks) {
        publication.warn(remark);
    }
    xmlDoc* document = loaded.document.get();
    ResolveConrefs(document, publication.library, publication.warn);
    ResolveKeyrefs(document, publication.navigation.keys, publication.warn);
    AddNeighbours(document, publication.neighbours, topic, publication.library);
    RewriteReferences(publication, document, page);
    AddPageNumbers(document);
    NameByBaseType(document);
    Write(publication, page, Rendered(publication, document, topic));
}

void MakeIndex(Publication& publication) {
    const NativePath page{OutputOf(publication.layout, FolderOf(publication.run.document)).utf8 +
                          "index.html"};
    const XmlDocument contents = ContentsDocument(publication.navigation, publication.layout, page,
                                                  publication.written, publication.library);
    Write(publication, page, Rendered(publication, contents.get(), publication.run.document));
}

std::string MakePages(Publication& publication) {
    const DitaDocument document = LoadDita(publication.run.document, publication.rules);
    if (document.document == nullptr) {
        return document.excluded ? publication.run.document.utf8 + ": the filter excludes the whole document"
                                 : document.reason;
    }
    const bool isMap = HasType(xmlDocGetRootElement(document.document.get()), "map/map");
    if (isMap) {
        publication.navigation =
            ReadNavigation(publication.run.document, publication.rules, publication.warn);
        publication.neighbours = NeighboursIn(publication.navigation);
        WaitForPages(publication, publication.navigation.items);
    } else {
        WaitForPage(publication, publication.run.document);
    }
    while (!publication.waiting.empty()) {
        const NativePath topic = publication.waiting.front();
        publication.waiting.pop_front();
        MakePage(publication, topic);
    }
    if (publication.written.empty() && publication.failure.empty()) {
        return publication.run.document.utf8 +
               ": none of its topics could be published; see the warnings in the log";
    }
    if (isMap) {
        MakeIndex(publication);
    }
    return publication.failure;
}

}  // namespace

std::string RunBuiltinToolkit(const DitaRun& run, const NativePath& stylesheetPath) {
    Ditaval rules;
    std::string reason;
    if (!run.ditaval.Empty()) {
        auto read = ReadDitaval(run.ditaval, reason);
        if (!read.has_value()) {
            return "the filter cannot be read: " + reason;
        }
        rules = std::move(*read);
    }
    const Stylesheet stylesheet = LoadStylesheet(stylesheetPath, run.log);
    if (stylesheet == nullptr) {
        return "the stylesheet " + stylesheetPath.utf8 + " is missing or has an error";
    }
    DitaLibrary library(rules, run.unread);
    Publication publication{.run = run,
                            .rules = rules,
                            .stylesheet = stylesheet,
                            .layout = LayoutOf(run.document, run.pages),
                            .navigation = {},
                            .neighbours = {},
                            .library = library,
                            .waiting = {},
                            .known = {},
                            .copied = {},
                            .warn = {},
                            .written = {},
                            .failure = {}};
    publication.warn = [&publication](const std::string& line) {
        ++publication.warnings;
        publication.run.log("warning: " + line);
    };
    reason = MakePages(publication);
    run.log(std::to_string(publication.written.size()) + " pages, " +
            std::to_string(publication.copied.size()) + " other files, " +
            std::to_string(publication.warnings) + " warnings");
    return reason;
}

}  // namespace ventrix::desk
