#include <gtest/gtest.h>

#include "desk/xml/doctype.h"

namespace ventrix::desk {
namespace {

TEST(Doctype, GetsTheSystemIdAndKeepsTheRest) {
    const struct {
        const char* text;
        const char* changed;  // null: no root element
    } rows[] = {
        {"<!DOCTYPE r SYSTEM 'a.dtd'><r>&x;&#169;</r>", "<!DOCTYPE r SYSTEM \"NEW\"><r>&x;&#169;</r>"},
        {"<!DOCTYPE r PUBLIC \"-//X//Y\"\n  'a.dtd' [<!ENTITY e \"]>\">]>\r\n<r/>",
         "<!DOCTYPE r PUBLIC \"-//X//Y\"\n  \"NEW\" [<!ENTITY e \"]>\">]>\r\n<r/>"},
        {"<!DOCTYPE r PUBLIC '-//X//Y'><r/>", "<!DOCTYPE r PUBLIC '-//X//Y' \"NEW\"><r/>"},
        {"<!DOCTYPE r [<!ENTITY SYSTEM 'a'>]><r/>", "<!DOCTYPE r SYSTEM \"NEW\" [<!ENTITY SYSTEM 'a'>]><r/>"},
        {"<!DOCTYPE r><r/>", "<!DOCTYPE r SYSTEM \"NEW\"><r/>"},
        {"<!DOCTYPE r[]><r/>", "<!DOCTYPE r SYSTEM \"NEW\"[]><r/>"},
        {"<?xml version='1.0'?>\n<!-- <!DOCTYPE no> --><?p <r?>\n<a:r x='1'/>",
         "<?xml version='1.0'?>\n<!-- <!DOCTYPE no> --><?p <r?>\n<!DOCTYPE a:r SYSTEM \"NEW\">\n<a:r "
         "x='1'/>"},
        {"\xEF\xBB\xBF<r/>", "\xEF\xBB\xBF<!DOCTYPE r SYSTEM \"NEW\">\n<r/>"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><r>\xE4</r>",
         "<?xml version='1.0' encoding='ISO-8859-1'?><!DOCTYPE r SYSTEM \"NEW\">\n<r>\xE4</r>"},
        {"", nullptr},
        {"  <!-- no end", nullptr},
        {"text", nullptr},
    };
    for (const auto& row : rows) {
        const auto changed = WithSystemId(row.text, "NEW");
        ASSERT_EQ(changed.has_value(), row.changed != nullptr) << row.text;
        EXPECT_EQ(changed.value_or(""), row.changed == nullptr ? "" : row.changed) << row.text;
    }
}

TEST(Doctype, TruncatedDocumentsAreHandled) {
    const std::string text =
        "<?xml version='1.0'?><!--c--><!DOCTYPE r PUBLIC \"p\" 's' [<!ENTITY e 'v'>]><r/>";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const auto changed = WithSystemId(text.substr(0, length), "NEW");
        EXPECT_EQ(changed.has_value(), changed.value_or("").find("\"NEW\"") != std::string::npos) << length;
    }
}

TEST(Doctype, Utf16IsConvertedToUtf8) {
    const std::u16string wide = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><r>\u00e4\U0001d444&x;</r>";
    const char* const expected =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE r SYSTEM \"NEW\">\n<r>\u00e4\U0001d444&x;</r>";
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (const char16_t unit : wide) {
        little += {static_cast<char>(unit & 0xff), static_cast<char>(unit >> 8)};
        big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xff)};
    }
    EXPECT_EQ(WithSystemId(little, "NEW"), expected);
    EXPECT_EQ(WithSystemId(big, "NEW"), expected);
}

}  // namespace
}  // namespace ventrix::desk
