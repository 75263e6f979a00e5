#include "desk/cli/run_log.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>

#include "bridge/contract/request.h"

namespace ventrix::desk {
namespace {

/// A rule, the line of asterisks before and after the paths of a section.
bool IsRule(std::string_view line) {
    return !line.empty() && line.find_first_not_of('*') == std::string_view::npos;
}

/// Returns what follows the severity and the message; nothing if the line does not begin with them.
std::optional<std::string> TextAfter(std::string_view line, std::string_view severity,
                                     std::string_view message) {
    if (!line.starts_with(severity) || !line.substr(severity.size()).starts_with(message)) {
        return std::nullopt;
    }
    return std::string(line.substr(severity.size() + message.size()));
}

bool IsMessage(std::string_view line, std::string_view severity, std::string_view message) {
    return TextAfter(line, severity, message) == "";
}

/// Reads the paths between the two rules of a section.
void ReadSection(std::istream& lines, std::vector<NativePath>& paths) {
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        if (IsRule(line)) {
            return;
        }
        paths.push_back(ToNative(SystemPath{line}));
    }
}

/// Reads a line of the encoding or decoding step: the file that it starts, or why that file failed.
void ReadCodingLine(const std::string& line, std::string& lastFile, RunLog& log) {
    if (const auto encoded = TextAfter(line, kProgressWording, kEncodingFileWording)) {
        lastFile = *encoded;
        log.encodedFiles.push_back(ToNative(SystemPath{lastFile}));
        ++log.encoded;
    } else if (const auto decoded = TextAfter(line, kProgressWording, kDecodingFileWording)) {
        lastFile = *decoded;
        ++log.decoded;
    } else if (auto reason = TextAfter(line, kErrorWording, kEncodingFileWording);
               reason || (reason = TextAfter(line, kErrorWording, kDecodingFileWording))) {
        log.failed.push_back({ToNative(SystemPath{lastFile}), *reason});
    }
}

void ReadLine(const std::string& line, std::istream& lines, std::string& lastFile, RunLog& log) {
    if (IsMessage(line, kProgressWording, kValidFilesWording)) {
        ReadSection(lines, log.valid);
    } else if (IsMessage(line, kWarningWording, kBrokenLinksWording)) {
        ReadSection(lines, log.broken);
    } else if (IsMessage(line, kWarningWording, kUnsavedFilesWording)) {
        ReadSection(lines, log.unsaved);
    } else if (IsMessage(line, kErrorWording, kSeveralRootsWording)) {
        log.documentsOnSeveralDrives = true;
    } else if (IsMessage(line, kWarningWording, kSeveralRootsWording)) {
        log.graphicsOnOtherDrive = true;
    } else {
        ReadCodingLine(line, lastFile, log);
    }
}

}  // namespace

RunLog ReadRunLog(const std::string& text) {
    RunLog log;
    std::istringstream lines(text);
    std::string line;
    std::string lastFile;
    while (std::getline(lines, line)) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        ReadLine(line, lines, lastFile, log);
    }
    return log;
}

std::set<NativePath> FailedFiles(const RunLog& log) {
    std::set<NativePath> files;
    for (const FailedFile& failed : log.failed) {
        files.insert(failed.file);
    }
    return files;
}

std::uint64_t LogSize(const NativePath& log) {
    std::error_code error;
    const auto size = std::filesystem::file_size(ToFilesystem(log), error);
    return error ? 0 : size;
}

std::string LogFrom(const NativePath& log, std::uint64_t offset) {
    const std::uint64_t size = LogSize(log);
    std::string text(size < offset ? 0 : size - offset, '\0');
    std::ifstream file(ToFilesystem(log), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

}  // namespace ventrix::desk
