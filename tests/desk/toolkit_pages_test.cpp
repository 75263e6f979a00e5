// What the pages of the built-in toolkit have around their content.
#include "desk/dita_fixture.h"
#include "support/text_rows.h"

namespace ventrix::desk {
namespace {

class PageFrames : public DitaClient {
  protected:
    void WriteTopics(int count) const {
        for (int i = 0; i < count; ++i) {
            const std::string number = std::to_string(i);
            Write("t" + number + ".dita", "<topic id='t'><title>Topic " + number + "</title></topic>");
        }
    }
};

constexpr char kItems[] = "//nav[@id='ventrix-contents']//li";

TEST_F(PageFrames, LargeContentsShowTheNeighbourhood) {
    const int count = 150;
    WriteTopics(count);
    std::string flat;
    std::string deep;
    for (int i = 0; i < count; ++i) {
        flat += "<topicref href='t" + std::to_string(i) + ".dita'/>";
        deep += "<topicref href='t" + std::to_string(i) + ".dita'>";
    }
    const auto items = [&](const std::string& page, const std::string& which) {
        return QueryFrame(page, "concat(count(" + std::string(kItems) + "), '|', " + kItems + which + ")");
    };
    Write("m.ditamap", "<map title='M'>" + flat + "</map>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(items("t75.html", "[2]/a"), "19|Topic 67");
    EXPECT_EQ(items("t75.html", "[last()]/a/@href"), "19|index.html");
    EXPECT_EQ(items("t0.html", "[1]/a"), "10|Topic 0");
    EXPECT_EQ(items("t149.html", "[last()]/a[@aria-current]"), "10|Topic 149");
    EXPECT_EQ(Query("index.html", "count(//li)"), "150");

    Write("m.ditamap", "<map title='M'>" + deep + test::Repeated("</topicref>", count) + "</map>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    EXPECT_EQ(items("t75.html", "//a[@aria-current]"), "9|Topic 75");
    EXPECT_EQ(QueryFrame("t75.html", std::string(kItems) + "[contains(@class, 'closed')]/a"), "Topic 76");
    EXPECT_EQ(QueryFrame("t75.html", "count(//nav[@class='ventrix-breadcrumb']//li)"), "8");
}

TEST_F(PageFrames, PagesNameTheirPlaceInTheMap) {
    WriteTopics(7);
    Write(
        "m.ditamap",
        "<map><title>M</title><topichead navtitle='Head'><topicref href='t0.dita'><topicref href='t1.dita'/>"
        "</topicref></topichead><topicref href='gone.dita'/><topicref href='t2.dita' toc='no'>"
        "<topicref href='t3.dita' toc='yes'/></topicref><topicref href='t0.dita'/>"
        "<topicref href='https://example.org' format='html' scope='external' navtitle='Web'/>"
        "<topicref href='t4.dita' locktitle='yes' navtitle='Locked'/></map>");
    Write("t4.dita", "<topic id='t'><title/><body><xref href='t5.dita'/></body></topic>");
    ASSERT_EQ(Run("m.ditamap"), 0) << record_.reason;
    const char* const place =
        "concat(//nav[@class='ventrix-breadcrumb'], '|', //a[@rel='prev']/@href, '|', "
        "//a[@rel='next']/@href)";
    const struct {
        const char *page, *value;
    } rows[] = {
        {"index.html", "||t0.html"},
        {"t0.html", "HomeHeadTopic 0|index.html|t1.html"},
        {"t1.html", "HomeHeadTopic 0Topic 1|t0.html|t3.html"},
        {"t3.html", "HomeTopic 3|t1.html|t4.html"},
        {"t4.html", "Homet4|t3.html|"},
        {"t2.html", "HomeTopic 2||"},  // Hidden.
        {"t5.html", "HomeTopic 5||"},  // Reached by a link alone.
    };
    for (const auto& row : rows) {
        EXPECT_EQ(QueryFrame(row.page, place), row.value) << row.page;
    }
    EXPECT_EQ(QueryFrame("t5.html", "//nav[@id='ventrix-contents']"),
              "HeadTopic 0Topic 1\n\n\nTopic 3\nTopic 0\nWeb\nLocked\n");
    EXPECT_EQ(QueryFrame("t4.html", "//title"), "t4 - M");
}

TEST_F(PageFrames, HeadsHoldPlainText) {
    settings_.design.title = "The <guide>";
    Write("t.dita",
          "<topic id='t'><title>QL_STARTaQL_EQbQL_TARGETQL_SEPQL_ENDA  "
          "QL_ELEM_S&amp;lt;uicontrol&amp;gt;B&amp;lt;/uicontrol&amp;gt;QL_ELEM_E\n "
          "c</title><abstract><shortdesc>About "
          "<ph>it</ph><indexterm>no</indexterm><draft-comment>no</draft-comment>.</shortdesc></abstract></"
          "topic>");
    ASSERT_EQ(Run("t.dita"), 0) << record_.reason;
    EXPECT_EQ(
        QueryFrame("t.html", "concat(//title, '|', //meta[@name='description']/@content, '|', //header/a)"),
        "A B c - The <guide>|About it.|The <guide>");
}

}  // namespace
}  // namespace ventrix::desk
