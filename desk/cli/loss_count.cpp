#include "desk/cli/loss_count.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

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
std::vector<fs::path> FilesBelow(const std::string& folder) {
    std::vector<fs::path> names;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file(error)) {
            names.push_back(entry->path().lexically_relative(folder));
        }
    }
    std::ranges::sort(names);
    return names;
}

bool IsDecodedName(const fs::path& name) {
    return name.extension() == ".html" || name.extension() == ".htm";
}

std::vector<EncodedFile> EncodedFiles(const MarkedFolders& copies, const NativePath& commonFolder) {
    std::vector<EncodedFile> files;
    for (const fs::path& name : FilesBelow(copies.sources)) {
        files.push_back({FromFilesystem(fs::path(copies.sources) / name),
                         FromFilesystem(ToFilesystem(commonFolder) / name)});
    }
    return files;
}

std::vector<ResultFile> ResultFiles(const MarkedFolders& copies, const PublishPlan& plan, const RunLog& log) {
    std::set<NativePath> undecoded;
    for (const FailedFile& failed : log.failed) {
        undecoded.insert(failed.file);
    }
    std::vector<ResultFile> files;
    for (const fs::path& name : FilesBelow(copies.result)) {
        const NativePath place = FromFilesystem(ToFilesystem(plan.output) / name);
        const bool isPage = IsDecodedName(name) || name.extension() == ".xhtml" || place == plan.outFile;
        files.push_back({FromFilesystem(fs::path(copies.result) / name), FromFilesystem(name), isPage,
                         IsDecodedName(name) && !undecoded.contains(place)});
    }
    return files;
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
    for (const fs::path& name : FilesBelow(plan.undecoded.utf8)) {
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
        if (!depth.empty() && result_.string().ends_with("/" + NormalPath({"/" + depth.string()}).utf8.substr(1))) {
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

std::string ItemNames(const LossReport& report) {
    std::string names;
    for (const ItemCount& count : report.items) {
        if (count.arrived < count.places) {
            names += (names.empty() ? "" : ", ") + (count.item.name.empty() ? "XPath" : count.item.name) + ' ' +
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
    if (!fs::is_directory(path.parent_path(), error)) {
        refuse("is in a folder that does not exist; create it first");
    }
    if (fs::exists(path, error) && !fs::is_regular_file(path, error)) {
        refuse("is not a file; choose another name");
    }
    RequireNoInput("--report", report, plan.inputs);
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

CountedMarkers CountMarkers(const MarkedFolders& copies, const PublishPlan& plan,
                            const PublishOptions& options, const Session& session, const RunLog& log) {
    CountedMarkers markers;
    if (!AreCopied(copies)) {
        markers.notCounted =
            "the marker text could not be copied for it; check the free space in the folder for temporary files";
        return markers;
    }
    const Preservation preservation = PreservationOf(options);
    const PreservedItems items(preservation);
    const NativePath base = PackageLayoutOf(session.files, session.document).commonFolder;
    markers.sources = TraceSources(EncodedFiles(copies, base), preservation, items, markers.strings);
    std::vector<ResultFile> files = ResultFiles(copies, plan, log);
    AddUndecoded(plan, files);
    markers.result = TraceResult(files, preservation, markers.strings);
    markers.notCounted.clear();
    return markers;
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
