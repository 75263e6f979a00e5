#include "desk/cli/loss_count.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "desk/checks/package_checks.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/option_checks.h"
#include "desk/cli/path_options.h"
#include "desk/report/report_files.h"
#include "desk/report/result_trace.h"
#include "desk/report/source_trace.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr std::size_t kScopedGroupSize = 4;

std::vector<std::string> NamesIn(const std::vector<std::string>& lists) {
    std::vector<std::string> names;
    for (const std::string& list : lists) {
        std::ranges::move(SplitList(list), std::back_inserter(names));
    }
    return names;
}

std::vector<ScopedNames> ScopedNamesIn(const std::vector<std::string>& lists) {
    const std::vector<std::string> names = NamesIn(lists);
    std::vector<ScopedNames> groups;
    for (std::size_t i = 0; i + kScopedGroupSize <= names.size(); i += kScopedGroupSize) {
        groups.push_back({names[i], names[i + 1], names[i + 2], names[i + 3]});
    }
    return groups;
}

/// The regular files below the folder, relative to it, by name.
std::vector<fs::path> FilesBelow(const NativePath& folder) {
    std::vector<fs::path> names;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(ToFilesystem(folder), error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file(error)) {
            names.push_back(entry->path().lexically_relative(ToFilesystem(folder)));
        }
    }
    std::ranges::sort(names);
    return names;
}

bool IsDecodedName(const fs::path& name) {
    return name.extension() == ".html" || name.extension() == ".htm";
}

/// The pages of a run that the module does not decode, in their own place.
void AddUndecoded(const PublishPlan& plan, std::vector<ResultFile>& files) {
    if (plan.undecoded.Empty() || IsBelowOrEqual(RealPath(plan.undecoded), RealPath(plan.output))) {
        return;
    }
    std::error_code error;
    if (fs::is_regular_file(ToFilesystem(plan.undecoded), error)) {
        files.push_back({plan.undecoded, plan.undecoded, true, false});
        return;
    }
    for (const fs::path& name : FilesBelow(plan.undecoded)) {
        const NativePath place = FromFilesystem(ToFilesystem(plan.undecoded) / name);
        if (IsDecodedName(name)) {
            files.push_back({place, place, true, false});
        }
    }
}

/// Where a file of the result is after the run, which may have moved the pages to the subfolder that the
/// document has in the package.
class FinalPlaces {
  public:
    FinalPlaces(const PublishPlan& plan, const Session& session, const NativePath& resultFolder)
        : output_(ToFilesystem(plan.output)), result_(ToFilesystem(NormalPath(resultFolder))) {
        const NativePath base = PackageLayoutOf(session.files, session.document).commonFolder;
        const fs::path depth =
            ToFilesystem(FolderOf(session.document)).lexically_relative(ToFilesystem(base));
        former_ = result_;
        if (!depth.empty() && FromFilesystem(result_).utf8.ends_with(
                                  "/" + NormalPath({"/" + FromFilesystem(depth).utf8}).utf8.substr(1))) {
            for (const fs::path& part : depth) {
                former_ = part.empty() || part == "." ? former_ : former_.parent_path();
            }
        }
    }

    NativePath Of(const NativePath& name) const {
        const fs::path place = output_ / ToFilesystem(name);
        std::error_code error;
        const fs::path below = place.lexically_relative(former_);
        const bool isMoved = !fs::exists(place, error) && !below.empty() && *below.begin() != "..";
        return FromFilesystem(isMoved ? result_ / below : place);
    }

  private:
    fs::path output_, result_, former_;
};

std::string ShortName(const PreservedItem& item) {
    switch (item.kind) {
        case ItemKind::kXPath:
            return "XPath";
        case ItemKind::kSourcePath:
            return "source path on " + item.name;
        default:
            return item.name;
    }
}

std::string ItemNames(const LossReport& report) {
    std::string names;
    for (const ItemCount& count : report.items) {
        if (count.arrived < count.places) {
            names += (names.empty() ? "" : ", ") + ShortName(count.item) + ' ' +
                     std::to_string(count.places - count.arrived);
        }
    }
    return names;
}

}  // namespace

void RequireReport(const NativePath& report, const PublishPlan& plan) {
    if (report.Empty()) {
        return;
    }
    const auto refuse = [&report](const std::string& what) {
        throw Stop{kExitUsage, "--report: " + report.utf8 + ' ' + what};
    };
    std::error_code error;
    const fs::path path = ToFilesystem(report);
    if (!IsReportName(report.utf8)) {
        refuse("must end in .html or .json");
    }
    const NativePath real = RealPath(report);
    if (IsBelowOrEqual(real, RealPath(plan.output))) {
        refuse("is in the output folder, which is replaced; choose a file outside it");
    }
    if (real == RealPath(plan.log)) {
        refuse("is the report log; choose another file");
    }
    if (!plan.outFile.Empty() && IsBelowOrEqual(real, RealPath(plan.outFile))) {
        refuse("is the output path of the transformation or in it; choose another file");
    }
    RequireNoInput("--report", report, plan.inputs);
    if (!fs::is_directory(path.parent_path(), error)) {
        refuse("is in a folder that does not exist; create it first");
    }
    if (fs::exists(path, error) && !fs::is_regular_file(path, error)) {
        refuse("is not a file; choose another name");
    }
}

Preservation PreservationOf(const PublishOptions& options) {
    Preservation preservation;
    preservation.attributes = NamesIn(options.attributes);
    preservation.elements = NamesIn(options.elements);
    preservation.queries = options.preserveXpath;
    preservation.sourcePath = NamesIn(options.sourcePath);
    preservation.scoped = ScopedNamesIn(options.scopedAttributes);
    preservation.xpath = options.xpath;
    if (!options.targetAttr.empty()) {
        preservation.tagsAttribute = options.targetAttr;
    }
    return preservation;
}

MarkerCounter::MarkerCounter(const PublishPlan& plan, const PublishOptions& options, const Session& session,
                             MarkedFolders copies)
    : plan_(plan), session_(session), copies_(std::move(copies)), preservation_(PreservationOf(options)) {}

/// A pre-script may have changed the package, of which its recorder has a copy.
void MarkerCounter::TransformationStarts() {
    if (!hasSources_ && plan_.preScript.Empty()) {
        ReadSources(plan_.output.utf8);
    } else if (!hasSources_ && AreCopied(copies_.sources)) {
        ReadSources(copies_.sources);
    }
}

/// A post-script may change the result, which its recorder then copies.
void MarkerCounter::TransformationEnds() {
    if (plan_.postScript.Empty()) {
        ReadResult(plan_.output.utf8);
    }
}

void MarkerCounter::ReadSources(const std::string& folder) {
    markers_.notCounted = ReasonOf([&] {
        const NativePath base = PackageLayoutOf(session_.files, session_.document).commonFolder;
        sourceNames_ = XmlFilesBelow(folder);
        std::vector<EncodedFile> files;
        for (const fs::path& name : sourceNames_) {
            files.push_back(
                {FromFilesystem(ToFilesystem({folder}) / name), FromFilesystem(ToFilesystem(base) / name)});
        }
        markers_.sources =
            TraceSources(files, preservation_, PreservedItems(preservation_), markers_.strings);
        hasSources_ = true;
        return std::string();
    });
}

void MarkerCounter::ReadResult(const std::string& folder) {
    if (!hasSources_ || hasResult_) {
        return;
    }
    markers_.notCounted = ReasonOf([&] {
        std::vector<ResultFile> files;
        for (const fs::path& name : MarkedFilesBelow(folder, sourceNames_)) {
            const bool isOutFile = plan_.output.utf8 + '/' + FromFilesystem(name).utf8 == plan_.outFile.utf8;
            const bool isPage = IsDecodedName(name) || name.extension() == ".xhtml" || isOutFile;
            files.push_back({FromFilesystem(ToFilesystem({folder}) / name), FromFilesystem(name), isPage,
                             IsDecodedName(name)});
        }
        AddUndecoded(plan_, files);
        markers_.result = TraceResult(files, preservation_, markers_.strings);
        hasResult_ = true;
        return std::string();
    });
}

CountedMarkers MarkerCounter::Finish(const RunLog& log) {
    if (!hasSources_ && AreCopied(copies_.sources)) {
        ReadSources(copies_.sources);
    }
    if (AreCopied(copies_.result)) {
        ReadResult(copies_.result);
    }
    if (!hasResult_ && markers_.notCounted.empty()) {
        markers_.notCounted =
            "the files with marker text could not be copied; check the free space in the folder for "
            "temporary "
            "files";
    }
    const std::string folder = plan_.output.utf8 + '/';
    for (const FailedFile& failed : log.failed) {
        if (failed.file.utf8.starts_with(folder)) {
            MarkUndecoded({failed.file.utf8.substr(folder.size())}, markers_.strings, markers_.result);
        }
    }
    return std::move(markers_);
}

std::vector<VisibleMarker> PlacedTexts(const std::vector<BrokenText>& texts, const CountedMarkers& markers,
                                       const PublishPlan& plan, const Session& session,
                                       const NativePath& resultFolder) {
    const FinalPlaces places(plan, session, resultFolder);
    std::vector<VisibleMarker> placed;
    for (const BrokenText& text : texts) {
        const NativePath& name = markers.result.pages[static_cast<std::size_t>(text.page)];
        placed.push_back({places.Of(name), text.line, 0, text.shown});
    }
    return placed;
}

LossReport LossOf(CountedMarkers markers, const PublishPlan& plan, const PublishOptions& options,
                  const Session& session, const NativePath& resultFolder,
                  const std::vector<ReportedPage>& pages) {
    std::map<NativePath, NativePath> sourceOf;
    for (const ReportedPage& page : pages) {
        sourceOf.emplace(page.page, page.source);
    }
    const FinalPlaces places(plan, session, resultFolder);
    std::vector<std::pair<NativePath, NativePath>> files;
    for (const NativePath& name : markers.result.pages) {
        const NativePath place = places.Of(name);
        const auto known = sourceOf.find(place);
        files.emplace_back(place, known == sourceOf.end() ? NativePath{} : known->second);
    }
    LossReport report = MakeLossReport(std::move(markers.sources), markers.result, markers.strings,
                                       PreservedItems(PreservationOf(options)), files);
    report.notCounted = pages.empty() ? "the run wrote no pages" : markers.notCounted;
    report.document = session.document;
    report.resultFolder = resultFolder;
    report.toolkit = plan.toolkit;
    return report;
}

std::vector<std::string> IdleQueries(const LossReport& report) {
    std::vector<std::string> queries;
    for (const ItemCount& count : report.items) {
        if (report.notCounted.empty() && count.item.kind == ItemKind::kQuery && count.places == 0) {
            queries.push_back(count.item.name);
        }
    }
    return queries;
}

void PrintLoss(const LossReport& report, const NativePath& file, const Screen& screen) {
    const std::string named = file.Empty() ? "--report FILE lists them" : "see " + file.utf8;
    if (!report.notCounted.empty()) {
        screen.Result("preserved: not counted: " + report.notCounted);
        return;
    }
    const std::size_t places = PlacesOf(report);
    const std::size_t lost = LostOf(report);
    screen.Result("preserved: " + std::to_string(places - lost) + " of " + std::to_string(places) +
                  (places == 1 ? " place" : " places"));
    if (lost == 0) {
        screen.Result("lost:      0" + (file.Empty() ? std::string() : "; see " + file.utf8));
    } else {
        screen.Result("lost:      " + std::to_string(lost) + " (" + ItemNames(report) + "); " + named);
    }
}

}  // namespace ventrix::desk
