#include <algorithm>
#include <iterator>
#include <string_view>

#include "bridge/notifications.h"
#include "kit/memory.h"

namespace ventrix {
namespace {

constexpr char kRecordSeparator = 0x1E;

char* NewPiece(std::string_view piece) {
    auto* copy = static_cast<char*>(Q_Calloc(static_cast<std::uint32_t>(piece.size()) + 1, 1, kMustSucceed));
    piece.copy(copy, piece.size());
    return copy;
}

// Takes the next piece off the text.
std::string_view NextPiece(std::string_view* text) {
    const std::string_view piece = text->substr(0, text->find(kRecordSeparator));
    text->remove_prefix(std::min(piece.size() + 1, text->size()));
    return piece;
}

}  // namespace

Q_NoticeFieldsRecord ParseNoticeFields(const char* text) {
    std::string_view rest = text == nullptr ? "" : text;
    const auto pieces = static_cast<std::size_t>(std::count(rest.begin(), rest.end(), kRecordSeparator)) + 1;
    Q_NoticeFieldsRecord record = {};
    const std::size_t fieldCount = std::min(pieces, std::size(record.fields));
    std::generate_n(record.fields, fieldCount, [&rest] { return NewPiece(NextPiece(&rest)); });
    if (pieces > fieldCount) {
        record.furtherCount = static_cast<std::uint32_t>(pieces - fieldCount);
        record.further = static_cast<char**>(Q_Calloc(record.furtherCount, sizeof(char*), kMustSucceed));
        std::generate_n(record.further, record.furtherCount, [&rest] { return NewPiece(NextPiece(&rest)); });
    }
    return record;
}

void FreeNoticeFields(Q_NoticeFieldsRecord* record) {
    std::for_each(std::begin(record->fields), std::end(record->fields), Q_Free);
    std::for_each_n(record->further, record->furtherCount, Q_Free);
    Q_Free(record->further);
    *record = {};
}

}  // namespace ventrix
