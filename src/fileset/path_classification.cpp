#include "fileset/path_classification.h"

#include <algorithm>
#include <iterator>

namespace ventrix {

namespace {

constexpr char kBackslash = '\\';
constexpr auto kNotFound = std::string_view::npos;

}  // namespace

bool EndsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

bool IsXmlFile(std::string_view path) {
    return EndsWith(path, ".xml") || EndsWith(path, ".dita") || EndsWith(path, ".ditamap");
}

bool IsHttpUrl(std::string_view text) {
    return text.starts_with("http:") || text.starts_with("https:");
}

std::string PathRoot(std::string_view path) {
    const bool onServer = path.starts_with(R"(\\)");
    const bool onDrive = path.size() >= 2 && path[1] == ':';
    if (!onServer && !onDrive) {
        return {};
    }
    const auto separator = path.find(kBackslash, 2);
    return std::string(separator == kNotFound ? path : path.substr(0, separator + 1));
}

bool SpansSeveralRoots(const FileList& list) {
    return !list.empty() && AnyOutsideRoot(list, PathRoot(list.front()));
}

bool AnyOutsideRoot(const FileList& list, std::string_view root) {
    return std::any_of(list.begin(), list.end(), [root](const Path& path) { return PathRoot(path) != root; });
}

Path WithTrailingBackslash(Path path) {
    if (!path.empty() && path.back() != kBackslash) {
        path += kBackslash;
    }
    return path;
}

Path ParentFolder(std::string_view path) {
    auto separator = path.rfind(kBackslash);
    while (separator != kNotFound && separator + 1 == path.size()) {
        path.remove_suffix(1);
        separator = path.rfind(kBackslash);
    }
    return separator == kNotFound ? Path() : Path(path.substr(0, separator + 1));
}

std::string FileNameOf(std::string_view path) {
    const auto separator = path.rfind(kBackslash);
    return separator == kNotFound ? std::string() : std::string(path.substr(separator + 1));
}

void ReplaceExtension(Path& path, std::string_view newExtension) {
    const auto dot = path.rfind('.');
    if (dot != Path::npos) {
        path.erase(dot);
    }
    path += newExtension;
}

void ReplaceFirst(std::string& text, std::string_view oldText, std::string_view newText) {
    const auto at = text.find(oldText);
    if (at != std::string::npos) {
        text.replace(at, oldText.size(), newText);
    }
}

Path CommonFolder(std::string_view folderA, std::string_view folderB) {
    const auto differing =
        std::mismatch(folderA.begin(), folderA.end(), folderB.begin(), folderB.end()).first;
    const auto common = folderA.substr(0, static_cast<std::size_t>(differing - folderA.begin()));
    return EndsWith(common, R"(\)") ? Path(common) : ParentFolder(common);
}

Path CommonBaseFolder(const FileList& list) {
    if (list.empty()) {
        return {};
    }
    Path common = ParentFolder(list.front());
    for (auto path = std::next(list.begin()); path != list.end(); ++path) {
        common = CommonFolder(ParentFolder(*path), common);
    }
    return common;
}

}  // namespace ventrix
