// The report for the user: a text file that only grows. Every step opens it, appends whole lines and closes
// it, so the reports of all steps and runs follow each other. Strings are UTF-8; fixed wording comes from the
// string table by number. Lines written to a log that could not be opened are dropped.
#pragma once

#include <cstdint>
#include <string_view>

#include "bridge/contract/request.h"
#include "fileset/path_classification.h"
#include "platform/text_stream.h"

namespace ventrix {

using ReportLog = platform::TextStream;

/// Severities of a line. All but kSeverityNone begin the line with a word, without a space after it; any
/// other number has no word.
constexpr int kSeverityNone = 0;
constexpr int kSeverityProgress = 1;
constexpr int kSeverityWarning = 2;
constexpr int kSeverityError = 3;

/// Opens the log for appending. With an empty or unusable path it stays closed.
ReportLog OpenReportLog(const Path& path);

/// An empty line.
void LogBlankLine(ReportLog& log);

/// A row of asterisks.
void LogRule(ReportLog& log);

/// The severity word and the message, which is empty for a number that is not in the string table.
void LogMessage(ReportLog& log, int severity, std::uint32_t messageId);

/// LogMessage with the text directly after the message.
void LogMessageAndText(ReportLog& log, int severity, std::uint32_t messageId, std::string_view text);

/// An empty line, the title, and the paths between two rules. Nothing for an empty list.
void LogSection(ReportLog& log, const FileList& list, int severity, std::uint32_t titleId);

}  // namespace ventrix
