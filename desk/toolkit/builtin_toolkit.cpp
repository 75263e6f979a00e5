#include "desk/toolkit/builtin_toolkit.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <set>

#include "desk/documents/document_files.h"
#include "desk/toolkit/contents.h"
#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_map.h"
#include "desk/toolkit/dita_references.h"
#include "desk/toolkit/link_check.h"
#include "desk/toolkit/page_frame.h"
#include "desk/toolkit/page_layout.h"
#include "desk/toolkit/page_navigation.h"
#include "desk/toolkit/subject_scheme.h"
#include "desk/toolkit/unhandled.h"
#include "platform/native_files.h"

namespace ventrix::desk {
namespace {

/// The state of a run. It goes through three stages. First, the map gives the navigation, the keys and the
/// topics that wait for a page. Then each waiting topic becomes a page (MakePage); a link to a topic that the
/// map does not name makes that topic wait too, so the list grows until every topic that can be reached has
/// its page. Last, the table of contents becomes the start page of a map.
struct Publication {
    const DitaRun& run;
    const DitaSources& sources;
    const Stylesheet& stylesheet;
    PageLayout layout;
    Navigation navigation;
    PageNeighbours neighbours;
    Contents contents;
    PageAssets assets;
    DitaLibrary& library;
    LinkCheck links;
    std::deque<NativePath> waiting;
    std::set<NativePath> known;   ///< Topics that wait or have their page.
    std::set<NativePath> copied;  ///< The targets.
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

/// What a page lacks: a warning in the log and a finding.
void Remark(Publication& publication, const NativePath& topic, long line, const char* rule,
            const std::string& text) {
    publication.warn(topic.utf8 + (line > 0 ? ": line " + std::to_string(line) : std::string()) + ": " +
                     text);
    publication.run.finding({topic, static_cast<int>(line), text, rule});
}

void WaitForPage(Publication& publication, const NativePath& topic) {
    if (publication.known.insert(topic).second) {
        AssignPage(publication.layout, topic);
        publication.waiting.push_back(topic);
    }
}

void CopyFile(Publication& publication, const NativePath& source, const NativePath& target) {
    if (target.Empty() || !publication.copied.insert(target).second) {
        return;
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(ToFilesystem(source), error)) {
        ReportUnread(publication, source.utf8 + ": the file is missing");
        return;
    }
    if (!publication.run.writes) {
        return;
    }
    std::filesystem::create_directories(ToFilesystem(target).parent_path(), error);
    error = platform::CopyReplacing(ToFilesystem(source), ToFilesystem(target));
    if (error) {
        Fail(publication, target.utf8 + " cannot be written: " + error.message());
    }
}

/// The map's topics wait for their pages; its other files are copied if the contents show them.
void TakeItems(Publication& publication, const std::vector<NavigationItem>& items) {
    for (const NavigationItem& item : items) {
        const auto target = DitaTargetOf(item.href);
        if (target.has_value() && item.page) {
            WaitForPage(publication, target->path);
        } else if (target.has_value() && item.shown) {
            CopyFile(publication, target->path, OutputOf(publication.layout, target->path));
        }
        TakeItems(publication, item.children);
    }
}

/// The fragment that leads to the target in its page.
std::string Anchor(Publication& publication, const DitaTarget& target) {
    const std::string topic = target.topic.empty() && !target.element.empty()
                                  ? publication.library.Summary(target.path).topicId
                                  : target.topic;
    if (topic.empty()) {
        return {};
    }
    return topic + (target.element.empty() ? "" : "__" + target.element);
}

/// Makes a link to a topic lead to its page. A link to an excluded topic loses its target.
void LinkToTopic(Publication& publication, xmlNode* element, const DitaTarget& target,
                 const NativePath& topic) {
    if (publication.library.Summary(target.path).excluded) {
        xmlUnsetProp(element, Xml("href"));
        return;
    }
    WaitForPage(publication, target.path);
    const NativePath page = PageOf(publication.layout, topic);
    const NativePath targetPage = PageOf(publication.layout, target.path);
    const std::string anchor = Anchor(publication, target);
    const std::string fragment = anchor.empty() ? "" : "#" + anchor;
    const std::string reference = (targetPage == page ? "" : RelativeReference(page, targetPage)) + fragment;
    const std::string href = reference.empty() ? RelativeReference(page, targetPage) : reference;
    const std::string absolute = Attribute(element, "href");
    const std::string written = AsWritten(element->doc, absolute);
    publication.links.Add({topic, xmlGetLineNo(element), targetPage, anchor, written});
    xmlSetProp(element, Xml("href"), Xml(href.c_str()));
    const xmlNode* text = HasType(element, "topic/link") ? ChildOfType(element, "topic/linktext") : element;
    if (TextOf(text).empty() && xmlHasProp(element, Xml("page-title")) == nullptr) {
        std::string title = TitleOf(absolute, publication.library);
        if (title.empty()) {
            Remark(
                publication, topic, xmlGetLineNo(element), kNotHandled,
                "the link \"" + written +
                    "\" has no text and its target no title, so that it shows the title of the topic; write "
                    "a text into the link");
            title = publication.library.Summary(target.path).title;
        }
        xmlSetProp(element, Xml("page-title"), Xml((title.empty() ? href : title).c_str()));
    }
}

/// Phrases with a key link to its target too.
bool IsLink(const xmlNode* element) {
    return HasType(element, "topic/xref") || HasType(element, "topic/link") ||
           (xmlHasProp(element, Xml("keyref")) != nullptr && !HasType(element, "topic/image"));
}

/// Whether no page shows the element.
bool IsMetadata(const xmlNode* element) {
    for (; element != nullptr && element->type == XML_ELEMENT_NODE; element = element->parent) {
        if (HasType(element, "topic/prolog") || HasType(element, "topic/data") ||
            HasType(element, "topic/data-about")) {
            return true;
        }
    }
    return false;
}

/// A topic is published as a page only: its file may contain what a filter excludes.
void LeaveOutTopic(Publication& publication, xmlNode* element, const NativePath& topic) {
    const bool isReported = HasType(element, "topic/lq") || HasType(element, "topic/longdescref") ||
                            HasType(element, "topic/longquoteref");
    if (!isReported && !IsMetadata(element)) {
        Remark(publication, topic, xmlGetLineNo(element), kNotHandled,
               "the link \"" + AsWritten(element->doc, Attribute(element, "href")) + "\" of <" +
                   std::string(View(element->name)) + "> to a topic is not handled: it is left out");
    }
    xmlUnsetProp(element, Xml("href"));
}

void RewriteReference(Publication& publication, xmlNode* element, const char* name, const NativePath& topic) {
    const auto target = DitaTargetOf(Attribute(element, name));
    const std::string scope = Attribute(element, "scope");
    if (!target.has_value() || scope == "external" || scope == "peer") {
        return;
    }
    const NativePath output = OutputOf(publication.layout, target->path);
    if (output.Empty()) {
        publication.warn(target->path.utf8 + ": is outside the folders of the document and is left out");
    } else if (IsLink(element) && IsTopicFormat(Attribute(element, "format"), target->path)) {
        LinkToTopic(publication, element, *target, topic);
    } else if (std::string_view(name) == "href" &&
               IsTopicFormat(Attribute(element, "format"), target->path)) {
        LeaveOutTopic(publication, element, topic);
    } else {
        CopyFile(publication, target->path, output);
        xmlSetProp(element, Xml(name),
                   Xml(RelativeReference(PageOf(publication.layout, topic), output).c_str()));
    }
}

void RewriteReferences(Publication& publication, xmlDoc* document, const NativePath& topic) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type == XML_ELEMENT_NODE && node->properties != nullptr) {
            RewriteReference(publication, node, "href", topic);
            RewriteReference(publication, node, "data", topic);
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
    // A stylesheet cannot write this form of the declaration.
    return result.output.empty() ? std::string() : "<!DOCTYPE html>\n" + result.output;
}

void Write(Publication& publication, const NativePath& page, const std::string& content) {
    if (content.empty()) {
        return;
    }
    if (publication.run.writes && !WriteOutput(page, content)) {
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

/// What the head of a topic's page says, when its references are resolved.
FramedPage FramedTopic(const xmlDoc* document, const NativePath& topic, const NativePath& page) {
    const xmlNode* first = FirstTopic(document);
    std::string title = PlainText(ShownText(ChildOfType(first, "topic/title")));
    if (title.empty()) {
        title = FromFilesystem(ToFilesystem(topic).stem()).utf8;
    }
    return {page, std::move(title), PlainText(ShownText(ShortDescriptionOf(first)))};
}

/// The order matters. Reused content brings key references, samples and links with it; keys and neighbours
/// add links, which RewriteReferences then directs to pages; page numbers count the final elements. Elements
/// get the names of their base types last, for the stylesheet alone.
void MakePage(Publication& publication, const NativePath& topic) {
    const NativePath page = PageOf(publication.layout, topic);
    if (page.Empty()) {
        publication.warn(topic.utf8 + ": is outside the folders of the document and is left out");
        return;
    }
    DitaDocument loaded = LoadDita(topic, publication.sources);
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
    const RemarkSink remarks = [&](long line, const char* rule, const std::string& text) {
        Remark(publication, topic, line, rule, text);
    };
    ReportUnhandled(document, topic, publication.run.finding);
    ResolveConrefs(document, publication.navigation.keys, publication.library, remarks);
    ResolveKeyrefs(document, publication.navigation.keys, publication.library, remarks);
    ResolveCoderefs(document, remarks);
    AddNeighbours(document, publication.neighbours, topic, publication.library);
    RewriteReferences(publication, document, topic);
    AddPageNumbers(document);
    AddPageFrame(document, FramedTopic(document, topic, page), publication.contents, publication.assets);
    NameByBaseType(document);
    const std::string content = Rendered(publication, document, topic);
    publication.links.AddPage(page, content);
    Write(publication, page, content);
}

void MakeStartPage(Publication& publication) {
    const ContentsEntry& start = publication.contents.entries.front();
    const XmlDocument document = ContentsDocument(publication.contents);
    AddPageFrame(document.get(), {start.page, start.label, {}}, publication.contents, publication.assets);
    Write(publication, start.page, Rendered(publication, document.get(), publication.run.document));
}

void CopyAssets(Publication& publication) {
    const auto copy = [&publication](const PageAsset& asset) {
        CopyFile(publication, asset.source, asset.target);
    };
    std::ranges::for_each(publication.assets.styleSheets, copy);
    std::ranges::for_each(publication.assets.logo, copy);
    copy(publication.assets.script);
}

std::string TitleOr(const Publication& publication, const std::string& title) {
    if (!publication.run.design.title.empty()) {
        return publication.run.design.title;
    }
    return title.empty() ? FromFilesystem(ToFilesystem(publication.run.document).stem()).utf8 : title;
}

void ReadMap(Publication& publication) {
    publication.navigation = ReadNavigation(publication.run.document, publication.library, publication.run);
    publication.library.UseKeys(publication.navigation.keys);
    publication.neighbours = NeighboursIn(publication.navigation);
    TakeItems(publication, publication.navigation.items);
    PageLayout& layout = publication.layout;
    const NativePath startPage =
        FreePage(layout, {OutputOf(layout, FolderOf(publication.run.document)).utf8 + "index.html"});
    layout.taken.insert(startPage);
    publication.contents =
        ContentsOfMap(publication.navigation, layout, startPage,
                      TitleOr(publication, publication.navigation.title), publication.library);
}

void ReadTopic(Publication& publication) {
    const NativePath& topic = publication.run.document;
    WaitForPage(publication, topic);
    publication.contents = ContentsOfTopic(PageOf(publication.layout, topic),
                                           TitleOr(publication, publication.library.Summary(topic).title));
}

std::string MakePages(Publication& publication) {
    const DitaDocument document = LoadDita(publication.run.document, publication.sources);
    if (document.document == nullptr) {
        return document.excluded ? publication.run.document.utf8 + ": the filter excludes the whole document"
                                 : document.reason;
    }
    const bool isMap = HasType(xmlDocGetRootElement(document.document.get()), "map/map");
    if (isMap) {
        ReadMap(publication);
    } else {
        ReadTopic(publication);
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
        MakeStartPage(publication);
    }
    CopyAssets(publication);
    for (const DeadLink& link : publication.links.DeadLinks(publication.written)) {
        Remark(publication, link.topic, link.line, kBrokenLink, link.problem);
    }
    return publication.failure;
}

/// False, with the reason, if a filter cannot be used: nothing is published without it.
bool ReadRules(const DitaRun& run, Ditaval& rules, std::string& reason) {
    for (const NativePath& filter : run.filters) {
        auto read = ReadDitaval(filter, reason);
        if (!read.has_value()) {
            reason = "the filter cannot be used: " + reason;
            return false;
        }
        if (read->firstFlag > 0) {
            run.finding({filter, read->firstFlag,
                         "flagging is not handled: what the rule flags is published without a flag; the DITA "
                         "Open Toolkit handles it (--toolkit)",
                         kNotHandled});
        }
        rules.excludes.merge(read->excludes);
    }
    if (!rules.excludes.empty()) {
        ApplyScheme(ReadSubjectScheme(run.document), rules);
    }
    return true;
}

std::vector<NativePath> FilesOf(const DitaRun& run) {
    return run.copies.files.empty() ? LocalFiles(ListDocumentFiles(run.document)) : run.copies.files;
}

}  // namespace

std::string RunBuiltinToolkit(const DitaRun& run, const NativePath& stylesheetPath) {
    DitaSources sources;
    sources.copies = run.copies;
    std::string reason;
    if (!ReadRules(run, sources.rules, reason)) {
        return reason;
    }
    const Stylesheet stylesheet = LoadStylesheet(stylesheetPath, run.log);
    if (stylesheet == nullptr) {
        return "the stylesheet " + stylesheetPath.utf8 + " is missing or has an error";
    }
    DitaLibrary library(sources, run.unread);
    Publication publication{.run = run,
                            .sources = sources,
                            .stylesheet = stylesheet,
                            .layout = LayoutOf(run.document, FilesOf(run), run.pages),
                            .navigation = {},
                            .neighbours = {},
                            .contents = {},
                            .assets = {},
                            .library = library,
                            .links = {},
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
    publication.assets = AssetsFor(run.design, publication.layout, FolderOf(stylesheetPath));
    reason = MakePages(publication);
    run.log(std::to_string(publication.written.size()) + " pages, " +
            std::to_string(publication.copied.size()) + " other files, " +
            std::to_string(publication.warnings) + " warnings");
    return reason;
}

}  // namespace ventrix::desk
