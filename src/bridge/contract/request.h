// The requests that the module serves: commands and options, statuses of the reply, the clients that a
// request needs, and the strings of the report log. Strings are UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ventrix {

/// The number of the notification whose string is a request.
constexpr std::int32_t kRequestNotification = 13;

constexpr char kValidateCommand[] = "Validate";
constexpr char kPublishCommand[] = "Publish";

/// The option names. docs/host-contract.md lists their values.
constexpr char kDocIdOption[] = "-docId";
constexpr char kOutputFolderOption[] = "-outputFolder";
constexpr char kOutFilePathOption[] = "-outFilePath";
constexpr char kShowProgressBarOption[] = "-showProgressBar";
constexpr char kAttributesOption[] = "-attributes";
constexpr char kTargetAttrOption[] = "-targetAttr";
constexpr char kElementsOption[] = "-elements";
constexpr char kDitavalOption[] = "-ditaval";
constexpr char kUseDitaOtOption[] = "-useDITAOT";
constexpr char kUseXsltOption[] = "-useXSLT";
constexpr char kUsePreScriptOption[] = "-usePreScript";
constexpr char kUsePostScriptOption[] = "-usePostScript";
constexpr char kLogFileOption[] = "-logFile";
constexpr char kScopedAttributesOption[] = "-scopedAttributes";
constexpr char kAddXpathOption[] = "-addXpath";
constexpr char kXpathAttrOption[] = "-xpathAttr";
constexpr char kAddSourcePathOption[] = "-addSourcePath";
constexpr char kSourcePathAttrOption[] = "-sourcePathAttr";
constexpr char kPreserveXPathListOption[] = "-preserveXPathList";
constexpr char kPreserveXPathAttrOption[] = "-preserveXPathAttr";

/// Length in bytes of the longest command, option or value that a request can hold. Longer ones are
/// truncated.
constexpr std::size_t kLongestRequestToken = 1023;

/// Status of the reply to a request that was refused: it has no command or no document, or lacks a required
/// option.
constexpr std::int32_t kRequestRefused = -43;

/// Bits of the status that Validate replies. None is set for a document that can be published as it is.
constexpr std::int32_t kValidateBroken = 1;          ///< A referenced file is missing or unreadable.
constexpr std::int32_t kValidateUnsaved = 2;         ///< A referenced file has unsaved changes in the host.
constexpr std::int32_t kValidateOnSeveralRoots = 8;  ///< The documents are on several roots: no packaging.
constexpr std::int32_t kValidateWithoutLog = 16;     ///< The log did not open; nothing was examined.

/// The clients that the module calls, by the names under which the host knows them.
constexpr char kDitaOtClient[] = "Dita OT";
constexpr char kXsltClient[] = "QlXSLT";
constexpr char kDispatcherClient[] = "QlDispatcher";

/// Numbers in the module's string table, from which the report log takes its fixed wording.
constexpr std::uint32_t kProgressWord = 0;
constexpr std::uint32_t kMessageValidFiles = 1;
constexpr std::uint32_t kWarningWord = 2;
constexpr std::uint32_t kErrorWord = 3;
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

/// The strings by which a host recognizes the lines of a report log. A line is a severity word, a message and
/// a path or reason, without a separator between them.
constexpr std::string_view kProgressWording = "Logarithmus:";
constexpr std::string_view kWarningWording = "Achtung:";
constexpr std::string_view kErrorWording = "Fehler:";
constexpr std::string_view kValidFilesWording = "Liste der gültigen Dateien";
constexpr std::string_view kBrokenLinksWording = "Liste der beschädigten Links";
constexpr std::string_view kUnsavedFilesWording = "Liste der ungespeicherten Dateien";
constexpr std::string_view kSeveralRootsWording =
    "Einige Dateien, auf die verwiesen wird, befinden sich auf mehreren Laufwerken und können nicht verpackt "
    "werden!";
constexpr std::string_view kEncodingFileWording = "Datei wird codiert...";
constexpr std::string_view kDecodingFileWording = "Datei wird decodiert...";

}  // namespace ventrix
