// Turns an open document into a folder of HTML: package, encode, transform, decode, and put the result in its
// place. The caller owns the record and the reply. Texts are UTF-8, paths in the platform's notation.
#pragma once

#include <cstdint>
#include <string>

#include "fileset/path_classification.h"
#include "markers/publish_params.h"

namespace ventrix {

/// What a run tells its caller. Both texts stay empty where packaging ended the run.
struct PublishReply {
    std::string resultFolder;  ///< The folder of the pages, with its trailing backslash.
    std::string buildLog;      ///< The toolkit's log of a DITA run, else empty.
};

/// Runs all steps, in order, whatever the ones before brought; only packaging can end the run early.
/// `outputFolder` is not null and must end in a backslash: packaging empties it. `stylesheet`, `preScript`
/// and `postScript` may be null; null and empty mean that there is none. `ditaval` and `logFile` may be
/// empty. `showProgressBar` is accepted and has no effect. The record is changed: scoped groups are cut back
/// to whole groups, and the fields that no option sets are filled.
void PublishDocument(std::uint32_t documentId, const char* outputFolder, const char* stylesheet,
                     const char* preScript, const char* postScript, bool useDitaOt, bool showProgressBar,
                     Path ditaval, PublishParams& params, Path logFile, PublishReply& reply);

}  // namespace ventrix
