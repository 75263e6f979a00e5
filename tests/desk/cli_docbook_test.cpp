// DocBook with its own stylesheets: what they write does not depend on marker text.
#include <filesystem>
#include <map>

#include "desk/command_line.h"
#include "desk/folder_fixture.h"
#include "support/page_query.h"

namespace ventrix::desk {
namespace {

const std::string kStylesheets = test::kDriveZ + "/usr/share/xml/docbook/stylesheet/docbook-xsl/";

constexpr const char* kBook = R"(<!DOCTYPE book PUBLIC "-//OASIS//DTD DocBook XML V4.5//EN"
    "http://www.oasis-open.org/docbook/xml/4.5/docbookx.dtd">
<book lang="en"><bookinfo><title>Rain <productname>Tank</productname></title>
  <copyright><year>1999</year><year>2000</year><year>2001</year><year>2005</year><holder>H</holder></copyright>
  <pubdate>2003</pubdate></bookinfo>
<chapter id="a"><title>The <literal>first</literal> one</title>
  <para role="x">A roof<indexterm><primary>zebra</primary></indexterm><indexterm><primary>apple</primary>
    <secondary>red <literal>one</literal></secondary></indexterm><indexterm><primary>Mango</primary>
    <see>apple</see></indexterm> gives <quote>much <quote>water</quote></quote>.<footnote id="n"><para>A
    note.</para></footnote> Again<footnoteref linkend="n"/>, <xref linkend="b"/>, <citation>K</citation>, <xref linkend="l"/>, <xref linkend="m"/>.</para>
  <para role="y">Take <productname>Pump</productname>, <trademark class="registered">T</trademark> or
    <menuchoice><guimenu>File</guimenu><guimenuitem>Quit</guimenuitem></menuchoice>, <literal>x</literal>
    and <firstterm>tank</firstterm><indexterm><primary sortas="b">the barrel</primary><seealso>apple</seealso>
    <seealso>zebra</seealso></indexterm>. See <inlinemediaobject><imageobject><imagedata fileref="a.svg"/>
    </imageobject><textobject><phrase>a tank</phrase></textobject></inlinemediaobject>.</para></chapter>
<chapter id="b"><title>Second</title><para>An <email>a@example.org</email><indexterm><primary>Äpfel</primary>
    </indexterm><indexterm><primary>42</primary></indexterm>.</para></chapter>
<glossary><title>Words</title><glossentry><glossterm>tank</glossterm><glossdef><para>A tank.</para></glossdef>
  </glossentry><glossentry><glossterm>Barrel</glossterm><glossdef><para>A barrel.</para></glossdef></glossentry>
</glossary>
<bibliography><biblioentry id="k"><abbrev>K</abbrev><title>Source</title></biblioentry>
  <bibliomixed id="l" role="z"> <abbrev>L</abbrev> The <abbrev>abbr.</abbrev> source</bibliomixed>
  <bibliomixed id="m">The <emphasis>other</emphasis> <abbrev>source</abbrev></bibliomixed></bibliography>
<index/></book>)";

class DocBookRun : public FolderFixture {
  protected:
    /// Of each page its text and the number of links.
    std::map<std::string, std::string> Publish(const std::string& stylesheet,
                                               const std::vector<std::string>& further) {
        std::vector<std::string> arguments{"publish",
                                           "book.xml",
                                           "-o",
                                           "out",
                                           "--force",
                                           "--xslt",
                                           stylesheet,
                                           "--string-param",
                                           "make.year.ranges=1",
                                           "--string-param",
                                           "glossary.sort=1"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        finished_ = test::RunVentrix(*this, arguments);
        std::map<std::string, std::string> pages;
        for (const auto& entry : std::filesystem::directory_iterator(Native("out"))) {
            if (entry.path().extension() == ".html") {
                const std::string name = entry.path().filename().string();
                const std::string page = Read("out/" + name);
                pages[name] = test::Found(page, "normalize-space(/)").at(0) +
                              "; links: " + test::Found(page, "count(//*[local-name()='a'][@href])").at(0);
            }
        }
        return pages;
    }
    test::Finished finished_;
};

TEST_F(DocBookRun, PagesHaveTheTextOfARunThatPreservesNothing) {
    if (!std::filesystem::exists(kStylesheets)) {
        GTEST_SKIP() << "the package docbook-xsl is not installed";
    }
    Write("book.xml", kBook);
    Write("a.svg", "<svg xmlns='http://www.w3.org/2000/svg'/>");
    for (const char* name : {"xhtml/docbook.xsl", "html/chunk.xsl"}) {
        const auto plain = Publish(kStylesheets + name, {});
        EXPECT_EQ(finished_.status, 0) << finished_.error;
        const auto marked =
            Publish(kStylesheets + name,
                    {"--xpath", "--attributes", "role", "--elements",
                     "literal,quote,footnote,footnoteref,xref,productname,trademark,menuchoice,email,"
                     "inlinemediaobject,citation,abbrev,emphasis"});
        EXPECT_EQ(finished_.status, 1) << finished_.error;
        EXPECT_EQ(marked, plain);
        for (const char* finding :
             {"book.xml:9: <quote> is not preserved but left to the transformation, "
              "because it is or contains "
              "an element for which the transformation generates output; places: 1",
              "book.xml:8:20: <literal> is not preserved in text that stylesheets sort by "
              "or compare; places: 1"}) {
            EXPECT_NE(finished_.error.find(finding), std::string::npos) << finding << '\n' << finished_.error;
        }
    }
    EXPECT_NE(Read("out/index.html").find("1999-2001, 2005"), std::string::npos);
    EXPECT_NE(Read("out/ch01.html").find("<literal>x</literal>"), std::string::npos);
}

}  // namespace
}  // namespace ventrix::desk
