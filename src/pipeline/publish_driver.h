// Turns an open document into a folder of HTML: packages, encodes, transforms and decodes its files and
// brings the result into the layout of the sources. The caller owns options and reply. Strings are UTF-8,
// paths in system notation.
#pragma once

#include <cstdint>
#include <string>

#include "fileset/path_classification.h"
#include "markers/publish_params.h"

namespace ventrix {

/// The result of a run. Both strings stay empty if packaging ended the run.
struct PublishReply {
    std::string resultFolder;  ///< The folder of the pages, with a trailing backslash.
    std::string buildLog;      ///< The toolkit's log of a DITA run, otherwise empty.
};

/// Runs all steps in order, whatever the outcome of the ones before; only packaging can end the run early.
/// `outputFolder` must not be null and must end in a backslash; packaging empties it. `stylesheet`,
/// `preScript` and `postScript` may be null or empty, which both mean none. `ditaval` and `logFile` may be
/// empty. `showProgressBar` has no effect. In `params`, `scopedAttributes` is cut back to whole groups, and
/// the fields that no option sets are filled.
void PublishDocument(std::uint32_t documentId, const char* outputFolder, const char* stylesheet,
                     const char* preScript, const char* postScript, bool useDitaOt, bool showProgressBar,
                     Path ditaval, PublishParams& params, Path logFile, PublishReply& reply);

}  // namespace ventrix
