#include "markers/marker_format.h"

#include <chrono>

#include "markers/xml/characters.h"
#include "support/text_rows.h"

namespace ventrix::test {
namespace {

template <typename Part>
std::string Joined(const std::vector<Part>& parts) {
    std::string joined;
    for (const std::string_view part : parts)
        joined.append(joined.empty() ? "[" : " [").append(part).append("]");
    return joined;
}

std::string WithoutAttributeGroups(const std::string& text) {
    std::string buffer;
    return std::string(StripAttributeGroups(text, buffer));
}

TEST(MarkerText, TrimBlanksRemovesFourWhitespaceCharacters) {
    const TextRow rows[] = {
        {"", ""},         {" ", ""},
        {" \t\r\n ", ""}, {"\n a b\t", "a b"},
        {"\v a", "\v a"}, {"\xC2\xA0 ", "\xC2\xA0"},
    };
    for (const TextRow& row : rows) {
        EXPECT_EQ(TrimBlanks(row.input), row.output);
    }
}

TEST(MarkerText, ReplaceAllDoesNotSearchInsertedText) {
    struct {
        std::string text, oldText, newText, result;
    } rows[] = {
        {"aXbXc", "X", "XX", "aXXbXXc"}, {"aaa", "aa", "b", "ba"}, {"aabb", "ab", "", "ab"},
        {"abc", "x", "y", "abc"},        {"abc", "", "y", "abc"},
    };
    for (auto& row : rows) {
        ReplaceAll(row.text, row.oldText, row.newText);
        EXPECT_EQ(row.text, row.result);
    }
}

TEST(MarkerText, EscapesFiveCharactersAndUnescapesOneLevel) {
    std::string text = "<a b=\"1\" c='2'>&amp;</a>";
    EscapeMarkup(text);
    EXPECT_EQ(text, "&lt;a b=&quot;1&quot; c=&apos;2&apos;&gt;&amp;amp;&lt;/a&gt;");
    UnescapeMarkup(text);
    EXPECT_EQ(text, "<a b=\"1\" c='2'>&amp;</a>");

    const TextRow rows[] = {
        {"&amp;amp;", "&amp;"}, {"&amp;lt;", "&lt;"}, {"&#38;&nbsp;&", "&#38;&nbsp;&"}, {"&LT;", "&LT;"}};
    ExpectRows(rows, [](std::string input) { return UnescapeMarkup(input), input; });
}

TEST(AttributeGroup, PrependMergesOnlyWithAClosedGroupAtTheFront) {
    const AttributeEntries entries = {"n", "v", "", "m", "w", "t"};
    const std::string written = "QL_STARTnQL_EQvQL_TARGETQL_SEPmQL_EQwQL_TARGETtQL_SEP";
    const TextRow rows[] = {
        {"text", written + "QL_ENDtext"},
        {"", written + "QL_END"},
        {"QL_STARToldQL_ENDtext", written + "oldQL_ENDtext"},
        {"QL_SA_SeQL_SEPaQL_SEPvQL_SA_Etext", written + "QL_ENDQL_SA_SeQL_SEPaQL_SEPvQL_SA_Etext"},
        {"x QL_STARToldQL_ENDtext", written + "QL_ENDx QL_STARToldQL_ENDtext"},
        {"QL_STARTopen", written + "QL_ENDQL_STARTopen"},
    };
    ExpectRows(rows, [&](std::string text) { return PrependAttributeGroup(text, entries), text; });
    std::string untouched = "QL_STARTaQL_ENDb";
    PrependAttributeGroup(untouched, {});
    EXPECT_EQ(untouched, "QL_STARTaQL_ENDb");
}

TEST(AttributeGroup, TakeCutsOnlyAtTheFront) {
    struct {
        std::string text, taken, left;
    } rows[] = {
        {"QL_STARTaQL_ENDb", "a", "b"},
        {"QL_STARTQL_END", "", ""},
        {" QL_STARTaQL_ENDb", "", " QL_STARTaQL_ENDb"},
        {"QL_STARTa", "", "QL_STARTa"},
        {"QL_STARTaQL_STARTbQL_ENDcQL_END", "aQL_STARTb", "cQL_END"},
    };
    for (auto& row : rows) {
        EXPECT_EQ(TakeAttributeGroup(row.text), row.taken);
        EXPECT_EQ(row.text, row.left);
    }
}

TEST(AttributeGroup, ParseReadsTheFirstGroupUpToTheFirstFault) {
    struct {
        std::string text, tagPairs, targetPairs;
    } rows[] = {
        {"no words", "", ""},
        {"QL_STARTaQL_EQ1QL_TARGETQL_SEPQL_ENDtext", "[a] [1]", ""},
        {"in front QL_STARTaQL_EQQL_TARGETQL_SEPQL_END", "[a] []", ""},
        {"QL_STARTaQL_EQ1QL_TARGETxQL_SEPbQL_EQ2QL_TARGETQL_SEPQL_END", "[b] [2]", "[x] [1]"},
        {"QL_STARTQL_EQ1QL_TARGETQL_SEPQL_END", "[] [1]", ""},
        {"QL_STARTaQL_EQ1QL_TARGETQL_SEPQL_ENDQL_STARTbQL_EQ2QL_TARGETQL_SEPQL_END", "[a] [1]", ""},
        {"QL_STARTaQL_EQ1QL_TARGETQL_SEP", "", ""},
        {"QL_STARTaQL_EQ1QL_TARGETQL_SEPrestQL_END", "[a] [1]", ""},
        {"QL_STARTaQL_EQ1QL_TARGETQL_SEPbQL_SEPcQL_EQ3QL_TARGETQL_SEPQL_END", "[a] [1]", ""},
        {"QL_STARTaQL_TARGETbQL_EQcQL_SEPQL_END", "", ""},
        {"QL_STARTaQL_EQQL_SEPQL_TARGETQL_END", "", ""},
        {"QL_STARTaQL_EQL_TARGETtQL_SEPQL_END", "", ""},
        {"QL_STARTaQL_EQ1QL_TARGETQL_ENDbQL_SEP", "", ""},
        // A closing word before the group makes it run to the end of the text.
        {"QL_ENDQL_STARTaQL_EQ1QL_TARGETQL_SEPQL_END", "[a] [1]", ""},
        {"QL_ENDQL_STARTaQL_EQ1QL_TARGETQL_SEPQL_ENDbQL_EQ2QL_TARGETQL_SEP", "[a] [1] [QL_ENDb] [2]", ""},
        // In a value, a second QL_EQ is data, and a QL_SEP ends the reading.
        {"QL_STARTaQL_EQ1QL_EQ2QL_TARGETQL_SEPQL_END", "[a] [1QL_EQ2]", ""},
        {"QL_STARTaQL_EQ1QL_SEP2QL_TARGETQL_SEPQL_END", "", ""},
    };
    for (const auto& row : rows) {
        AttributePairs tagPairs, targetPairs;
        ParseAttributeGroup(row.text, tagPairs, targetPairs);
        EXPECT_EQ(Joined(tagPairs), row.tagPairs) << row.text;
        EXPECT_EQ(Joined(targetPairs), row.targetPairs) << row.text;
    }
}

TEST(AttributeGroup, StripRemovesEveryClosedGroup) {
    const TextRow rows[] = {
        {"", ""},
        {"THAT", "THAT"},
        {"aQL_STARTxQL_ENDbQL_STARTyQL_ENDc", "abc"},
        {"QL_STARTQL_END", ""},
        {"aQL_STARTx", "aQL_STARTx"},
        {"aQL_STARTxQL_ENDbQL_STARTy", "abQL_STARTy"},
        {"aQL_ENDbQL_STARTy", "aQL_ENDbQL_STARTy"},
        {"aQL_ENDbQL_STARTyQL_ENDc", "aQL_ENDbc"},
        {"aQL_STARTbQL_STARTcQL_ENDdQL_ENDe", "adQL_ENDe"},
        // Removing a group joins the bytes around it to a new opening word.
        {"QL_STAQL_STARTxQL_ENDRTyQL_ENDz", "z"},
        {"QL_STAQL_STARTxQL_ENDRTy", "QL_STARTy"},
        {"QL_STQL_STARTxQL_ENDQL_STARTyQL_ENDARTzQL_ENDe", "e"},
        {"QL_STQL_STARTxQL_ENDAQL_STARTyQL_ENDRTzQL_ENDe", "e"},
    };
    ExpectRows(rows, WithoutAttributeGroups);
}

TEST(ScopedGroups, TakeReadsWhatComposeWrites) {
    const ScopedEntries entries = {"table", "class", "wide", "body", "id", ""};
    std::string text = ComposeScopedGroups(entries);
    EXPECT_EQ(text, "QL_SA_StableQL_SEPclassQL_SEPwideQL_SA_EQL_SA_SbodyQL_SEPidQL_SEPQL_SA_E");
    text += "rest";
    std::string_view rest = text;
    EXPECT_EQ(TakeScopedGroups(rest), entries);
    EXPECT_EQ(rest, "rest");
    EXPECT_EQ(ComposeScopedGroups({}), "");
}

TEST(ScopedGroups, TakeStopsAtTheFirstTextAndDropsShortGroups) {
    struct {
        std::string_view text;
        std::string entries, left;
    } rows[] = {
        {"xQL_SA_SaQL_SEPbQL_SEPcQL_SA_E", "", "xQL_SA_SaQL_SEPbQL_SEPcQL_SA_E"},
        {"QL_SA_SaQL_SEPbQL_SA_EQL_SA_SaQL_SEPbQL_SEPcQL_SA_Ex", "[a] [b] [c]", "x"},
        {"QL_SA_SQL_SA_Ex", "", "x"},
        {"QL_SA_SaQL_SEPbQL_SEPcQL_SEPdQL_SA_E", "[a] [b] [cQL_SEPd]", ""},
        {"QL_SA_SaQL_SEPbQL_SEPc", "", "QL_SA_SaQL_SEPbQL_SEPc"},
        {"QL_SA_SaQL_SEPbQL_SEPcQL_SA_E QL_SA_SaQL_SEPbQL_SEPdQL_SA_E", "[a] [b] [c]",
         " QL_SA_SaQL_SEPbQL_SEPdQL_SA_E"},
    };
    for (auto& row : rows) {
        EXPECT_EQ(Joined(TakeScopedGroups(row.text)), row.entries);
        EXPECT_EQ(row.text, row.left);
    }
}

TEST(ElementGroups, SplitSeparatesBalancedGroups) {
    const TextRow rows[] = {
        {"", "[]"},
        {"plain", "[plain]"},
        {"QL_ELEM_SaQL_ELEM_E", "[] [QL_ELEM_SaQL_ELEM_E] []"},
        {"aQL_ELEM_SbQL_ELEM_ScQL_ELEM_EdQL_ELEM_Ee", "[a] [QL_ELEM_SbQL_ELEM_ScQL_ELEM_EdQL_ELEM_E] [e]"},
        {"aQL_ELEM_SbQL_ELEM_EcQL_ELEM_SdQL_ELEM_Ee",
         "[a] [QL_ELEM_SbQL_ELEM_E] [c] [QL_ELEM_SdQL_ELEM_E] [e]"},
        {"aQL_ELEM_EbQL_ELEM_Sc", "[aQL_ELEM_EbQL_ELEM_Sc]"},
        {"aQL_ELEM_EbQL_ELEM_ScQL_ELEM_E", "[aQL_ELEM_Eb] [QL_ELEM_ScQL_ELEM_E] []"},
        {"QL_ELEM_SaQL_ELEM_SbQL_ELEM_Ec", "[QL_ELEM_SaQL_ELEM_SbQL_ELEM_Ec]"},
        {"QL_ELEM_SaQL_ELEM_EbQL_ELEM_Sc", "[] [QL_ELEM_SaQL_ELEM_E] [bQL_ELEM_Sc]"},
        {"QL_ELEM_SaQL_ELEM_QL_ELEM_XQL_ELEM_Eb", "[] [QL_ELEM_SaQL_ELEM_QL_ELEM_XQL_ELEM_E] [b]"},
    };
    ExpectRows(rows, [](const std::string& text) { return Joined(SplitElementGroups(text)); });
}

TEST(ElementGroups, ElementGroupXmlReturnsWrappedXml) {
    const std::string xml = "<b x=\"1&amp;2\">it's &lt; QL_START</b>";
    EXPECT_EQ(WrapElementGroup("<b>&amp;</b>"), "QL_ELEM_S&lt;b&gt;&amp;amp;&lt;/b&gt;QL_ELEM_E");
    EXPECT_EQ(ElementGroupXml(WrapElementGroup(xml)), xml);
    EXPECT_EQ(ElementGroupXml("QL_ELEM_SaQL_ELEM_SbQL_ELEM_EcQL_ELEM_E"), "aQL_ELEM_Sb");
    EXPECT_EQ(ElementGroupXml("QL_ELEM_Sa"), std::nullopt);
}

TEST(TagsValue, EveryTokenEndsWithTheSeparator) {
    const TextRow rows[] = {
        {"", ""}, {"abc", ""}, {"aQL_SEPbQL_SEPc", "[a] [b]"}, {"QL_SEPQL_SEPaQL_SEP", "[] [] [a]"}};
    ExpectRows(rows, [](const std::string& text) { return Joined(SplitTagsValue(text)); });
}

TEST(MarkerWords, AreRemovedOncePerWordAndLeaveTheData) {
    const TextRow rows[] = {
        {"plain", "plain"},
        {"QL_STARTaQL_EQbQL_TARGETcQL_SEPQL_ENDdQL_SA_SeQL_SA_EfQL_ELEM_SgQL_ELEM_Eh", "abcdefgh"},
        {"QL_SQL_SEPEP", ""},
        {"QL_SQL_SQL_SEPEPEP", "QL_SEP"},
        {"QL_SQL_EQEP", ""},
        {"QL_ENQL_ENDD", "QL_END"},
        {"ql_end QL_ QL_OTHER", "ql_end QL_ QL_OTHER"},
    };
    ExpectRows(rows, RemoveMarkerWords);
}

/// Runs every reading operation on one text.
void ReadEverything(const std::string& marked) {
    AttributePairs pairs;
    ParseAttributeGroup(marked, pairs, pairs);
    EXPECT_EQ(pairs.size() % 2, 0U);
    std::string buffer;
    std::string_view text = StripAttributeGroups(marked, buffer);
    EXPECT_EQ(TakeScopedGroups(text).size() % 3, 0U);
    std::string whole;
    for (const std::string_view piece : SplitElementGroups(text)) {
        whole += piece;
        if (piece.starts_with(QL_ELEM_S))
            ElementGroupXml(piece);
    }
    EXPECT_EQ(whole, text);
    SplitTagsValue(text);
    RemoveMarkerWords(text);
}

TEST(MarkerReader, AcceptsEveryPartOfARichText) {
    std::string text = ComposeScopedGroups({"table", "class", "wide", "a", "b", "c"}) + "Preß " +
                       WrapElementGroup("<b>" + WrapElementGroup("<i/>") + "</b>") + " QL_ENDQL_SEP end" +
                       WrapElementGroup("<u a=\"1\"/>");
    PrependAttributeGroup(text, {"audience", "expert", "", "data-qlxpath", "/a/b[2]", "path"});
    text += text;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        ReadEverything(text.substr(0, length));
        ReadEverything(text.substr(length));
        ReadEverything(text.substr(length) + text.substr(0, length));
    }
}

TEST(MarkerReader, TakesLinearTime) {
    const auto milliseconds = [](const std::string& text) {
        const auto start = std::chrono::steady_clock::now();
        ReadEverything(text);
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    };
    const std::string_view openings[] = {"QL_START",
                                         "QL_ELEM_S",
                                         "QL_SA_S",
                                         "QL_STARTxQL_END",
                                         "QL_STARTaQL_EQbQL_TARGETQL_SEP",
                                         "QL_SA_SaQL_SEPbQL_SEPcQL_SA_E",
                                         "QL_ELEM_SaQL_ELEM_E",
                                         "QL_STAQL_STARTQL_ENDRT"};
    // A reader that searches the rest again for every word takes minutes here.
    for (const std::string_view opening : openings)
        for (const std::string_view closing : {"", "QL_END", "QL_ELEM_E", "QL_SA_E"})
            EXPECT_LT(milliseconds(Repeated(opening, 100000) + Repeated(closing, 100000)), 5000)
                << opening << closing;
}

// Beside the byte that is searched for stand those that differ from it by one bit or by one.
TEST(MarkerText, SearchesAgreeWithTheStandardLibrary) {
    constexpr char kText[] = "QRPQ\0\x01\xD1\xD0PQL_QR\xFF\x80QPPRQ_L_QL";
    const std::string_view text(kText, sizeof kText);
    for (std::size_t begin = 0; begin < text.size(); ++begin) {
        for (std::size_t size = 0; size <= text.size() - begin; ++size) {
            const std::string_view part = text.substr(begin, size);
            for (const char byte : {'Q', 'P', '\0', '\x01', '\x80', '\xD1', 'x'})
                EXPECT_EQ(xml::FindByte(part, byte, 1), part.find(byte, 1)) << begin << ' ' << size;
            for (const std::string_view wanted : {"QL_", "L", "QPPR", "R_"})
                EXPECT_EQ(xml::Find(part, wanted), part.find(wanted)) << begin << ' ' << size;
        }
    }
}

}  // namespace
}  // namespace ventrix::test
