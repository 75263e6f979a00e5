#include "kit/format/templates.h"

#include "kit/kit_environment.h"
#include "kit/resource_strings.h"
#include "platform/module.h"
#include "support/text_rows.h"

namespace ventrix::test {
namespace {

constexpr Q_TemplateArguments kSomeArguments = {{{'s', {.text = "guide.ditamap"}},
                                                 {'d', {.integer = -12}},
                                                 {'x', {.integer = 0xBEEF}},
                                                 {'X', {.integer = 0xBEEF}},
                                                 {'f', {.number = 2.5}},
                                                 {'s', {.text = nullptr}}}};

std::string Expanded(const char* text, std::uint32_t size = 100) {
    char output[100] = "old";
    EXPECT_EQ(Q_ExpandTemplate(text, output, size, &kSomeArguments), 0);
    return output;
}

TEST(Templates, InsertTheirArguments) {
    const TextRow rows[] = {
        {"no placeholder", "no placeholder"},
        {"%0 has %1 errors", "guide.ditamap has -12 errors"},
        {"%2 %3 %4", "beef BEEF 2.500"},
        {"[%5][%6][%9]", "[][???][???]"},
        {"%{0 the document}: %{1}", "guide.ditamap: -12"},
        {"[%{}][%{z}][%{9}]", "[][???][???]"},
        {"%{0 never closed", "guide.ditamap"},
        {"[%{", "["},
        {"100%% of %zall", "100% of %all"},
        {"at the end %", "at the end %"},
        {"%{%} %{p name}", "% Quorlane"},
        {"%p and %u.", "Quorlane and ."},
        {"", ""},
    };
    ExpectRows(rows, [](const std::string& text) { return Expanded(text.c_str()); });
    char output[8] = "old";
    EXPECT_EQ(Q_ExpandTemplate("%0", output, sizeof output, nullptr), 0);
    EXPECT_STREQ(output, "???");
    EXPECT_EQ(Q_ExpandTemplate(nullptr, output, sizeof output, nullptr), 0);
    EXPECT_STREQ(output, "");
    EXPECT_EQ(Q_ExpandTemplate("x", nullptr, 8, nullptr), 0);
    EXPECT_EQ(Q_ExpandTemplate("x", output, 0, nullptr), 0);
}

TEST(Templates, InsertedTextIsShortenedInTheMiddle) {
    const struct {
        const char* text;
        std::uint32_t size;
        const char* expanded;
    } rows[] = {
        {"%0!", 15, "guide.ditamap!"},
        {"%0!", 14, "guid...tamap!"},  // one byte too few: shortened in the middle
        {"<%0>", 10, "<gu...ap>"},
        {"<%0>", 9, "<g...ap>"},
        {"<%0>", 8, "<guide>"},  // fewer than six bytes: cut off
        {"<%0>", 3, "<>"},
        {"<%0>", 2, "<"},
        {"<%0>", 1, ""},
        {"ääää", 6, "ää"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Expanded(row.text, row.size), row.expanded) << row.text << " in " << row.size;
    }
    Q_SetUserName("ÄÖÜäöüßÄÖÜäöü");
    EXPECT_EQ(Expanded("%u", 13), "ÄÖ...öü");
    Q_SetUserName(nullptr);
}

TEST(Templates, InsertTheHostAndItsUser) {
    EXPECT_EQ(Q_SetHostVariant("QUORLANE XML author"), 0);
    Q_SetUserName("Ada");
    EXPECT_EQ(Expanded("%p of %u"), "Quorlane XML Author of Ada");
    Q_SetHostVariant(nullptr);
    Q_SetUserName("");
    EXPECT_EQ(Expanded("%p of %u"), "Quorlane of ");
}

TEST(Templates, AreLoadedFromResources) {
    constexpr platform::StringResource kStrings[] = {
        {1, u"%0: %1 (%2) %3%L21"}, {2, u"Größe %0"}, {3, u"%0%1%2%3%4%5%6%7%8%9"}};
    platform::ModuleResources resources{};
    resources.strings = kStrings;
    platform::BindResources(&resources, &resources);
    Q_SetResourceModule(&resources);
    char output[64] = "old";
    EXPECT_EQ(Q_LoadResourceTemplate(1, output, sizeof output, "sdfr", "a", 7, 0.5, 2), 0);
    EXPECT_STREQ(output, "a: 7 (0.500) Größe ?\?\?!");
    EXPECT_EQ(Q_LoadResourceTemplate(1, output, sizeof output, "rd?d", 99, 7, 8), 0);
    EXPECT_STREQ(output, ": 7 (?\?\?) ?\?\?!");
    EXPECT_EQ(
        Q_LoadResourceTemplate(3, output, sizeof output, "ddddddddddd", 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10), 0);
    EXPECT_STREQ(output, "0123456789");
    EXPECT_EQ(Q_LoadResourceTemplate(2, output, sizeof output, nullptr), 0);
    EXPECT_STREQ(output, "Größe ???");
    EXPECT_EQ(Q_LoadResourceTemplate(9, output, sizeof output, ""), -1);
    EXPECT_STREQ(output, "");
    EXPECT_EQ(Q_LoadResourceTemplate(1, output, 0, ""), -1);
    Q_SetResourceModule(nullptr);
    platform::BindResources(&resources, nullptr);
}

}  // namespace
}  // namespace ventrix::test
