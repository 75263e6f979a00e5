// The client "QlXSLT": runs one stylesheet on one document, with EXSLT and without the network. DTDs and
// imported stylesheets come from local files and the XML catalogs.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "desk/clients/client.h"

namespace ventrix::desk {

/// What a command of the module can't say.
struct XsltSettings {
    std::string engine = "libxslt";                                     ///< Or "saxon".
    std::vector<std::pair<std::string, std::string>> strings = {};      ///< Parameters by name.
    std::vector<std::pair<std::string, std::string>> expressions = {};  ///< In XPath.

    /// Called before a stylesheet of the user's runs, not for the repair of a DOCTYPE; may be empty.
    std::function<void()> starts = {};
};

/// An inclusion that failed, as a finding.
DitaFinding FindingFor(const FailedInclusion& failed);

/// A client for the command
///     XSLTRunTrScenario -dontuseqlconsole -file "IN" -xslfilepath "STYLESHEET" -outputfilepath "OUT"
/// with options in any order. XInclude elements of IN are processed. OUT changes as a whole or, on failure,
/// not at all; its folder is created if it is missing; a stylesheet that writes only further files, as one
/// that makes a page of each chapter does, leaves it alone. The stylesheet may read documents in the folders
/// of IN, of OUT and of the stylesheets and write files in the output folder. Messages of the stylesheet go
/// to the host's console. A failure has status 1, and the record gives the reason. The settings, which may
/// change before the command comes, the record and the file access must outlive the client. Saxon is not
/// confined to the folders.
Client MakeXsltClient(const XsltSettings& settings, const FileAccess& access, TransformationRecord& record);

}  // namespace ventrix::desk
