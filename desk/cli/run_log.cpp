#include "desk/cli/run_log.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

namespace ventrix::desk {
namespace {

constexpr std::string_view kValidTitle = "Logarithmus:Liste der gültigen Dateien";
constexpr std::string_view kBrokenTitle = "Achtung:Liste der beschädigten Links";
constexpr std::string_view kUnsavedTitle = "Achtung:Liste der ungespeicherten Dateien";
constexpr std::string_view kDrivesText =
    "Einige Dateien, auf die verwiesen wird, befinden sich auf mehreren Laufwerken";
constexpr std::string_view kEncodes = "Logarithmus:Datei wird codiert...";
constexpr std::string_view kDecodes = "Logarithmus:Datei wird decodiert...";
constexpr std::string_view kEncodeFailed = "Fehler:Datei wird codiert...";
constexpr std::string_view kDecodeFailed = "Fehler:Datei wird decodiert...";

bool IsRule(std::string_view line) {
    return !line.empty() && line.find_first_not_of('*') == std::string_view::npos;
}

/// What follows the prefix, or nothing if the line does not begin with it.
bool Behind(std::string_view line, std::string_view prefix, std::string& rest) {
    if (!line.starts_with(prefix)) {
        return false;
    }
    rest = line.substr(prefix.size());
    return true;
}

/// Takes the lines between the two rules of a section.
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

void ReadLine(const std::string& line, std::istream& lines, std::string& lastFile, RunLog& log) {
    std::string rest;
    if (line == kValidTitle) {
        ReadSection(lines, log.valid);
    } else if (line == kBrokenTitle) {
        ReadSection(lines, log.broken);
    } else if (line == kUnsavedTitle) {
        ReadSection(lines, log.unsaved);
    } else if (line.starts_with("Fehler:" + std::string(kDrivesText))) {
        log.documentsOnSeveralDrives = true;
    } else if (line.starts_with("Achtung:" + std::string(kDrivesText))) {
        log.graphicsOnOtherDrive = true;
    } else if (Behind(line, kEncodes, lastFile)) {
        ++log.encoded;
    } else if (Behind(line, kDecodes, lastFile)) {
        ++log.decoded;
    } else if (Behind(line, kEncodeFailed, rest) || Behind(line, kDecodeFailed, rest)) {
        log.failed.push_back({ToNative(SystemPath{lastFile}), rest});
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

std::uint64_t LogSize(const NativePath& log) {
    std::error_code error;
    const auto size = std::filesystem::file_size(ToFilesystem(log), error);
    return error ? 0 : size;
}

std::string LogFrom(const NativePath& log, std::uint64_t offset) {
    std::ifstream file(ToFilesystem(log), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(offset));
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace ventrix::desk
