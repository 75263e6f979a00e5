#include "desk/checks/visible_markers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <optional>
#include <string_view>

#include "desk/xml/encodings.h"
#include "desk/xml/limits.h"
#include "desk/xml/markup_in_text.h"
#include "platform/native_files.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kNpos = std::string_view::npos;
constexpr std::string_view kPrefix = "ql_";
constexpr std::array<std::string_view, 9> kWordEnds = {"_start", "_end",  "_eq",     "_target", "_sep",
                                                       "_sa_s",  "_sa_e", "_elem_s", "_elem_e"};

/// How much of the words around a piece says whether it is from a source.
constexpr std::size_t kCompared = 8;

char Lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) { return Lower(c); });
    return lower;
}

bool IsWordByte(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool BeginsWith(std::string_view text, std::string_view lowerWord) {
    return text.size() >= lowerWord.size() && std::equal(lowerWord.begin(), lowerWord.end(), text.begin(),
                                                         [](char word, char c) { return word == Lower(c); });
}

bool HasPrefix(std::string_view text, std::size_t underscore) {
    return underscore >= 2 && BeginsWith(text.substr(underscore - 2), kPrefix);
}

/// Whether a marker word, or the beginning of one at the end of a word, has its "_" here.
bool HasWordBegin(std::string_view text, std::size_t underscore) {
    if (!HasPrefix(text, underscore)) {
        return false;
    }
    const std::string_view rest = text.substr(underscore);
    const auto wordEnd = std::ranges::find_if_not(rest, IsWordByte);
    const std::string part = Lower(rest.substr(0, static_cast<std::size_t>(wordEnd - rest.begin())));
    return std::ranges::any_of(
        kWordEnds, [&part](std::string_view end) { return part.starts_with(end) || end.starts_with(part); });
}

/// Whether the "_" is in the end of a marker word. `isStart` says that only its "L" can be before it.
bool HasWordEnd(std::string_view text, std::size_t underscore, const std::function<bool()>& isStart) {
    return std::ranges::any_of(kWordEnds, [rest = text.substr(underscore)](
                                              std::string_view end) { return BeginsWith(rest, end); }) &&
           isStart();
}

/// The position of the next piece in a text; npos if there is none.
std::size_t FindPiece(std::string_view text, std::size_t from) {
    for (std::size_t at = text.find('_', from); at != kNpos; at = text.find('_', at + 1)) {
        if (HasWordBegin(text, at)) {
            return at - 2;
        }
        const std::size_t begin = at - (at > 0 && Lower(text[at - 1]) == 'l' ? 1 : 0);
        const auto isStart = [&] { return std::ranges::none_of(text.substr(0, begin), IsWordByte); };
        if (HasWordEnd(text, at, isStart)) {
            return begin;
        }
    }
    return kNpos;
}

/// What is compared with the sources: the piece with the letters around it.
std::string ComparedText(std::string_view text, std::size_t piece) {
    const std::size_t begin = piece - (piece > 0 && IsWordByte(text[piece - 1]) ? 1 : 0);
    const std::string_view rest = text.substr(begin, kCompared + kPrefix.size() + 1);
    const auto end = std::ranges::find_if_not(rest, IsWordByte);
    return Lower(rest.substr(0, static_cast<std::size_t>(end - rest.begin())));
}

/// The surroundings of everything in the user's own texts that looks like a piece.
class OwnWords {
  public:
    explicit OwnWords(const OwnText& own) : own_(own) {}

    bool Contain(const std::string& compared) {
        if (!isRead_) {
            Read();
        }
        return words_.find(compared) != std::string::npos;
    }

  private:
    void Read() {
        isRead_ = true;
        for (const std::string& text : own_.texts) {
            Add(text);
        }
        for (const NativePath& file : own_.files) {
            std::string content;
            if (platform::ReadRegularFile(ToFilesystem(file), kMaxFileBytes, content)) {
                continue;
            }
            if (const char* encoding = Utf16Encoding(content)) {
                Add(ToUtf8(content, encoding).value_or(std::string()));
            } else if (content.find('\0') == std::string::npos) {
                Add(content);
            }
        }
    }

    void Add(std::string_view text) {
        for (std::size_t at = text.find('_'); at != kNpos; at = text.find('_', at + 1)) {
            if (HasPrefix(text, at) || HasWordEnd(text, at, [] { return true; })) {
                const std::size_t begin = at - std::min(at, kPrefix.size() + 1);
                words_ += Lower(text.substr(begin, 2 * (kCompared + kPrefix.size()))) + '\n';
            }
        }
    }

    const OwnText& own_;
    std::string words_;
    bool isRead_ = false;
};

/// The length of what is not text at the start of `html`, which begins with "<": a tag, a comment, or a whole
/// script or style.
std::size_t MarkupLength(std::string_view html) {
    const auto past = [html](std::string_view end) {
        const std::size_t at = html.find(end);
        return at == kNpos ? html.size() : at + end.size();
    };
    if (html.starts_with("<!--")) {
        return past("-->");
    }
    const std::size_t tag = TagLength(html);
    const bool isEmpty = html.substr(0, tag).ends_with("/>");
    for (const std::string_view name : {"script", "style"}) {
        const std::string_view rest = html.substr(1);
        if (!isEmpty && BeginsWith(rest, name) && rest.size() > name.size() &&
            !IsWordByte(rest[name.size()])) {
            return past("</" + std::string(html.substr(1, name.size())));
        }
    }
    return tag;
}

/// The position of the first piece in the texts of a page that is not from the sources; npos if there is
/// none.
std::size_t FirstPieceIn(std::string_view page, OwnWords& own, std::string_view& text) {
    for (std::size_t at = 0; at < page.size();) {
        const std::size_t end = std::min(page.find('<', at), page.size());
        text = page.substr(at, end - at);
        for (std::size_t piece = FindPiece(text, 0); piece != kNpos;
             piece = FindPiece(text, piece + kPrefix.size())) {
            if (!own.Contain(ComparedText(text, piece))) {
                return at + piece;
            }
        }
        at = end == page.size() ? end : end + MarkupLength(page.substr(end));
    }
    return kNpos;
}

bool IsFirstByte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

/// The words around a position in a text, as one line.
std::string ExcerptOf(std::string_view text, std::size_t at) {
    constexpr std::size_t kBefore = 20;
    constexpr std::size_t kLength = 60;
    std::size_t begin = at - std::min(at, kBefore);
    std::size_t end = std::min(begin + kLength, text.size());
    while (begin < at && !IsFirstByte(text[begin])) {
        ++begin;
    }
    while (end < text.size() && !IsFirstByte(text[end])) {
        ++end;
    }
    std::string excerpt(text.substr(begin, end - begin));
    std::ranges::replace_if(
        excerpt, [](unsigned char c) { return c < ' '; }, ' ');
    return (begin > 0 ? "..." : "") + excerpt + (end < text.size() ? "..." : "");
}

VisibleMarker MarkerAt(const NativePath& page, std::string_view content, std::size_t at,
                       std::string_view text) {
    const std::string_view before = content.substr(0, at);
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    return {page, static_cast<int>(std::ranges::count(before, '\n')) + 1,
            static_cast<int>(std::ranges::count_if(line, IsFirstByte)) + 1,
            ExcerptOf(text, at - static_cast<std::size_t>(text.data() - content.data()))};
}

}  // namespace

std::vector<VisibleMarker> FindVisibleMarkers(const std::vector<NativePath>& pages, const OwnText& own) {
    std::vector<VisibleMarker> found;
    OwnWords ownWords(own);
    for (const NativePath& page : pages) {
        std::string content;
        // A page that cannot be read has been reported.
        platform::ReadRegularFile(ToFilesystem(page), kMaxFileBytes, content);
        std::string_view text;
        if (const std::size_t at = FirstPieceIn(content, ownWords, text); at != kNpos) {
            found.push_back(MarkerAt(page, content, at, text));
        }
    }
    return found;
}

}  // namespace ventrix::desk
