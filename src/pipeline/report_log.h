// The report for the user: a text file that only grows. Every step opens it, appends whole lines and closes
// it, so the reports of all steps and runs follow each other. Strings are UTF-8; fixed wording comes from the
// string table by number. Lines written to a log that could not be opened are dropped.
#pragma once

#include <cstdint>
#include <string_view>

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

/// Numbers of the messages in the string table.
constexpr std::uint32_t kMessageValidFiles = 1;
constexpr std::uint32_t kMessageBrokenLinks = 4;
constexpr std::uint32_t kMessageUnsavedFiles = 5;
constexpr std::uint32_t kMessageSeveralRoots = 6;
constexpr std::uint32_t kMessageRule = 7;
constexpr std::uint32_t kMessagePackagingTried = 8;
constexpr std::uint32_t kMessageEncodingFile = 9;
constexpr std::uint32_t kMessageDecodingFile = 10;
constexpr std::uint32_t kMessageEncodingStarts = 11;
constexpr std::uint32_t kMessageDecodingStarts = 12;
constexpr std::uint32_t kMessageDitaStarts = 13;
constexpr std::uint32_t kMessageInputFile = 14;
constexpr std::uint32_t kMessageDitavalFile = 15;

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
