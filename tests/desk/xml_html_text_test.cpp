#include "desk/xml/html_text.h"

#include <gtest/gtest.h>

#include "support/page_query.h"

namespace ventrix::desk {
namespace {

TEST(HtmlText, PagesBecomeXhtml) {
    const struct {
        const char *body, *written;
    } rows[] = {
        {"a<br>b<hr></hr>", ""},
        {"a<br>b<IMG src=x><wbr/>", "a<br />b<IMG src=\"x\" /><wbr />"},
        {"<div/><textarea></textarea>", "<div></div><textarea></textarea>"},
        {"<input checked value='\"1<2&amp;3&4'>",
         "<input checked=\"checked\" value=\"&quot;1&lt;2&amp;3&amp;4\" />"},
        {"<script>if (1 < 2 && 3) {}</script>", "<script>/*<![CDATA[*/if (1 < 2 && 3) {}/*]]>*/</script>"},
        {"<br /><script>if (1 &lt; 2) {}</script>",
         "<br /><script>/*<![CDATA[*/if (1 < 2) {}/*]]>*/</script>"},
        {"<br><style>a > b {}</style>", "<br /><style>a > b {}</style>"},
        {"<!--a<br>b--><?go on><br>", "<!--a<br>b--><?go on?><br />"},
        {"1 < 2&nbsp;&#169;&lt;<br>", "1 &lt; 2\u00a0\u00a9&lt;<br />"},
        {"<p>unclosed", ""},
    };
    const std::string meta = "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" />";
    for (const auto& row : rows) {
        const std::string page = std::string("<html><head></head><body>") + row.body + "</body></html>";
        const std::string written =
            "<html><head>" + meta + "</head><body>" + row.written + "</body></html>\n";
        EXPECT_EQ(XhtmlOfPage(page), *row.written == '\0' ? "" : written) << row.body;
    }
}

TEST(HtmlText, TheDoctypeIsKeptAndTheEncodingIsNot) {
    const std::string latin = "<meta charset=\"ISO-8859-1\">";
    const struct {
        std::string page, start;
    } rows[] = {
        {"<!DOCTYPE html>\n<html><br>\u00e4</html>", "<!DOCTYPE html>\n<html><br />\u00e4<"},
        {"<!DOCTYPE html\n PUBLIC \"P\">\n<html><br></html>", "<!DOCTYPE html PUBLIC \"P\" \"\">\n<html>"},
        {"<!DOCTYPE html SYSTEM \"about:legacy-compat\">\n<html/>",
         "<!DOCTYPE html SYSTEM \"about:legacy-compat\">\n<html>"},
        {"<html>" + latin + "\xE4</html>", "<html>\u00e4<"},
        {std::string("\xFF\xFE<\0b\0r\0>\0", 10), "<br />"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><html>\xE4</html>", "<html>\u00e4<"},
        {"<data><br/></data>", ""},
        {"plain text", ""},
    };
    for (const auto& row : rows) {
        const std::string page = XhtmlOfPage(row.page);
        EXPECT_EQ(page.substr(0, row.start.size()), row.start) << row.page;
        EXPECT_EQ(page.empty(), row.start.empty()) << row.page;
    }
}

}  // namespace
}  // namespace ventrix::desk
