// Documents with many constructs, cut at every byte and with every byte changed: each fails with a reason or
// passes ExerciseDocument.
#include <libxml/parser.h>

#include "markers/document_exercise.h"
#include "markers/xml_fixture.h"

namespace ventrix::test {
namespace {

using XmlPrefix = XmlTest;
using namespace std::string_literals;

const std::string kRichDocuments[] = {
    R"(<?xml version="1.0" encoding="utf-8"?>
<!-- c --><!DOCTYPE a SYSTEM 'm.dtd' [<!ENTITY e "E<b x='1'/>&f;"> <!ENTITY f "&#38;#38;"> <!ATTLIST b y CDATA 'd' z NMTOKENS ' 1 2'>
<?p ]>?><!ENTITY % g SYSTEM 'g'><!-- ]> -->]><a x = 'y>"&f;' ><b/>&#65;&e;<![CDATA[]]]]>&lt;<?q r?></a ><!---->)",
    "\xEF\xBB\xBF<n:a xmlns:n='u' n:b='\xC3\xA4'>\r\n\xE2\x82\xAC<c "
    "xmlns=\"v\">\t</c>\xF0\x9F\x98\x80</n:a>\r\n",
    "<?xml version='1.0' encoding='ISO-8859-1'?><a b='\xE4'>\xF6&#8364;</a>",
    "\xFF\xFE<\0a\0>\0&\0l\0t\0;\0=\xD8\0\xDE<\0/\0a\0>\0"s,
};

TEST_F(XmlPrefix, EveryPrefixLoadsOrFailsWithAReason) {
    for (const std::string& document : kRichDocuments) {
        ASSERT_TRUE(Load(document)) << reason;
        for (std::size_t length = 0; length <= document.size(); ++length) {
            EXPECT_EQ(ExerciseDocument(kDocumentPath, document.substr(0, length)), "")
                << document.substr(0, length);
        }
    }
}

TEST_F(XmlPrefix, EveryChangedByteLoadsOrFailsWithAReason) {
    for (const std::string& document : kRichDocuments) {
        for (std::size_t at = 0; at < document.size(); ++at) {
            for (const char byte : {'<', '&', '\'', '\xFF'}) {
                std::string changed = document;
                changed[at] = byte;
                EXPECT_EQ(ExerciseDocument(kDocumentPath, changed), "") << changed;
            }
        }
    }
}

/// The verdict of libxml2 on a document that declares no entities.
bool IsWellFormed(const std::string& document) {
    constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE;
    xmlDoc* parsed =
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, kOptions);
    xmlFreeDoc(parsed);
    return parsed != nullptr;
}

TEST_F(XmlPrefix, LoadsExactlyWhatLibxml2Accepts) {
    const std::string document =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<a x='1' y=\"&lt;&#9;'\" ><b c='>' />t&amp;&#xE4;]]"
        "<!-- c -->\xC3\xA4<?p q?><![CDATA[<]]]]>\n<d:e xmlns:d=\"u\">&#32;</d:e\n><f/></a>\n";
    ASSERT_TRUE(Load(document) && IsWellFormed(document));
    for (std::size_t at = 0; at < document.size(); ++at) {
        for (const char byte : std::string("<>&;'\"=/!?-[]:x1 \x01\x80\xC3\xED\xEF")) {
            std::string changed = document;
            changed[at] = byte;
            EXPECT_EQ(bool(Load(changed)), IsWellFormed(changed)) << changed << reason;
            changed = document;
            changed.insert(at, 1, byte);
            EXPECT_EQ(bool(Load(changed)), IsWellFormed(changed)) << changed << reason;
        }
    }
}

}  // namespace
}  // namespace ventrix::test
