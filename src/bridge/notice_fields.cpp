#include "bridge/notice_fields.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "kit/memory.h"

namespace ventrix {
namespace {

constexpr char kRecordSeparator = 0x1E;

char* CopyField(std::string_view field) {
    auto* copy = static_cast<char*>(Q_Calloc(static_cast<std::uint32_t>(field.size()) + 1, 1, kMustSucceed));
    field.copy(copy, field.size());
    return copy;
}

// Removes the next field and its separator from the text.
std::string_view TakeField(std::string_view* text) {
    const std::string_view field = text->substr(0, text->find(kRecordSeparator));
    text->remove_prefix(std::min(field.size() + 1, text->size()));
    return field;
}

}  // namespace

Q_NoticeFieldsRecord ParseNoticeFields(const char* text) {
    std::string_view rest = text == nullptr ? "" : text;
    const auto total = static_cast<std::size_t>(std::count(rest.begin(), rest.end(), kRecordSeparator)) + 1;
    Q_NoticeFieldsRecord record = {};
    const std::size_t fieldCount = std::min(total, std::size(record.fields));
    std::generate_n(record.fields, fieldCount, [&rest] { return CopyField(TakeField(&rest)); });
    if (total > fieldCount) {
        record.furtherCount = static_cast<std::uint32_t>(total - fieldCount);
        record.further = static_cast<char**>(Q_Calloc(record.furtherCount, sizeof(char*), kMustSucceed));
        std::generate_n(record.further, record.furtherCount, [&rest] { return CopyField(TakeField(&rest)); });
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
