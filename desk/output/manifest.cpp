#include "desk/output/manifest.h"

#include <fstream>
#include <nlohmann/json.hpp>

#include "desk/output/entries.h"
#include "platform/native_files.h"
#include "platform/path_text.h"
#include "platform/wide_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr int kSchema = 1;
constexpr const char* kVolumeFolder = "lost+found";  // Belongs to the file system of a mounted volume.

/// A name that is not UTF-8 has no place in JSON; its bytes in hexadecimal identify it as well.
std::string ListedName(const fs::path& name) {
    std::string text = name.generic_string();
    if (platform::IsUtf8(text)) {
        return text;
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string bytes = "bytes:";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        bytes += kDigits[byte >> 4];
        bytes += kDigits[byte & 15];
    }
    return bytes;
}

nlohmann::json AsJson(const Manifest& manifest) {
    auto files = nlohmann::json::array();
    for (const auto& [name, stamp] : manifest.files) {
        files.push_back({{"name", name}, {"size", stamp.size}, {"modified", stamp.modified}});
    }
    return {{"schema", kSchema},
            {"request", manifest.request},
            {"version", manifest.version},
            {"files", std::move(files)},
            {"folders", manifest.folders}};
}

/// Throws the JSON library's exceptions for anything that is not a manifest.
Manifest FromJson(const nlohmann::json& json) {
    Manifest manifest;
    manifest.readable = json.at("schema").get<int>() == kSchema;
    if (!manifest.readable) {
        return manifest;
    }
    manifest.request = json.at("request").get<std::string>();
    manifest.version = json.at("version").get<std::string>();
    for (const nlohmann::json& file : json.at("files")) {
        manifest.files[file.at("name").get<std::string>()] = {file.at("size").get<std::uint64_t>(),
                                                              file.at("modified").get<std::int64_t>()};
    }
    manifest.folders = json.at("folders").get<std::set<std::string>>();
    return manifest;
}

Manifest ParseManifest(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    try {
        return FromJson(nlohmann::json::parse(stream));
    } catch (const nlohmann::json::exception&) {
        return {};
    } catch (const std::ios_base::failure&) {
        return {};
    }
}

void ListFilesBelow(const fs::path& folder, const fs::path& below, Manifest& manifest,
                    std::vector<std::string>& findings) {
    std::error_code error;
    for (const fs::path& name : NamesIn(folder / below, findings)) {
        const fs::path path = below / name;
        const auto status = platform::StatusOfEntry(folder / path, error);
        if (below.empty() && (name == manifest.mark || name == kVolumeFolder)) {
            continue;
        }
        if (error) {
            findings.push_back(platform::Utf8FromPath(folder / path) +
                               " cannot be examined: " + error.message());
        } else if (status && status->kind == platform::EntryKind::kFolder) {
            manifest.folders.insert(ListedName(path));
            ListFilesBelow(folder, path, manifest, findings);
        } else if (status) {
            manifest.files[ListedName(path)] = {status->size, status->modified};
        }
    }
}

bool IsEmptyFolder(const fs::path& folder) {
    std::error_code error;
    return NamesIn(folder, error).empty();
}

}  // namespace

Manifest ReadManifest(const fs::path& folder, const std::string& mark) {
    const auto status = platform::StatusOfEntry(folder / mark);
    Manifest manifest;
    if (status && status->kind == platform::EntryKind::kFile) {
        manifest = ParseManifest(folder / mark);
        if (manifest.readable || status->size == 0) {
            manifest.files[mark] = {status->size, status->modified};
        }
    }
    manifest.mark = mark;
    return manifest;
}

std::error_code WriteManifest(const fs::path& folder, const Manifest& manifest) {
    return platform::WriteDurably(
        folder / manifest.mark,
        AsJson(manifest).dump(1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void ListFiles(const fs::path& folder, Manifest& manifest, std::vector<std::string>& findings) {
    ListFilesBelow(folder, {}, manifest, findings);
}

bool IsUnmodified(const Manifest& manifest, const fs::path& folder, const fs::path& name) {
    const auto status = platform::StatusOfEntry(folder / name);
    if (!status) {
        return false;
    }
    if (status->kind == platform::EntryKind::kFolder) {
        // An ordinary user cannot list the volume's own folder, and cannot have put anything into it.
        return ListsFolder(manifest, name) || (name == kVolumeFolder && IsEmptyFolder(folder / name));
    }
    const auto listed = manifest.files.find(ListedName(name));
    return listed != manifest.files.end() && listed->second == FileStamp{status->size, status->modified};
}

bool ListsFile(const Manifest& manifest, const fs::path& name) {
    return manifest.files.contains(ListedName(name));
}

bool ListsFolder(const Manifest& manifest, const fs::path& name) {
    return manifest.folders.contains(ListedName(name));
}

}  // namespace ventrix::desk
