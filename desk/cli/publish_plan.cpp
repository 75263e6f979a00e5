#include "desk/cli/publish_plan.h"

#include <algorithm>
#include <iterator>

#include "desk/cli/exit_status.h"
#include "desk/cli/installation.h"
#include "desk/cli/option_checks.h"
#include "desk/cli/path_options.h"
#include "desk/toolkit/ditaval.h"
#include "desk/toolkit/installed_toolkit.h"
#include "desk/xml/stylesheet.h"

namespace ventrix::desk {
namespace {

bool WantsDitaRun(const PublishOptions& publish, const Session& session) {
    if (!AsksForDitaTransformation(publish)) {
        return false;
    }
    if (!publish.ditaOt && !session.files.dita) {
        throw Stop{kExitUsage, session.document.utf8 +
                                   " is not a DITA document; choose --xslt, --post-script or --no-transform"};
    }
    return true;
}

/// The files of the stylesheet, with those that it imports and includes.
std::vector<NativePath> CheckStylesheet(const NativePath& path) {
    if (path.Empty()) {
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

void CheckFilter(const NativePath& path) {
    std::string reason;
    if (!path.Empty() && !ReadDitaval(path, reason)) {
        throw Stop{kExitUsage, "--ditaval: " + path.utf8 + " cannot be used: " + reason};
    }
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
    if (IsBelowOrEqual(RealPath(plan.log), RealPath(plan.output))) {
        throw Stop{kExitUsage, "--log: " + plan.log.utf8 +
                                   " is in the output folder, which is replaced; choose a file outside it"};
    }
    RequireNoInput("--out-file", plan.outFile, plan.inputs);
}

std::vector<NativePath> Inputs(const PublishPlan& plan, const Session& session) {
    const Installation own = FindInstallation();
    std::vector<NativePath> inputs{session.document, plan.xslt,  plan.ditaval, plan.preScript,
                                   plan.postScript,  own.module, own.folder};
    std::ranges::copy(LocalFiles(session.files), std::back_inserter(inputs));
    std::erase_if(inputs, [](const NativePath& path) { return path.Empty(); });
    return inputs;
}

}  // namespace

PublishPlan MakePublishPlan(const Options& options, const Session& session) {
    const PublishOptions& publish = options.publish;
    RequireFile("--xslt", {publish.xslt});
    RequireFile("--ditaval", {publish.ditaval});
    RequireProgram("--pre-script", {publish.preScript});
    RequireProgram("--post-script", {publish.postScript});
    PublishPlan plan;
    plan.output = NormalPath(AbsolutePath({publish.output}));
    plan.log = options.common.log.empty() ? NativePath{plan.output.utf8 + ".log"}
                                          : AbsolutePath({options.common.log});
    plan.xslt = AbsolutePath({publish.xslt});
    plan.preScript = AbsolutePath({publish.preScript});
    plan.postScript = AbsolutePath({publish.postScript});
    plan.ditaval = AbsolutePath({publish.ditaval});
    plan.outFile = AbsolutePath({publish.outFile});
    plan.ditaOt = WantsDitaRun(publish, session);
    plan.transforms = plan.ditaOt || !plan.xslt.Empty();
    plan.toolkit = plan.ditaOt ? DescribeToolkit(ToolkitName(options.common.toolkit)) : std::string();
    plan.inputs = Inputs(plan, session);
    plan.undecoded = plan.outFile.Empty() || IsDecoded(plan) ? NativePath{} : plan.outFile;
    CheckPlaces(plan);
    CheckToolkit(plan, options.common.toolkit);
    std::ranges::move(CheckStylesheet(plan.xslt), std::back_inserter(plan.inputs));
    CheckFilter(plan.ditaval);
    return plan;
}

}  // namespace ventrix::desk
