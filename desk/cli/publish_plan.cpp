#include "desk/cli/publish_plan.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string_view>

#include "desk/cli/document_checks.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/installation.h"
#include "desk/cli/loss_count.h"
#include "desk/cli/option_checks.h"
#include "desk/cli/path_options.h"
#include "desk/clients/saxon.h"
#include "desk/toolkit/installed_toolkit.h"
#include "desk/xml/stylesheet.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

bool WantsDitaRun(const PublishOptions& publish, const Session& session) {
    if (!AsksForDitaTransformation(publish)) {
        return false;
    }
    RefuseToolkitProject(session.document);
    if (!publish.ditaOt && !session.files.dita) {
        throw Stop{kExitUsage, session.document.utf8 +
                                   " is not a DITA document; choose --xslt, --post-script or --no-transform"};
    }
    return true;
}

/// The engine for the stylesheet, once it is known to be there. Throws Stop if it is not.
std::string ChooseEngine(const NativePath& stylesheet, const std::string& named) {
    if (stylesheet.Empty()) {
        return {};
    }
    const std::string version = VersionOf(stylesheet);
    std::string engine = !named.empty() ? named : IsNewerVersion(version) ? "saxon" : "libxslt";
    if (engine == "saxon" && SaxonProblem().empty()) {
        return engine;
    }
    if (engine == "saxon") {
        throw Stop{kExitTransformation,
                   "the stylesheet " + stylesheet.utf8 + " is XSLT " + version + ": " + SaxonProblem()};
    }
    return engine;
}

/// The files of the stylesheet, with those that it imports and includes; those of Saxon's are not known.
std::vector<NativePath> CheckStylesheet(const NativePath& path, const std::string& engine) {
    if (path.Empty() || engine != "libxslt") {
        return {};
    }
    std::string first;
    const auto keepFirst = [&first](const std::string& line) { first = first.empty() ? line : first; };
    const Stylesheet stylesheet = LoadStylesheet(path, keepFirst);
    if (stylesheet == nullptr) {
        throw Stop{kExitTransformation,
                   "the stylesheet " + path.utf8 + " cannot be used" + (first.empty() ? "" : ": " + first)};
    }
    return FilesOf(stylesheet.get());
}

/// Refuses what only the DITA Open Toolkit, or only the built-in toolkit, understands where another
/// transformation runs.
void CheckToolkitOptions(const Options& options, bool ditaOt) {
    const bool builtIn = options.common.toolkit == "builtin";
    const auto require = [](const char* option, bool fits, const char* advice) {
        if (!fits) {
            throw Stop{kExitUsage, std::string(option) + " has no effect without " + advice};
        }
    };
    const auto requireInstalled = [&](const char* option, bool given) {
        require(option, !given || (ditaOt && !builtIn),
                "an installed toolkit; add --toolkit installed or --toolkit FOLDER");
    };
    const auto requireBuiltIn = [&](const char* option, const std::string& value) {
        require(option, value.empty() || (ditaOt && builtIn),
                "the built-in toolkit; remove it, or publish as DITA with --toolkit builtin");
    };
    requireInstalled("--resource", !options.common.resources.empty());
    requireInstalled("--transtype", !options.publish.transtype.empty());
    requireInstalled("--toolkit-param", !options.publish.toolkitParams.empty());
    requireBuiltIn("--title", options.publish.title);
    requireBuiltIn("--css", options.publish.css);
    requireBuiltIn("--logo", options.publish.logo);
}

/// Whether the content begins as that of one of the formats, or contains a drawing. What is in UTF-16 may be
/// one.
bool IsImage(std::string_view content) {
    using namespace std::string_view_literals;
    constexpr std::string_view kStarts[] = {"\x89PNG"sv, "\xFF\xD8\xFF"sv, "GIF8"sv,
                                            "RIFF"sv,    "\xFF\xFE"sv,     "\xFE\xFF"sv};
    return std::ranges::any_of(kStarts, [&](std::string_view start) { return content.starts_with(start); }) ||
           (content.size() > 8 && content.substr(4, 4) == "ftyp") ||
           content.find("<svg") != std::string_view::npos || content.find(":svg") != std::string_view::npos;
}

/// Throws Stop if a browser does not show the file as an image.
void RequireImage(const char* option, const NativePath& file) {
    constexpr std::string_view kExtensions[] = {".svg", ".png", ".jpg", ".jpeg", ".gif", ".webp", ".avif"};
    RequireFile(option, file);
    std::string extension = FromFilesystem(ToFilesystem(file).extension()).utf8;
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (!file.Empty() && std::ranges::find(kExtensions, extension) == std::end(kExtensions)) {
        throw Stop{kExitUsage, std::string(option) + ": " + file.utf8 +
                                   " is not an image that browsers show (expected .svg, .png, .jpg, .jpeg, "
                                   ".gif, .webp or .avif)"};
    }
    std::string content;
    if (!file.Empty() && platform::ReadWholeFile(file.utf8, content) == platform::kErrorNone &&
        !IsImage(content)) {
        throw Stop{kExitUsage, std::string(option) + ": " + file.utf8 +
                                   " does not contain an image, although its name says so"};
    }
}

PageDesign DesignOf(const PublishOptions& publish) {
    RequireFile("--css", {publish.css});
    RequireImage("--logo", {publish.logo});
    return {.title = publish.title,
            .styleSheet = AbsolutePath({publish.css}),
            .logo = AbsolutePath({publish.logo})};
}

void CheckToolkit(const PublishPlan& plan, const std::string& toolkit) {
    const std::string problem =
        plan.ditaOt && toolkit != "builtin" ? ToolkitProblem(ToolkitName(toolkit)) : std::string();
    if (!problem.empty()) {
        throw Stop{kExitTransformation, problem};
    }
}

/// True if decoding, which takes pages below the output folder, reaches what is written to the output path.
bool IsDecoded(const PublishPlan& plan) {
    const std::string& name = plan.outFile.utf8;
    const bool isPage = plan.ditaOt || name.ends_with(".html") || name.ends_with(".htm");
    return isPage && IsBelowOrEqual(RealPath(plan.outFile), RealPath(plan.output));
}

void CheckPlaces(const PublishPlan& plan) {
    RequireLog(plan.log, plan.inputs);
    // A root holds every file, and is refused as the output folder later.
    const bool isRoot = ToFilesystem(plan.output).filename().empty();
    if (!isRoot && IsBelowOrEqual(RealPath(plan.log), RealPath(plan.output))) {
        throw Stop{kExitUsage, "--log: " + plan.log.utf8 +
                                   " is in the output folder, which is replaced; choose a file outside it"};
    }
    RequireNoInput("--out-file", plan.outFile, plan.inputs);
    RequireReport(plan.report, plan);
}

std::vector<NativePath> Inputs(const PublishPlan& plan, const Session& session) {
    const Installation own = FindInstallation();
    std::vector<NativePath> inputs{session.document, plan.xslt,  plan.preScript,         plan.postScript,
                                   own.module,       own.folder, plan.design.styleSheet, plan.design.logo};
    std::ranges::copy(plan.ditaval, std::back_inserter(inputs));
    std::ranges::copy(plan.resources, std::back_inserter(inputs));
    std::ranges::copy(LocalFiles(session.files), std::back_inserter(inputs));
    inputs.push_back(plan.config);
    std::erase_if(inputs, [](const NativePath& path) { return path.Empty(); });
    return inputs;
}

}  // namespace

PublishPlan PlanTransformation(const Options& options, const Session& session) {
    const PublishOptions& publish = options.publish;
    RequireFile("--xslt", {publish.xslt});
    RequireProgram("--pre-script", {publish.preScript});
    RequireProgram("--post-script", {publish.postScript});
    PublishPlan plan;
    plan.config = AbsolutePath({options.common.config});
    plan.xslt = AbsolutePath({publish.xslt});
    plan.preScript = AbsolutePath({publish.preScript});
    plan.postScript = AbsolutePath({publish.postScript});
    plan.ditaval = RequiredFiles("--ditaval", publish.ditaval);
    plan.resources = RequiredFiles("--resource", options.common.resources);
    plan.design = DesignOf(publish);
    plan.ditaOt = WantsDitaRun(publish, session);
    plan.transforms = plan.ditaOt || !plan.xslt.Empty();
    plan.toolkit = plan.ditaOt ? DescribeToolkit(ToolkitName(options.common.toolkit)) : std::string();
    plan.inputs = Inputs(plan, session);
    plan.xsltEngine = ChooseEngine(plan.xslt, publish.xsltEngine);
    std::ranges::move(CheckStylesheet(plan.xslt, plan.xsltEngine), std::back_inserter(plan.inputs));
    CheckToolkitOptions(options, plan.ditaOt);
    RequireFilters(plan.ditaval);
    return plan;
}

PublishPlan MakePublishPlan(const Options& options, const Session& session) {
    const PublishOptions& publish = options.publish;
    PublishPlan plan = PlanTransformation(options, session);
    CheckToolkit(plan, options.common.toolkit);
    plan.output = NormalPath(AbsolutePath({publish.output}));
    plan.log = options.common.log.empty() ? NativePath{plan.output.utf8 + ".log"}
                                          : AbsolutePath({options.common.log});
    plan.report = AbsolutePath({publish.report});
    plan.outFile = AbsolutePath({publish.outFile});
    plan.undecoded = plan.outFile.Empty() || IsDecoded(plan) ? NativePath{} : plan.outFile;
    CheckPlaces(plan);
    return plan;
}

}  // namespace ventrix::desk
