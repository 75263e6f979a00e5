// The report that a person reads: a text file that only grows. Every step opens it, appends whole lines and
// closes it, so that the runs stand one after the other. Texts are UTF-8; fixed wording comes from the string
// table by number. A log that did not open swallows its lines.
#pragma once

#include <cstdint>
#include <string_view>

#include "bridge/contract/request.h"
#include "fileset/path_classification.h"
#include "platform/text_stream.h"

namespace ventrix {

using ReportLog = platform::TextStream;

/// Severities of a line: each has its word, which stands in front without a blank. Any other number has none.
constexpr int kSeverityNone = 0;
constexpr int kSeverityProgress = 1;
constexpr int kSeverityWarning = 2;
constexpr int kSeverityError = 3;

/// Opens the log for appending. An empty or unusable path leaves it closed.
ReportLog OpenReportLog(const Path& path);

/// An empty line.
void LogBlankLine(ReportLog& log);

/// The row of asterisks.
void LogRule(ReportLog& log);

/// The severity word and the message; a number that the table lacks leaves its part of the line empty.
void LogMessage(ReportLog& log, int severity, std::uint32_t messageId);

/// As LogMessage, with the text directly behind the message.
void LogMessageAndText(ReportLog& log, int severity, std::uint32_t messageId, std::string_view text);

/// A blank line, the title, and the paths between two rules. An empty list writes nothing.
void LogSection(ReportLog& log, const FileList& list, int severity, std::uint32_t titleId);

}  // namespace ventrix
