#include "desk/documents/dtd_files.h"

#include <algorithm>
#include <string>

namespace ventrix::desk {
namespace {

constexpr std::string_view kWhitespace = " \t\r\n";
constexpr std::size_t kNpos = std::string_view::npos;

std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kWhitespace), text.size()));
    const std::size_t end = std::min(text.find_first_of(" \t\r\n\"'", text.empty() ? 0 : 1), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    return word;
}

std::string_view TakeLiteral(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kWhitespace), text.size()));
    const char quote = text.empty() ? '\0' : text.front();
    const std::size_t end = quote == '"' || quote == '\'' ? text.find(quote, 1) : kNpos;
    if (end == kNpos) {
        return {};
    }
    const std::string_view literal = text.substr(1, end - 1);
    text.remove_prefix(end + 1);
    return literal;
}

/// `declaration` is what follows "<!ENTITY", to the end of the file.
void AppendEntity(std::string_view declaration, std::vector<Reference>& list) {
    std::string_view word = TakeWord(declaration);
    const bool parameter = word == "%";
    if (parameter) {
        TakeWord(declaration);
    }
    word = TakeWord(declaration);
    const std::string_view file = word == "SYSTEM" ? TakeLiteral(declaration) : std::string_view();
    const bool isText = TakeWord(declaration).starts_with('>');
    if (file.empty() || !isText || file.starts_with('/') || file.find(':') != kNpos) {
        return;
    }
    Reference reference{.text = std::string(file)};
    reference.optional = true;
    reference.dtd = parameter;
    reference.follow = !parameter;
    reference.confined = !parameter;
    list.push_back(std::move(reference));
}

}  // namespace

std::vector<Reference> ReferencesOfDtd(std::string_view dtd) {
    constexpr std::string_view kEntity = "<!ENTITY";
    std::vector<Reference> list;
    for (std::size_t at = dtd.find("<!"); at != kNpos; at = dtd.find("<!", at)) {
        const std::string_view rest = dtd.substr(at);
        if (rest.starts_with("<!--")) {
            const std::size_t end = rest.find("-->");
            at = end == kNpos ? dtd.size() : at + end + 3;
        } else {
            if (rest.starts_with(kEntity)) {
                AppendEntity(rest.substr(kEntity.size()), list);
            }
            at += 2;
        }
    }
    return list;
}

}  // namespace ventrix::desk
