#include "desk/report/matching.h"

#include <gtest/gtest.h>

#include "desk/report/marker_pieces.h"

namespace ventrix::desk {
namespace {

TEST(MarkerPieces, SplitAStringAtWholeGroups) {
    const struct {
        const char* text;
        std::vector<std::string> pieces;  ///< The content, after a letter for the kind.
    } rows[] = {
        {"", {}},
        {"words", {"Pwords"}},
        {"QL_STARTaQL_ENDwords", {"Aa", "Pwords"}},
        {"xQL_SA_Sp QL_SEPy QL_SA_EQL_ELEM_S&lt;b/&gt;QL_ELEM_E", {"Px", "Sp QL_SEPy ", "E&lt;b/&gt;"}},
        {"QL_STARTno end QL_SA_Sa QL_SA_E", {"PQL_STARTno end ", "Sa "}},
        {"QL_ENDQL_ QL_SEP", {"PQL_ENDQL_ QL_SEP"}},
    };
    for (const auto& row : rows) {
        std::vector<std::string> pieces;
        for (const MarkerPiece& piece : SplitAtGroups(row.text)) {
            pieces.push_back("PASE"[static_cast<std::size_t>(piece.kind)] + std::string(piece.content));
        }
        EXPECT_EQ(pieces, row.pieces) << row.text;
    }
}

TEST(MarkerPieces, EntriesEndAtTheFirstThatLacksAWord) {
    const auto entries = EntriesOf("aQL_EQ1QL_TARGETQL_SEPbQL_EQ2QL_TARGETtQL_SEPcQL_EQ3QL_SEP");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[1].name, "b");
    EXPECT_EQ(entries[1].value, "2");
    EXPECT_EQ(entries[1].target, "t");
}

/// Groups as numbers: a carrier or an arrival is {group, words, file}.
struct Group {
    int group, words, file;
};

std::vector<Match> MatchOf(const std::vector<Group>& carriers, const std::vector<Group>& arrivals) {
    SourceTrace sources;
    for (const Group& group : carriers) {
        Carrier& carrier = sources.carriers.emplace_back();
        carrier.group = group.group;
        carrier.context = group.words;
        carrier.place = {group.file, 1, "/x", ""};
        carrier.items = {{0, 0}};
    }
    ResultTrace result;
    std::vector<int> sourceOfPage;
    for (const Group& group : arrivals) {
        Arrival arrival;
        arrival.group = group.group;
        arrival.context = group.words;
        arrival.page = static_cast<int>(sourceOfPage.size());
        sourceOfPage.push_back(group.file);
        result.arrivals.push_back(arrival);
    }
    return MatchGroups(sources, result, sourceOfPage);
}

std::string Shown(const std::vector<Match>& matches) {
    std::string shown;
    const auto add = [&shown](const std::vector<int>& indices) {
        for (const int index : indices) {
            shown += std::to_string(index);
        }
    };
    for (const Match& match : matches) {
        add(match.carriers);
        shown += match.repeatsOnly ? '+' : ':';
        add(match.arrivals);
        shown += ' ';
    }
    return shown;
}

TEST(Matching, ComparesFileAndWordsBeforeItGivesUp) {
    constexpr int kNowhere = -1;
    const struct {
        const char* what;
        std::vector<Group> carriers, arrivals;
        const char* matches;  ///< Carriers, ":", arrivals of each match.
    } rows[] = {
        {"a group that differs", {{1, 1, 0}}, {{1, 9, kNowhere}, {2, 1, 0}}, "0:0 "},
        {"by words", {{1, 1, 0}, {1, 2, 0}}, {{1, 2, 0}}, "0: 1:0 "},
        {"by file", {{1, 1, 0}, {1, 1, 1}}, {{1, 1, 1}}, "0: 1:0 "},
        {"changed words in the same file", {{1, 1, 0}, {1, 2, 1}}, {{1, 9, 1}}, "0: 1:0 "},
        {"the other file's place is taken",
         {{1, 1, 0}, {1, 1, 1}},
         {{1, 1, 0}, {1, 1, kNowhere}},
         "0:0 1:1 "},
        {"too few for equal groups", {{1, 1, 0}, {1, 1, 0}}, {{1, 1, 0}}, "01:0 "},
        {"either of two files", {{1, 1, 0}, {1, 1, 1}}, {{1, 1, kNowhere}}, "01:0 "},
        {"repeated", {{1, 1, 0}, {1, 2, 0}}, {{1, 1, 0}, {1, 2, 0}, {1, 1, kNowhere}}, "0:02 1:1 "},
        {"one of two repeated",
         {{1, 1, 0}, {1, 1, 1}},
         {{1, 1, 0}, {1, 1, 1}, {1, 1, kNowhere}},
         "0:0 1:1 01+2 "},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Shown(MatchOf(row.carriers, row.arrivals)), row.matches) << row.what;
    }
}

}  // namespace
}  // namespace ventrix::desk
