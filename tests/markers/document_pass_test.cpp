#include "markers/document_pass.h"

#include <chrono>

#include "pass_helpers.h"
#include "support/text_rows.h"

namespace ventrix::test {
namespace {

const char kRichDocument[] =
    "<?xml version='1.0' encoding=\"utf-8\" standalone=\"no\"?>\r\n<!DOCTYPE topic [<!ENTITY e \"x<b/>\">\n"
    "<!ATTLIST p kind CDATA 'note'>]>\n<!-- c --><topic  a = "
    "'v'\n\tb=\"&#228;&lt;\"><p></p><p/>&e;&#160;<![CDATA[<>]]>"
    "<?pi x?>\r\n ä \xF0\x9F\x9A\xB0 &amp;&gt;></topic >\n<!-- end -->\n";

TEST(DocumentPass, SavesAFileWithoutWorkByteForByte) {
    PublishParams params;
    params.attributes = {"audience"};
    params.elements = {"uicontrol"};
    params.preserveXPathList = {"//q"};
    EXPECT_EQ(Encoded(kRichDocument, params), kRichDocument);
    EXPECT_EQ(Decoded(kRichDocument, params), kRichDocument);
}

TEST(DocumentPass, LeavesAFileThatDoesNotLoadUnchanged) {
    const char* const inputs[] = {"", "no XML", "<a><b></a>", "<a/><b/>", "<a>&#0;</a>", "<!-- no root -->"};
    for (const char* input : inputs) {
        for (const bool decode : {false, true}) {
            const TestFolder tree;
            tree.Write("f.xml", input);
            PublishParams params;
            std::string errorText;
            EXPECT_FALSE(ProcessXmlFile(tree.System("f.xml"), decode, params, errorText)) << input;
            EXPECT_FALSE(errorText.empty()) << input;
            EXPECT_EQ(tree.Read("f.xml"), input);
        }
    }
    const TestFolder tree;
    PublishParams params;
    std::string errorText;
    EXPECT_FALSE(ProcessXmlFile(tree.System("missing.xml"), true, params, errorText));
    EXPECT_FALSE(errorText.empty());
    EXPECT_EQ(tree.Count(), 0);
}

TEST(DocumentPass, ReportsAnUndefinedEntityIfNoDtdIsKnown) {
    for (const char* input : {"<a>&nbsp;</a>", "<!DOCTYPE a SYSTEM 'gone.dtd'><a t='&nbsp;'/>"}) {
        const TestFolder tree;
        tree.Write("f.html", input);
        PublishParams params;
        std::string errorText;
        EXPECT_FALSE(ProcessXmlFile(tree.System("f.html"), true, params, errorText));
        EXPECT_NE(errorText.find("undefined entity"), std::string::npos) << errorText;
        EXPECT_EQ(tree.Read("f.html"), input);
    }
}

TEST(DocumentPass, ChangesNoOptionButTheCurrentFile) {
    PublishParams params;
    params.attributes = {"t"};
    params.addSourcePath = {"p"};
    Pass("<a t='1'><p>x</p></a>", false, params);
    EXPECT_EQ(params.attributes, std::list<std::string>{"t"});
    EXPECT_EQ(params.addSourcePath, std::list<std::string>{"p"});
    EXPECT_TRUE(params.currentFile.ends_with("\\docs\\guide.xml"));
}

TEST(DocumentPass, LeavesNoMarkerWordOfATruncatedText) {
    const std::string text =
        "QL_STARTtQL_EQ1QL_TARGETQL_SEPuQL_EQ2QL_TARGETnQL_SEPQL_ENDQL_SA_SpQL_SEPidQL_SEPkQL_SA_ETexT "
        "QL_ELEM_S&amp;lt;i&amp;gt;yQL_ELEM_S&amp;lt;j/&amp;gt;QL_ELEM_Ez&amp;lt;/i&amp;gt;QL_ELEM_E end"
        "QL_ELEM_S&amp;lt;k/&amp;gt;QL_ELEM_E.";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        std::string prefix = text.substr(0, length);
        // A truncated entity reference would not parse.
        if (const auto amp = prefix.rfind('&');
            amp != std::string::npos && prefix.find(';', amp) == std::string::npos)
            continue;
        const std::string published = Decoded("<p>" + prefix + "</p>");
        const std::string content = published.substr(published.find('>'));
        for (const char* word : {"QL_START", "QL_END", "QL_EQ", "QL_TARGET", "QL_SEP", "QL_SA_S", "QL_SA_E",
                                 "QL_ELEM_S", "QL_ELEM_E"})
            EXPECT_EQ(content.find(word), std::string::npos) << published;
    }
}

TEST(DocumentPass, TakesLinearTimeOnWideDocuments) {
    PublishParams params;
    params.attributes = {"t"};
    params.elements = {"i"};
    params.scopedAttributes = {"s", "t", "p", "id"};
    params.addXpath = true;
    constexpr std::size_t kCount = 100000;
    const struct {
        const char* name;
        std::string input;
        bool decode;
    } rows[] = {
        {"siblings with an index", "<a>" + Repeated("<p t='1'>x</p>", kCount) + "</a>", false},
        {"alternating names", "<a>" + Repeated("<p>x</p><q>y</q>", kCount / 2) + "</a>", false},
        {"listed elements without text after them", "<a>" + Repeated("<i/> ", kCount) + "</a>", false},
        {"listed elements with text after them", "<a>" + Repeated("<i/> ", kCount) + "x</a>", false},
        {"text nodes between elements", "<a t='1'>" + Repeated("x<i/>", kCount) + "</a>", false},
        {"empty elements before the text", "<s t='1'>" + Repeated("<b/>", kCount) + "x</s>", false},
        {"marked text nodes in one element", "<p>" + Repeated(Group("t", "1") + "x<b/>", kCount) + "</p>",
         true},
        {"element groups in one text",
         "<p>" + Repeated("QL_ELEM_S&amp;lt;i/&amp;gt;QL_ELEM_E ", kCount) + "</p>", true},
    };
    for (const auto& row : rows) {
        const auto start = std::chrono::steady_clock::now();
        Pass(row.input, row.decode, params);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        // A second or two with sanitizers; minutes if every step visits the siblings again.
        EXPECT_LT(seconds.count(), 20) << row.name;
    }
}

TEST(DocumentPass, TakesLinearTimeOnDeepDocuments) {
    constexpr std::size_t kDepth = 100000;
    PublishParams params;
    params.attributes = {"t", "nowhere"};
    params.elements = {"i"};
    const auto start = std::chrono::steady_clock::now();
    Pass("<a>" + Repeated("<s t='1'>x<i/>", kDepth) + "y" + Repeated("</s>", kDepth) + "</a>", false, params);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    EXPECT_LT(seconds.count(), 20);
}

TEST(DocumentPass, FinishesOnVeryDeepDocuments) {
    constexpr std::size_t kDepth = 200000;
    const TestFolder tree;
    tree.Write("f.xml", Repeated("<s t='1'>", kDepth) + "x" + Repeated("</s>", kDepth));
    PublishParams params;
    params.attributes = {"t"};
    params.addXpath = true;
    for (const bool decode : {false, true}) {
        std::string errorText;
        const bool loaded = ProcessXmlFile(tree.System("f.xml"), decode, params, errorText);
        EXPECT_NE(loaded, !errorText.empty());
    }
}

}  // namespace
}  // namespace ventrix::test
