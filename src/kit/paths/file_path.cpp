#include "kit/paths/file_path.h"

#include <algorithm>

#include "kit/last_error.h"
#include "kit/paths/portable_path.h"
#include "kit/paths/relative_path.h"
#include "kit/paths/resolve_path.h"
#include "kit/paths/rivlet.h"
#include "kit/text/characters.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"
#include "platform/exception.h"

namespace ventrix {
namespace {

constexpr std::int32_t kBadPath = -43;

FilePath* NewFilePath(const char* text) {
    auto* path = static_cast<FilePath*>(Q_Calloc(1, sizeof(FilePath), 0));
    if (path == nullptr) {
        return nullptr;
    }
    path->magic = kFilePathMagic;
    path->flags = kPathResolved;
    path->text = Q_StrDup(text);
    if (path->text == nullptr) {
        Q_FreeAndClear(&path);
    }
    return path;
}

// A string that does not fit into the buffer gives null: truncated, it would name another file.
FilePath* Resolve(const char* text, const FilePath* anchor) {
    char path[kPathBufferSize];
    if (Q_StrCopyN(path, text, sizeof path) != Q_StrLen(text)) {
        return nullptr;
    }
    Q_ResolvePath(path, anchor == nullptr ? "" : anchor->text);
    return *path == '\0' ? nullptr : NewFilePath(path);
}

char* WithSlashes(const char* text) {
    char* copy = Q_StrDup(text);
    std::replace(copy, copy + Q_StrLen(copy), '\\', '/');
    return copy;
}

}  // namespace

FilePath* Q_PathToFilePath(const char* text, const FilePath* anchor, int mode) {
    if (mode == kPortablePath) {
        const Q_String native(Q_PortableToNative(text));
        return Q_PathToFilePath(native.get(), anchor, kNativePath);
    }
    if (text == nullptr || *text == '\0') {
        return nullptr;
    }
    switch (mode) {
        case kNativePath:
        case kSlashPath:
        case kPlainPath:
            return Resolve(text, anchor);
        case 3:
            return nullptr;
        default:
            platform::RaisePlatformException(1);
    }
}

char* Q_FilePathToPath(const FilePath* path, int mode) {
    if (path != nullptr) {
        switch (mode) {
            case kNativePath:
            case kPlainPath:
                return Q_StrDup(path->text);
            case kSlashPath:
                return WithSlashes(path->text);
            case kPortablePath:
                return path->magic == kFilePathMagic ? Q_NativeToPortable(path->text, nullptr) : nullptr;
            default:
                break;
        }
    }
    Q_ApiLastError = kBadPath;
    return nullptr;
}

int Q_FreeFilePath(FilePath* path) {
    if (path != nullptr) {
        Q_Free(path->text);
    }
    return Q_Free(path);
}

const char* Q_LeafOf(const char* text) {
    const char* leaf = text;
    for (const char* at = text; at != nullptr && *at != '\0'; ++at) {
        if (*at == '\\' || *at == ':') {
            leaf = at + 1;
        }
    }
    return leaf;
}

bool Q_IsDctmPath(const char* text) {
    return Q_StrPrefix(text, "dctm://");
}

bool Q_IsAbsolutePath(const char* text) {
    if (text == nullptr || *text == '\0') {
        return false;
    }
    return text[1] == ':' || Q_IsSeparator(text[0]) || Q_IsDctmPath(text) || Q_IsNetFile(text);
}

std::string JoinPath(const std::string& folder, const std::string& relativePath) {
    FilePath* anchor = Q_PathToFilePath(folder.c_str(), nullptr, kNativePath);
    FilePath* joined = Q_PathToFilePath(relativePath.c_str(), anchor, kNativePath);
    const Q_String text(joined == nullptr ? nullptr : Q_FilePathToPath(joined, kNativePath));
    Q_FreeFilePath(joined);
    Q_FreeFilePath(anchor);
    return text == nullptr ? "" : text.get();
}

std::string RelativeTo(std::string path, std::string base) {
    char buffer[kPathBufferSize];
    Q_StrCopyChars(buffer, path.c_str(), kPathBufferSize - 1, Q_CurrentEncoding());
    MakePathRelative(buffer, base.c_str());
    return buffer;
}

}  // namespace ventrix
