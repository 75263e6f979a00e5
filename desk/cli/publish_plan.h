// The plan of a publish, checked as far as possible before anything is changed: options, toolkit, stylesheet
// with its imports, filter, scripts, log.
#pragma once

#include <string>
#include <vector>

#include "desk/cli/options.h"
#include "desk/cli/session.h"
#include "desk/paths/paths.h"
#include "desk/toolkit/dita_run.h"

namespace ventrix::desk {

struct PublishPlan {
    NativePath output;                                ///< Absolute.
    NativePath log;                                   ///< The user's report log, absolute.
    NativePath config;                                ///< The project file; empty without one.
    NativePath report;                                ///< The loss report, absolute; empty if not given.
    NativePath xslt, preScript, postScript, outFile;  ///< Absolute; empty if not given.
    std::vector<NativePath> ditaval, resources;       ///< Absolute.
    NativePath undecoded;  ///< `outFile` if the module does not decode what is written there; else empty.
    std::vector<NativePath> inputs;  ///< Everything that the run reads; none may be in the output folder.
    PageDesign design;               ///< With absolute paths.
    std::string xsltEngine;          ///< libxslt or saxon; empty without a stylesheet.
    bool ditaOt = false;
    bool transforms = false;  ///< A client transforms the document.
    std::string toolkit;      ///< The choice, in words; empty without a DITA transformation.
};

/// The plan without the places of the results, which stay empty. Does not look whether an installed toolkit
/// is there. Throws Stop for options that cannot work.
PublishPlan PlanTransformation(const Options& options, const Session& session);

/// Throws Stop, before anything has changed, for options that cannot work.
PublishPlan MakePublishPlan(const Options& options, const Session& session);

}  // namespace ventrix::desk
