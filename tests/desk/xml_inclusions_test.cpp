#include "desk/xml/inclusions.h"

#include "support/text_rows.h"

namespace ventrix::test {
namespace {

TEST(Inclusions, OnlyPathsOfIncludeElementsAreEscaped) {
    const TextRow rows[] = {
        {"<xi:include href='a b.xml'/>", "<xi:include href='a%20b.xml'/>"},
        {"<include parse=\"text\" xpointer='x>y' href=\"\xC3\xA4.xml\"/>",
         "<include parse=\"text\" xpointer='x>y' href=\"%C3%A4.xml\"/>"},
        {"<xi:include href=\"a'b.xml\" a='c d'/>", "<xi:include href=\"a%27b.xml\" a='c d'/>"},
        {"<xi:include href='a&quot;&#xE4;&amp;.xml'/>", "<xi:include href='a%22%C3%A4%26.xml'/>"},
        {"<xi:include href='&folder;/a b.xml'/>", "<xi:include href='&folder;/a b.xml'/>"},
        {"<a href='a b'/>", "<a href='a b'/>"},
        {"<![CDATA[<xi:include href='a b'/>]]>", "<![CDATA[<xi:include href='a b'/>]]>"},
        {"<!-- don't <xi:include href='a b'/> -->", "<!-- don't <xi:include href='a b'/> -->"},
        {"<?p don't?><xi:include href='a b'/>", "<?p don't?><xi:include href='a%20b'/>"},
        {"<!DOCTYPE a [<!-- don't --><!ENTITY e 'x'>]><xi:include href='a b'/>",
         "<!DOCTYPE a [<!-- don't --><!ENTITY e 'x'>]><xi:include href='a%20b'/>"},
    };
    ExpectRows(rows, [](const std::string& markup) {
        const std::string root = "<r xmlns:xi='http://www.w3.org/2001/XInclude'/>";
        std::string document = markup + root;
        desk::EscapeInclusionPaths(document);
        return document.substr(0, document.size() - root.size());
    });
}

}  // namespace
}  // namespace ventrix::test
