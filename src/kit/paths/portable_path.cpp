#include "kit/paths/portable_path.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "kit/paths/file_path.h"
#include "kit/paths/relative_path.h"
#include "kit/paths/rivlet.h"
#include "kit/text/strings.h"

namespace ventrix {
namespace {

constexpr std::size_t kLongestPath = kPathBufferSize - 1;
constexpr std::size_t kLongestComponent = 1024;

struct Token {
    std::string_view name;
    std::string text;
};

// Reads the text of a token, up to the next "<", and resolves its escapes.
std::string ReadTokenText(std::string_view& portable) {
    std::string text;
    while (!portable.empty() && portable[0] != '<') {
        if (portable[0] == '\\' && portable.size() > 1) {
            portable.remove_prefix(1);
        }
        text += portable[0];
        portable.remove_prefix(1);
    }
    return text;
}

// Reads the next token. Text before the first token gives a token without a name, and a name without its ">"
// extends to the end; neither is a known token.
Token ReadToken(std::string_view& portable) {
    Token token;
    const std::size_t end = portable.find('>');
    if (portable[0] == '<') {
        const std::size_t length = end == std::string_view::npos ? portable.size() : end + 1;
        token.name = portable.substr(0, length);
        portable.remove_prefix(length);
    }
    token.text = ReadTokenText(portable);
    return token;
}

// Appends the native form of the token. Unknown tokens are skipped. False for a token that must not follow
// the previous one.
bool AppendToken(const Token& token, std::string_view previous, std::string& native) {
    const bool isFirst = native.empty();
    if (token.name == "<r>") {
        native += isFirst ? "\\" : "";
        return isFirst || previous == "<v>";
    }
    if (token.name == "<h>") {
        native += "\\" + token.text + "\\";
        return isFirst;
    }
    if (token.name == "<v>") {
        native += token.text + "\\";
        return isFirst;
    }
    if (token.name == "<c>") {
        native += token.text + "\\";
        return true;
    }
    if (token.name == "<u>") {
        native += "..\\";
        return previous != "<r>";
    }
    return true;
}

std::optional<std::string> ToNative(std::string_view portable) {
    std::string native;
    std::string_view previous;
    while (!portable.empty()) {
        const Token token = ReadToken(portable);
        if (!AppendToken(token, previous, native) || native.size() > kLongestPath) {
            return std::nullopt;
        }
        previous = token.name;
    }
    if (native.size() < 2) {
        return std::nullopt;
    }
    native.pop_back();  // every token ends in a separator
    return native;
}

// The token of a component. A "<" in the component is escaped, since it would begin the next token.
std::string ComponentToken(std::string_view component) {
    if (component == ".") {
        return "";
    }
    if (component == "..") {
        return "<u>";
    }
    std::string token = "<c>";
    for (const char byte : component) {
        token += byte == '<' ? "\\<" : std::string(1, byte);
    }
    return token;
}

// Removes the root from the path and returns its token.
std::string TakeRoot(std::string_view& native) {
    std::string token;
    if (native.size() > 1 && native[1] == ':') {
        token = "<v>" + std::string(native.substr(0, 2));
        native.remove_prefix(2);
    } else if (!native.empty() && Q_IsSeparator(native[0])) {
        token = "<r>";
    }
    if (!native.empty() && Q_IsSeparator(native[0])) {
        native.remove_prefix(1);
    }
    return token;
}

std::optional<std::string> ToPortable(std::string_view native) {
    std::string portable = TakeRoot(native);
    while (!native.empty()) {
        const std::size_t end = std::min(native.find('\\'), native.size());
        // A component that is cut to the limit would name another file.
        if (end > kLongestComponent) {
            return std::nullopt;
        }
        portable += ComponentToken(native.substr(0, end));
        native.remove_prefix(std::min(end + 1, native.size()));
    }
    return portable;
}

char* Duplicate(const std::optional<std::string>& text) {
    return text ? Q_StrDup(text->c_str()) : nullptr;
}

}  // namespace

char* Q_PortableToNative(const char* text) {
    if (text == nullptr || Q_IsNetFile(text)) {
        return Q_StrDup(text);
    }
    return Duplicate(ToNative(text));
}

char* Q_NativeToPortable(const char* text, const char* anchor) {
    if (text == nullptr) {
        return nullptr;
    }
    char path[kPathBufferSize];
    if (Q_StrCopyN(path, text, sizeof path) != Q_StrLen(text)) {
        return nullptr;
    }
    MakePathRelative(path, anchor);
    return Q_IsNetFile(path) ? Q_StrDup(path) : Duplicate(ToPortable(path));
}

}  // namespace ventrix
