#include "kit/paths/resolve_path.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "kit/paths/file_path.h"
#include "kit/paths/rivlet.h"
#include "kit/text/characters.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"
#include "platform/environment.h"

namespace ventrix {
namespace {

// Empty unless a client sets one; a leading "~" is then removed.
std::string homeFolder;

void Append(std::string& text, std::string_view more) {
    text.append(more);
}

void StorePath(char* path, const std::string& text) {
    Q_StrCopyChars(path, text.c_str(), kPathBufferSize, Q_CurrentEncoding());
}

std::size_t EndOfComponent(std::string_view text, std::size_t start) {
    return std::min(text.find_first_of("\\/", start), text.size());
}

std::size_t EndOfSeparators(std::string_view text, std::size_t start) {
    return std::min(text.find_first_not_of("\\/", start), text.size());
}

// The value of the variable whose "$" is at the position, if it is set; stores where its name ends. A "$."
// that does not begin the path is not a variable.
std::optional<std::string> VariableAt(std::string_view path, std::size_t position, std::size_t& end) {
    if (position > 0 && path.substr(position + 1, 1) == ".") {
        return std::nullopt;
    }
    end = EndOfComponent(path, position + 1);
    return platform::EnvironmentValue(std::string(path.substr(position + 1, end - position - 1)));
}

std::string ExpandVariables(std::string_view path) {
    std::string expanded;
    std::size_t position = 0;
    if (path.substr(0, 1) == "~") {
        position = 1;
        Append(expanded, EndOfComponent(path, 1) == 1 ? homeFolder : std::string());
    }
    while (position < path.size()) {
        std::size_t end = 0;
        const auto value = path[position] == '$' ? VariableAt(path, position, end) : std::nullopt;
        if (value) {
            Append(expanded, *value);
            position = end;
        } else {
            expanded += path[position++];
        }
    }
    return expanded;
}

// Rewrites a path without ".", ".." and repeated separators, reading it once from start to end.
//
// The input is a sequence of components and runs of separators. A run is written as one separator, always the
// byte of the first separator met, so that mixed styles become one; only two leading backslashes stay two,
// because they introduce a server. "." is dropped with the separators after it. ".." removes the last
// component from the output together with the separator before it, so that the separator after ".." takes its
// place. What cannot be removed is the root, which is a leading separator or a drive with its separator:
// there ".." is dropped like ".". A ".." beyond the start of a relative path is dropped too, since the result
// has to stay relative and must not begin with a separator.
class Normalizer {
  public:
    explicit Normalizer(std::string_view text) : text_(text) {}

    std::string Run() {
        while (position_ < text_.size()) {
            if (Q_IsSeparator(text_[position_])) {
                WriteSeparator();
            } else {
                ReadComponent();
            }
        }
        return output_;
    }

  private:
    void WriteSeparator() {
        if (separator_ == '\0') {
            separator_ = text_[position_];
        }
        const bool isServer = position_ == 0 && text_.substr(0, 2) == "\\\\";
        output_.append(isServer ? 2 : 1, separator_);
        SkipSeparators();
    }

    void ReadComponent() {
        const std::size_t end = EndOfComponent(text_, position_);
        const std::string_view component = text_.substr(position_, end - position_);
        position_ = end;
        if (component == ".") {
            SkipSeparators();
        } else if (component == "..") {
            ClimbUp();
        } else {
            Append(output_, component);
        }
    }

    // When a component is read, the output is empty or ends in a separator.
    void ClimbUp() {
        if (IsAtRoot()) {
            SkipSeparators();
            return;
        }
        std::size_t cut = output_.empty() ? 0 : output_.size() - 1;
        while (cut > 0 && !Q_IsSeparator(output_[cut - 1]) && output_[cut - 1] != ':') {
            --cut;
        }
        const bool hasParent = cut > 0;
        if (hasParent && Q_IsSeparator(output_[cut - 1])) {
            --cut;
        }
        output_.resize(cut);
        // With nothing left in front, a separator would make the path absolute.
        if (!hasParent) {
            SkipSeparators();
        }
    }

    // Whether the output is only a root: a drive and its separator, or the leading separator.
    bool IsAtRoot() const {
        return output_.size() >= 2 ? output_[output_.size() - 2] == ':' : output_.size() == 1;
    }

    void SkipSeparators() { position_ = EndOfSeparators(text_, position_); }

    std::string_view text_;
    std::size_t position_ = 0;
    std::string output_;
    char separator_ = '\0';  // the first one met, which replaces all others
};

void ResolveUrl(char* path, const char* base) {
    std::replace(path, path + Q_StrLen(path), '\\', '/');
    char* url = nullptr;
    const bool isDone = Q_AbsoluteUrl((std::string(base) + "/").c_str(), path, &url) == 0;
    const Q_String owner(url);
    // A URL that is cut to the limit would name another file.
    Q_StrCopy(path, isDone && Q_StrLen(url) < kPathBufferSize ? url : nullptr);
}

// The path appended to the base, or alone if it is absolute.
std::string Join(const char* path, const char* base) {
    char joined[kPathBufferSize] = "";
    if (!Q_IsAbsolutePath(path)) {
        StorePath(joined, base == nullptr ? "" : base);
    }
    const std::uint32_t length = Q_StrLen(joined);
    if (*path != '\0' && length > 0 && !Q_IsSeparator(joined[length - 1])) {
        Q_StrCatChar(joined, '\\', kPathBufferSize);
    }
    Q_StrCatChars(joined, path, kPathBufferSize, Q_CurrentEncoding());
    return joined;
}

}  // namespace

void Q_ResolvePath(char* path, const char* base) {
    if (path == nullptr) {
        Q_Fatal();
    }
    if (Q_IsNetFile(path)) {
        return;
    }
    if (!Q_IsAbsolutePath(path) && Q_IsNetFile(base)) {
        ResolveUrl(path, base);
        return;
    }
    Q_ExpandPathVariables(path);
    StorePath(path, Normalizer(Join(path, base)).Run());
}

void Q_ExpandPathVariables(char* path) {
    if (path == nullptr) {
        Q_Fatal();
    }
    StorePath(path, ExpandVariables(path));
}

void Q_SetHomeFolder(const char* folder) {
    homeFolder = folder == nullptr ? "" : folder;
}

}  // namespace ventrix
