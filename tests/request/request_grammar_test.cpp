#include "request/request_grammar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace ventrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

/// The tokens before the first empty one, which ends a request.
Texts Tokens(const std::string& text, std::size_t capacity = 1024) {
    std::vector<char> buffer(capacity);
    Texts tokens;
    const char* cursor = ReadToken(text.c_str(), buffer.data(), capacity);
    while (buffer[0] != '\0') {
        tokens.emplace_back(buffer.data());
        cursor = ReadToken(cursor, buffer.data(), capacity);
    }
    return tokens;
}

TEST(RequestGrammar, SpacesAndQuotesSeparateTokens) {
    const struct {
        const char* text;
        Texts tokens;
    } rows[] = {
        {"", {}},
        {"   ", {}},
        {"a", {"a"}},
        {"  a   b ", {"a", "b"}},
        {"a\tb\nc d", {"a\tb\nc", "d"}},
        {R"("C:\my out\" b)", {R"(C:\my out\)", "b"}},
        {R"('C:\a"b\' c)", {R"(C:\a"b\)", "c"}},
        {R"("it's" b)", {"it's", "b"}},
        {R"("a"b)", {"a", "b"}},
        {R"("a""b")", {"a", "b"}},
        {R"(a"b c"d)", {"a\"b", "c\"d"}},
        {R"("open to the end )", {"open to the end "}},
        {"'", {}},
        {R"(a "" b)", {"a"}},
        {"grüße x", {"grüße", "x"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Tokens(row.text), row.tokens) << row.text;
    }
}

TEST(RequestGrammar, CursorStopsAtTheSpaceOrAfterTheQuote) {
    char buffer[8];
    EXPECT_STREQ(ReadToken(" a b", buffer, sizeof buffer), " b");
    EXPECT_STREQ(ReadToken("'a' b", buffer, sizeof buffer), " b");
    EXPECT_STREQ(ReadToken("'a b", buffer, sizeof buffer), "");
}

TEST(RequestGrammar, OverlongTokenIsTruncatedAndTheNextOneIsNot) {
    const std::string longText(2000, 'x');
    const std::string kept(1023, 'x');
    EXPECT_EQ(Tokens(longText + " b"), (Texts{kept, "b"}));
    EXPECT_EQ(Tokens("\"" + longText + "\"b"), (Texts{kept, "b"}));
    EXPECT_EQ(Tokens("'" + longText), (Texts{kept}));
    EXPECT_EQ(Tokens(std::string(1024, 'x')), (Texts{kept}));
    EXPECT_EQ(Tokens("abc d", 3), (Texts{"ab", "d"}));
}

TEST(RequestGrammar, CommaListKeepsEmptyParts) {
    const struct {
        const char* text;
        Texts pieces;
    } rows[] = {
        {"", {}},
        {"a", {"a"}},
        {"a,b", {"a", "b"}},
        {"a,,b", {"a", "", "b"}},
        {"a,b,", {"a", "b", ""}},
        {",", {"", ""}},
        {" a , b", {" a ", " b"}},
    };
    for (const auto& row : rows) {
        std::list<std::string> list = {"kept"};
        ParseCommaList(row.text, list, ',');
        Texts expected = {"kept"};
        expected.insert(expected.end(), row.pieces.begin(), row.pieces.end());
        EXPECT_EQ(Texts(list.begin(), list.end()), expected) << row.text;
    }
}

TEST(RequestGrammar, EachOptionSetsItsField) {
    const PublishRequest request = ParseRequest(
        R"(PUBLISH -DOCID 12abc -outputfolder "C:\my out\" -outFilePath o -showProgressBar -attributes a,b -targetAttr t )"
        R"(-elements e,f -ditaval d -useDITAOT -useXSLT s -usePreScript pre -usePostScript post -logFile l )"
        R"(-scopedAttributes 1,2,3,4 -addXpath -xpathAttr x -addSourcePath p,q -sourcePathAttr y )"
        R"(-preserveXPathList //a,//b -preserveXPathAttr z)");
    EXPECT_EQ(request.command, RequestCommand::kPublish);
    EXPECT_EQ(request.documentId, 12);
    EXPECT_STREQ(request.outputFolder.get(), R"(C:\my out\)");
    EXPECT_STREQ(request.stylesheet.get(), "s");
    EXPECT_STREQ(request.preScript.get(), "pre");
    EXPECT_STREQ(request.postScript.get(), "post");
    EXPECT_STREQ(request.ditaval.get(), "d");
    EXPECT_STREQ(request.logFile.get(), "l");
    EXPECT_TRUE(request.useDitaOt);
    EXPECT_TRUE(request.showProgressBar);
    const PublishParams& params = request.params;
    EXPECT_THAT(params.attributes, ElementsAre("a", "b"));
    EXPECT_THAT(params.elements, ElementsAre("e", "f"));
    EXPECT_THAT(params.scopedAttributes, ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(params.addSourcePath, ElementsAre("p", "q"));
    EXPECT_THAT(params.preserveXPathList, ElementsAre("//a", "//b"));
    EXPECT_EQ(params.outFilePath, "o");
    EXPECT_EQ(params.targetAttr, "t");
    EXPECT_EQ(params.preserveXPathAttr, "z");
    EXPECT_EQ(params.sourcePathAttr, "y");
    EXPECT_EQ(params.xpathAttr, "x");
    EXPECT_TRUE(params.addXpath);
}

TEST(RequestGrammar, AbsentOptionsKeepTheirDefaults) {
    const PublishRequest request = ParseRequest("Validate");
    EXPECT_EQ(request.command, RequestCommand::kValidate);
    EXPECT_EQ(request.documentId, 0);
    for (const Q_String* text : {&request.outputFolder, &request.stylesheet, &request.preScript,
                                 &request.postScript, &request.ditaval, &request.logFile}) {
        EXPECT_EQ(*text, nullptr);
    }
    EXPECT_FALSE(request.useDitaOt);
    EXPECT_FALSE(request.params.addXpath);
    EXPECT_EQ(ParseRequest("Foo -docId 5").command, RequestCommand::kNone);
    EXPECT_EQ(ParseRequest("Foo -docId 5").documentId, 0);
    EXPECT_EQ(ParseRequest("").command, RequestCommand::kNone);
}

TEST(RequestGrammar, LaterStringReplacesAndLaterListAppends) {
    const PublishRequest request = ParseRequest(
        "Publish -attributes a,b -logFile one -docId 3 -attributes c -logFile two -docId 4 -docId abc");
    EXPECT_THAT(request.params.attributes, ElementsAre("a", "b", "c"));
    EXPECT_STREQ(request.logFile.get(), "two");
    EXPECT_EQ(request.documentId, 4);
}

TEST(RequestGrammar, ValuesAreNotChecked) {
    const PublishRequest swallowed = ParseRequest("Publish -logFile -docId 5 -useDITAOT");
    EXPECT_STREQ(swallowed.logFile.get(), "-docId");
    EXPECT_EQ(swallowed.documentId, 0);
    EXPECT_TRUE(swallowed.useDitaOt) << "an unknown token is skipped";

    const PublishRequest unknown = ParseRequest("Publish -foo bar -docId 5");
    EXPECT_EQ(unknown.documentId, 5);

    const PublishRequest atTheEnd = ParseRequest("Publish -docId 5 -logFile");
    EXPECT_EQ(atTheEnd.logFile, nullptr);
}

TEST(RequestGrammar, EmptyValueEndsTheRequest) {
    const PublishRequest request = ParseRequest(R"(Publish -useDITAOT -logFile "" -docId 5 -attributes a)");
    EXPECT_TRUE(request.useDitaOt);
    EXPECT_EQ(request.logFile, nullptr);
    EXPECT_EQ(request.documentId, 0);
    EXPECT_THAT(request.params.attributes, IsEmpty());
}

}  // namespace
}  // namespace ventrix
