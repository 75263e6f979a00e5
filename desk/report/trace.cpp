#include "desk/report/trace.h"

#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

int StringTable::Add(std::string_view text) {
    if (const int known = Find(text); known != kUnknownString) {
        return known;
    }
    const int index = static_cast<int>(strings_.size());
    strings_.push_back(&indices_.emplace(text, index).first->first);
    return index;
}

int StringTable::Find(std::string_view text) const {
    const auto found = indices_.find(text);
    return found == indices_.end() ? kUnknownString : found->second;
}

std::string GroupKey(PieceKind kind, std::string_view content) {
    const char letter = kind == PieceKind::kAttributes ? 'A' : kind == PieceKind::kScoped ? 'S' : 'E';
    return std::string(1, letter) += Collapsed(content);
}

std::string Shortened(std::string_view text) {
    constexpr std::size_t kLongest = 100;
    if (text.size() <= kLongest) {
        return std::string(text);
    }
    std::size_t end = kLongest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    return std::string(text.substr(0, end)) + "…";
}

}  // namespace ventrix::desk
