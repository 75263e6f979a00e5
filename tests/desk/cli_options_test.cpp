#include <gtest/gtest.h>

#include "desk/cli/document_checks.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/option_checks.h"
#include "desk/cli/spelling.h"
#include "desk/folder_fixture.h"

namespace ventrix::desk {
namespace {

/// The message of the refusal; empty if the options are accepted.
std::string Refusal(const std::vector<std::string>& arguments) {
    std::vector<std::string> words{"publish", "a.dita", "-o", "out"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    Options options;
    try {
        ReadOptions(words, options);
        RequireComplete(options);
    } catch (const Stop& stop) {
        EXPECT_EQ(stop.status, kExitUsage);
        return stop.text;
    }
    return {};
}

TEST(OptionChecks, RefusalsNameTheOptionAndTheValueAndSayWhatToDo) {
    struct Row {
        std::vector<std::string> arguments;
        std::string message;  ///< The beginning of the refusal.
    };
    const Row rows[] = {
        {{"--attributes", "audience, product"},
         "--attributes: 'audience, product' contains spaces; write 'audience,product'"},
        {{"--elements", " b\ti "}, "--elements: ' b\ti ' contains spaces; write 'b,i'"},
        {{"--elements", " "}, "--elements: ' ' is not an XML name; write a name such as"},
        {{"--source-path", "p,"}, "--source-path: 'p,' contains an empty name; write"},
        {{"--attributes", "a,1b"}, "--attributes: '1b' is not an XML name; write"},
        {{"--attributes", "a:b:c"}, "--attributes: 'a:b:c' is not an XML name; write"},
        {{"--target-attr", "a,b"}, "--target-attr: 'a,b' is not an XML name; write"},
        {{"--scoped-attributes", "a,b,c"},
         "--scoped-attributes: 'a,b,c' has 3 names, but each group needs four"},
        {{"--scoped-attributes", "a,b,c", "--scoped-attributes", "d"}, "--scoped-attributes: 'a,b,c' has 3"},
        {{"--preserve-xpath", "//a[", "--xpath"},
         "--preserve-xpath: '//a[' is not an XPath expression (syntax error at character 5); correct"},
        {{"--preserve-xpath", "//a,//b"},
         "--preserve-xpath: '//a,//b' contains a comma, at which the module splits"},
        {{"--xpath-attr", "x"}, "--xpath-attr: 'x' has no effect without --xpath; add it or remove"},
        {{"--source-path-attr", "x"}, "--source-path-attr: 'x' has no effect without --source-path;"},
        {{"--preserve-xpath-attr", "x", "--xpath"},
         "--preserve-xpath-attr: 'x' has no effect without --preserve"},
        {{"--ditaval", "f", "--xslt", "s"}, "--ditaval: 'f' has no effect without a DITA transformation"},
        {{"--toolkit-param", "args.input=x"}, "--toolkit-param: 'args.input' is set by ventrix itself"},
        {{"--toolkit-param", "x"}, "--toolkit-param: 'x' is not of the form NAME=VALUE"},
        {{"--param", "a=1"}, "--param: 'a=1' has no effect without a stylesheet"},
        {{"--string-param", "1=1", "--xslt", "s"}, "--string-param: '1=1' is not of the form NAME=VALUE"},
        {{"--ditaval", "f", "--post-script", "s"}, "--ditaval: 'f' has no effect without a DITA"},
        {{"--title", "a\nb"}, "--title: the title has a control character or is not UTF-8"},
        {{"--title", "a\xff"}, "--title: the title has a control character or is not UTF-8"},
        {{"--colour=always"}, "unknown option '--colour'; did you mean '--color'? See --help"},
        {{"--zzzzz", "x"}, "unknown option '--zzzzz'; see --help"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Refusal(row.arguments).substr(0, row.message.size()), row.message);
    }
}

TEST(OptionChecks, AcceptWhatTheModuleUnderstands) {
    const std::vector<std::string> rows[] = {
        {"--attributes", "audience,xml:lang", "--attributes", "größe"},
        {"--scoped-attributes", "a,b,c,d,e,f,g,h", "--scoped-attributes", "i,j,k,l"},
        {"--preserve-xpath", "//p[@a='1']/x:y", "--preserve-xpath", "count(//p) > 1", "--preserve-xpath-attr",
         "q"},
        {"--xpath", "--xpath-attr", "x", "--source-path", "p", "--source-path-attr", "s"},
        {"--ditaval", "f", "--pre-script", "a", "--post-script", "b"},
        {"--ditaval", "f", "--dita-ot", "--post-script", "b"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Refusal(row), "") << row[1];
    }
}

TEST(Spelling, FindsTheWordThatWasMeant) {
    const std::vector<std::string> known{"props", "audience", "product", "platform"};
    EXPECT_EQ(MeantWord("audiance", known), "audience");
    EXPECT_EQ(MeantWord("audeince", known), "audience") << "letters that changed places";
    EXPECT_EQ(MeantWord("odience", known), "audience") << "two letters in a long word";
    EXPECT_EQ(MeantWord("prop", known), "props");
    EXPECT_EQ(MeantWord("pops", known), "props");
    EXPECT_EQ(MeantWord("pop", known), "") << "two letters in a short word";
    EXPECT_EQ(MeantWord("language", known), "");
}

Screen TestScreen(bool quiet) {
    CommonOptions options;
    options.color = "never";
    options.quiet = quiet;
    return Screen(options);
}

class DocumentChecks : public FolderFixture {
  protected:
    DocumentChecks() {
        Write("map.ditamap",
              "<map><topicref href='a.dita'/><topicref href='B.DITA'/><topicref href='c.dbk'/>"
              "<topicref href='page.html' format='html'/><topicref href='text.pdf' format='pdf'/>"
              "<topicref href='code.dita'/></map>");
        Write("a.dita",
              "<topic><title xml:lang='en'>A</title><p audience='x'><uicontrol>U</uicontrol></p>"
              "<image href='i.svg'/></topic>");
        Write("B.DITA", "<topic><p/></topic>");
        Write("c.dbk", "no xml");
        Write("page.html", "<!DOCTYPE html><html><br></html>");
        Write("text.pdf", "%PDF");
        Write("code.dita",
              "<topic><codeblock><coderef href='shown.rng'/><xi:include href='text.xsd' parse='text' "
              "xmlns:xi='http://www.w3.org/2001/XInclude'/></codeblock>"
              "<xref href='load.xsl' format='xsl'/></topic>");
        for (const char* shown : {"shown.rng", "text.xsd", "load.xsl"}) {
            Write(shown, "<grammar/>");
        }
        Write("i.svg", "<svg/>");
        files = ListDocumentFiles({Native("map.ditamap")});
    }

    /// The warnings for these options.
    std::vector<std::string> Misspelled(const PublishOptions& options) const {
        RunReport report;
        ReportAbsentNames(options, files.names, report, TestScreen(true));
        std::vector<std::string> texts;
        for (const Finding& finding : report.warnings) {
            EXPECT_EQ(finding.code, "misspelled-name");
            texts.push_back(finding.text);
        }
        return texts;
    }

    DocumentFiles files;
};

TEST_F(DocumentChecks, XmlThatTheModulePassesOverIsAWarning) {
    RunReport report;
    testing::internal::CaptureStderr();
    ReportPassedOverFiles(files, report, TestScreen(false));
    const std::string printed = testing::internal::GetCapturedStderr();
    ASSERT_EQ(report.warnings.size(), 1U) << printed;
    EXPECT_EQ(report.warnings[0].file.utf8, Native("B.DITA"));
    EXPECT_EQ(report.warnings[0].code, "passed-over");
    for (const char* name : {"c.dbk", "page.html", "text.pdf", "shown.rng", "text.xsd", "load.xsl"}) {
        EXPECT_NE(printed.find("\n" + Native(name) + " is packaged as it is"), std::string::npos) << printed;
    }
    EXPECT_EQ(printed.find("i.svg"), std::string::npos) << "graphics are not passed over";

    Write("a.dita", "<topic><xref href='shown.rng' format='xml'/></topic>");
    RunReport again;
    ReportPassedOverFiles(ListDocumentFiles({Native("map.ditamap")}), again, TestScreen(true));
    EXPECT_EQ(again.warnings.at(0).file.utf8, Native("shown.rng")) << "code, but also part of the document";

    Write("c.dbk", "<!DOCTYPE article [<!ENTITY e 'e'>]><!-- c --><article><open></article>");
    ReportPassedOverFiles(files, report, TestScreen(true));
    EXPECT_EQ(report.warnings.back().file.utf8, Native("c.dbk")) << "XML with an error further on";
}

TEST_F(DocumentChecks, ProbableMisspellingsAreWarnings) {
    PublishOptions options;
    options.attributes = {"audience,xml:lang,platform", "audiance"};
    options.elements = {"uicontrl,pp,b", "title"};
    options.sourcePath = {"topik"};
    options.scopedAttributes = {"titel,audince,div,class"};
    EXPECT_EQ(
        Misspelled(options),
        (std::vector<std::string>{
            "--attributes: 'audiance' does not occur in any file of the document; did you mean 'audience'?",
            "--elements: 'uicontrl' does not occur in any file of the document; did you mean 'uicontrol'?",
            "--source-path: 'topik' does not occur in any file of the document; did you mean 'topic'?",
            "--scoped-attributes: 'titel' does not occur in any file of the document; did you mean 'title'?",
            "--scoped-attributes: 'audince' does not occur in any file of the document; did you mean "
            "'audience'?"}));
}

TEST_F(DocumentChecks, StandardNamesAreNotMisspellings) {
    files.names.attributes = {"prop", "rev1", "platforms"};
    PublishOptions options;
    options.attributes = {"props,rev,platform"};
    EXPECT_EQ(Misspelled(options), std::vector<std::string>{});
}

}  // namespace
}  // namespace ventrix::desk
