#include "desk/toolkit/builtin_toolkit.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <set>

#include "desk/documents/document_files.h"
#include "desk/toolkit/coderef.h"
#include "desk/toolkit/conref.h"
#include "desk/toolkit/contents.h"
#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_map.h"
#include "desk/toolkit/keyref.h"
#include "desk/toolkit/map_links.h"
#include "desk/toolkit/page_frame.h"
#include "desk/toolkit/page_layout.h"
#include "desk/toolkit/page_numbers.h"
#include "desk/toolkit/page_references.h"
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
    MapLinks mapLinks;
    Contents contents;
    PageAssets assets;
    DitaLibrary& library;
    LinkTexts texts;
    LinkCheck links;
    std::deque<NativePath> waiting;
    std::set<NativePath> known;                    ///< Topics that wait or have their page.
    std::map<NativePath, TopicMetadata> metadata;  ///< Of the first reference to each topic of the map.
    std::set<NativePath> copied;                   ///< The targets.
    MessageSink warn;
    std::set<NativePath> written;     ///< Pages.
    std::set<std::string> remarks;    ///< What is reported, to report it once.
    std::set<std::string> languages;  ///< Likewise, those without words.
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

/// What a page lacks: a warning in the log and a finding. Content that several pages reuse is reported once.
void Remark(Publication& publication, const DitaFinding& finding) {
    const std::string line = finding.line > 0 ? ": line " + std::to_string(finding.line) : std::string();
    const std::string remark = finding.file.utf8 + line + ": " + finding.text;
    if (publication.remarks.insert(remark).second) {
        publication.warn(remark);
        publication.run.finding(finding);
    }
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
            publication.metadata.insert({target->path, item.metadata});
            WaitForPage(publication, target->path);
        } else if (target.has_value() && item.shown) {
            CopyFile(publication, target->path, OutputOf(publication.layout, target->path));
        }
        TakeItems(publication, item.children);
    }
}

/// A relationship table may name topics that the filter excludes from the rest of the map.
void ReportExcludedTopics(Publication& publication, const std::vector<NavigationItem>& items) {
    for (const NavigationItem& item : items) {
        const auto target = item.page ? DitaTargetOf(item.href) : std::nullopt;
        if (target.has_value() && publication.navigation.excludedTopics.erase(target->path) > 0) {
            Remark(publication,
                   {publication.run.document, 0,
                    target->path.utf8 +
                        " is published because a relationship table names it, although the filter (" +
                        publication.sources.filterNames +
                        ") excludes its topic reference; exclude it in the table too"});
        }
        ReportExcludedTopics(publication, item.children);
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

/// What the head of a topic's page says, when its references are resolved.
FramedPage FramedTopic(const Publication& publication, const xmlDoc* document, const NativePath& topic) {
    const xmlNode* first = FirstTopic(document);
    std::string title = PlainText(ShownText(ChildOfType(first, "topic/title")));
    if (title.empty()) {
        title = FromFilesystem(ToFilesystem(topic).stem()).utf8;
    }
    const auto known = publication.metadata.find(topic);
    const TopicMetadata inMap = known == publication.metadata.end() ? TopicMetadata() : known->second;
    const xmlNode* alternatives = ChildOfType(first, "topic/titlealts");
    std::string searchTitle = PlainText(inMap.searchTitle);
    if (searchTitle.empty()) {
        searchTitle = PlainText(ShownText(ChildOfType(alternatives, "topic/searchtitle")));
    }
    return {PageOf(publication.layout, topic), title, searchTitle.empty() ? title : std::move(searchTitle),
            PlainText(ShownText(ShortDescriptionOf(first))), MetadataOfPage(first, inMap)};
}

ReferenceTargets TargetsOf(Publication& publication, const RemarkSink& remarks) {
    return {.layout = publication.layout,
            .library = publication.library,
            .texts = publication.texts,
            .check = publication.links,
            .excludedTopics = publication.navigation.excludedTopics,
            .remarks = remarks,
            .needPage = [&publication](const NativePath& topic) { WaitForPage(publication, topic); },
            .copy = [&publication](const NativePath& source,
                                   const NativePath& target) { CopyFile(publication, source, target); }};
}

/// The order matters. Reused content brings key references, samples and links with it; keys and the map
/// add links, which DirectReferences then directs to pages.
void ResolveReferences(Publication& publication, xmlDoc* document, const NativePath& topic) {
    const RemarkSink remarks = [&publication](const xmlNode* place, const char* rule, const std::string& text,
                                              const Subject& subject) {
        Remark(publication, {SourceOf(place), static_cast<int>(xmlGetLineNo(place)), text, rule, subject});
    };
    ResolveConrefs(document, &publication.navigation.keys, publication.library, remarks);
    ReportUnhandled(document, remarks);
    ReportLanguages(document, publication.navigation.language, publication.languages, remarks);
    ResolveKeyrefs(document, publication.navigation.keys, publication.library, remarks);
    ResolveCoderefs(document, remarks);
    AddMapLinks(document, publication.mapLinks, topic, publication.library);
    DirectReferences(document, topic, TargetsOf(publication, remarks));
}

/// Null if the topic has no page: with a remark, unless a filter excludes it.
XmlDocument LoadTopic(Publication& publication, const NativePath& topic) {
    if (PageOf(publication.layout, topic).Empty()) {
        Remark(publication, {topic, 0, "the topic is outside the folders of the document and is left out"});
        return nullptr;
    }
    DitaDocument loaded = LoadDita(topic, publication.sources);
    if (loaded.document == nullptr && !loaded.excluded) {
        ReportUnread(publication, loaded.reason);
    }
    for (const std::string& remark : loaded.remarks) {
        publication.warn(remark);
    }
    return std::move(loaded.document);
}

/// Page numbers count the final elements. Elements get the names of their base types last, for the stylesheet
/// alone.
void MakePage(Publication& publication, const NativePath& topic) {
    const XmlDocument loaded = LoadTopic(publication, topic);
    xmlDoc* document = loaded.get();
    if (document == nullptr) {
        return;
    }
    const NativePath page = PageOf(publication.layout, topic);
    ResolveReferences(publication, document, topic);
    AddPageNumbers(document);
    AddPageFrame(document, FramedTopic(publication, document, topic), publication.contents,
                 publication.assets);
    NameByBaseType(document);
    const std::string content = Rendered(publication, document, topic);
    publication.links.AddPage(page, content);
    Write(publication, page, content);
}

void MakeStartPage(Publication& publication) {
    const ContentsEntry& start = publication.contents.entries.front();
    const std::string problem = LanguageProblem(publication.navigation.language, publication.languages);
    if (!problem.empty()) {
        Remark(publication, {publication.run.document, 0, problem, kNotHandled});
    }
    const XmlDocument document = ContentsDocument(publication.contents);
    AddPageFrame(document.get(), {start.page, start.label, start.label, {}, {}}, publication.contents,
                 publication.assets);
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
    publication.mapLinks = MapLinksOf(publication.navigation);
    TakeItems(publication, publication.navigation.items);
    std::erase_if(publication.navigation.excludedTopics,
                  [&publication](const NativePath& topic) { return publication.known.contains(topic); });
    for (const Relation& relation : publication.navigation.relations) {
        ReportExcludedTopics(publication, relation.cells);
        TakeItems(publication, relation.cells);
    }
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

/// What a message about a dead link adds if the filter excludes its target.
std::string ExclusionOf(const Publication& publication, const DitaTarget& target) {
    DitaLibrary& library = publication.library;
    if (!library.Summary(target.path).readable || !library.IsExcluded(target)) {
        return {};
    }
    return ", because the filter (" + publication.sources.filterNames +
           ") excludes its target; exclude the link too";
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
        return publication.run.document.utf8 + ": none of its topics could be published; see the warnings";
    }
    if (isMap) {
        MakeStartPage(publication);
    }
    CopyAssets(publication);
    for (const auto& [link, problem] : publication.links.DeadLinks(publication.written)) {
        Remark(publication, {link.topic, link.line, problem + ExclusionOf(publication, link.target),
                             kBrokenLink, link.reference});
    }
    return publication.failure;
}

/// False, with the reason, if a filter cannot be used: nothing is published without it.
bool ReadRules(const DitaRun& run, DitaSources& sources, std::string& reason) {
    Ditaval& rules = sources.rules;
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
        sources.filterNames +=
            (sources.filterNames.empty() ? "" : ", ") + FromFilesystem(ToFilesystem(filter).filename()).utf8;
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
    if (!ReadRules(run, sources, reason)) {
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
                            .mapLinks = {},
                            .contents = {},
                            .assets = {},
                            .library = library,
                            .texts = {library, publication.navigation.keys},
                            .links = {},
                            .waiting = {},
                            .known = {},
                            .metadata = {},
                            .copied = {},
                            .warn = {},
                            .written = {},
                            .remarks = {},
                            .languages = {},
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
