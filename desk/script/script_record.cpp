#include "desk/script/script_record.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "platform/native_roots.h"
#include "platform/path_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr std::size_t kLastLines = 10;
constexpr std::streamoff kLastBytes = 4096;  // The part of the output that is kept for these lines.

// --- files of fields ---

/// Replaces the file as a whole, so that a reader finds the old fields or the new ones.
void WriteFields(const std::string& file, const std::vector<std::string>& fields) {
    const fs::path unfinished = platform::PathFromUtf8(file + ".new");
    std::ofstream out(unfinished, std::ios::binary);
    for (const std::string& field : fields) {
        out.write(field.c_str(), static_cast<std::streamsize>(field.size() + 1));
    }
    out.close();
    std::error_code error;
    if (out) {
        fs::rename(unfinished, platform::PathFromUtf8(file), error);
    }
    if (!out || error) {
        throw std::runtime_error(file +
                                 " cannot be written: " + (error ? error.message() : std::strerror(errno)));
    }
}

std::vector<std::string> ReadFields(const std::string& file) {
    std::ifstream in(platform::PathFromUtf8(file), std::ios::binary);
    std::vector<std::string> fields;
    for (std::string field; std::getline(in, field, '\0');) {
        fields.push_back(field);
    }
    return fields;
}

template <typename Number>
Number ToNumber(const std::string& text) {
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// --- the end of an output ---

/// The length of the valid UTF-8 sequence at the beginning of the bytes; 0 if there is none.
std::size_t SequenceLength(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > bytes.size()) {
        return 0;
    }
    const bool continued = std::ranges::all_of(
        bytes.substr(1, length - 1), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; });
    const auto second = length > 1 ? static_cast<unsigned char>(bytes[1]) : 0U;
    // Overlong forms, surrogates, and what lies past the last character.
    const bool excluded = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                          (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return continued && !excluded ? length : 0;
}

/// The line with "?" in place of each byte that does not belong to a printable character.
std::string Printable(std::string_view line) {
    std::string text;
    while (!line.empty()) {
        const std::size_t length = SequenceLength(line);
        const auto first = static_cast<unsigned char>(line.front());
        const bool shown = length > 0 && (first >= 0x20 || first == '\t') && first != 0x7F;
        text += shown ? line.substr(0, length) : "?";
        line.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

/// At most kLastBytes from the end of a file; whole lines, if there is a line end.
std::string Tail(const std::string& file) {
    std::ifstream in(platform::PathFromUtf8(file), std::ios::binary | std::ios::ate);
    const std::streamoff size = in ? static_cast<std::streamoff>(in.tellg()) : 0;
    const std::streamoff begin = std::max<std::streamoff>(size - kLastBytes, 0);
    in.seekg(begin);
    std::string tail(std::istreambuf_iterator<char>(in), {});
    const std::size_t lineEnd = tail.find('\n');
    if (begin > 0 && lineEnd + 1 < tail.size()) {
        tail.erase(0, lineEnd + 1);
    }
    return tail;
}

std::vector<std::string> LastLines(const std::string& file) {
    const std::string tail = Tail(file);
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < tail.size();) {
        const std::size_t end = std::min(tail.find('\n', begin), tail.size());
        std::string_view line(tail.data() + begin, end - begin);
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        lines.push_back(Printable(line));
        begin = end + 1;
    }
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(std::min(lines.size(), kLastLines)));
    return lines;
}

std::vector<PackageFile> ReadPackageState(const std::string& path) {
    const std::vector<std::string> fields = ReadFields(path + ".package");
    std::vector<PackageFile> files;
    for (std::size_t i = 0; i + 3 < fields.size(); i += 4) {
        files.push_back({fields[i], ToNumber<std::uintmax_t>(fields[i + 1]),
                         ToNumber<std::int64_t>(fields[i + 2]), ToNumber<std::uint64_t>(fields[i + 3])});
    }
    return files;
}

/// Puts the recorder into the folder under its name: as a link, or as a copy if links cannot be created.
void PlaceRecorder(const std::string& recorder, const std::string& path) {
    const fs::path source = platform::PathFromUtf8(recorder);
    const fs::path place = platform::PathFromUtf8(path + std::string(platform::ProgramSuffix()));
    std::error_code error;
    fs::create_symlink(source, place, error);
    if (error) {
        fs::copy_file(source, place, error);
    }
    if (error) {
        throw std::runtime_error(path + " cannot be created: " + error.message());
    }
}

}  // namespace

bool Succeeded(const ScriptRecord& record) {
    return record.state == ScriptState::kEnded && record.exitCode == 0 && record.signal == 0;
}

std::string DescribeFailure(const ScriptRecord& record, const std::string& script) {
    switch (record.state) {
        case ScriptState::kNotCalled:
            return script + " was not called";
        case ScriptState::kNotStarted:
            return record.reason;
        case ScriptState::kUnknown:
            return "the outcome of " + script +
                   " is unknown: its recorder was terminated or could not write to the temporary folder";
        case ScriptState::kEnded:
            break;
    }
    if (record.signal != 0) {
        return script + " was terminated by signal " + std::to_string(record.signal);
    }
    return record.exitCode == 0 ? std::string()
                                : script + " failed with exit status " + std::to_string(record.exitCode);
}

std::string PrepareScript(const std::string& folder, const std::string& name, const std::string& recorder,
                          const ScriptSettings& settings) {
    std::string path = folder + "/" + name;
    PlaceRecorder(recorder, path);
    WriteFields(path + ".settings", {settings.script, settings.package, std::to_string(settings.owner),
                                     std::to_string(static_cast<int>(settings.last)),
                                     std::to_string(settings.output), settings.document});
    return path;
}

ScriptRecord ReadScriptRecord(const std::string& folder, const std::string& name) {
    const std::string path = folder + "/" + name;
    const std::vector<std::string> fields = ReadFields(path + ".record");
    ScriptRecord record;
    record.lastLines = LastLines(ScriptOutputFile(path));
    record.package = ReadPackageState(path);
    if (fields.size() != 4) {
        std::error_code error;
        record.state = fs::exists(platform::PathFromUtf8(path + ".settings"), error) ? ScriptState::kNotCalled
                                                                                     : ScriptState::kUnknown;
        return record;
    }
    record.state = static_cast<ScriptState>(ToNumber<int>(fields[0]));
    record.reason = fields[1];
    record.exitCode = ToNumber<int>(fields[2]);
    record.signal = ToNumber<int>(fields[3]);
    return record;
}

std::optional<ScriptSettings> TakeScriptSettings(const std::string& path) {
    const std::vector<std::string> fields = ReadFields(path + ".settings");
    if (fields.size() != 6) {
        return std::nullopt;
    }
    std::error_code ignored;
    fs::remove(platform::PathFromUtf8(path + ".settings"), ignored);
    return ScriptSettings{fields[0],
                          fields[1],
                          ToNumber<std::int64_t>(fields[2]),
                          fields[3] == "1",
                          ToNumber<std::int64_t>(fields[4]),
                          fields[5]};
}

std::string ScriptOutputFile(const std::string& path) {
    return path + ".output";
}

void WritePackageState(const std::string& path, const std::vector<PackageFile>& files) {
    std::vector<std::string> fields;
    for (const PackageFile& file : files) {
        fields.insert(fields.end(), {file.name, std::to_string(file.size), std::to_string(file.modified),
                                     std::to_string(file.file)});
    }
    WriteFields(path + ".package", fields);
}

void WriteScriptRecord(const std::string& path, const ScriptRecord& record) {
    WriteFields(path + ".record", {std::to_string(static_cast<int>(record.state)), record.reason,
                                   std::to_string(record.exitCode), std::to_string(record.signal)});
}

}  // namespace ventrix::desk
