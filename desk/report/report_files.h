// The loss report as a file: a JSON object, which docs/report-schema.json describes, or a page that a browser
// shows without a server.
#pragma once

#include <string>

#include "desk/report/loss_report.h"

namespace ventrix::desk {

/// Whether the name ends in .html or .json, in lower case.
bool IsReportName(const std::string& fileName);

std::string ReportAsJson(const LossReport& report);

/// `file` is where the page will be, as the links to the pages of the result are relative to it.
std::string ReportAsPage(const LossReport& report, const NativePath& file);

/// The report in the form that the file's name asks for. Returns why the file could not be written, one line;
/// empty if it was. The file changes as a whole or not at all.
std::string WriteLossReport(const LossReport& report, const NativePath& file);

/// A word for the kind of an item, as "attribute".
std::string KindOf(const PreservedItem& item);

}  // namespace ventrix::desk
