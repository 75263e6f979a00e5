// The documents that the desk host reads: DITAVAL files, maps, and the references of any document.
#include <libxml/parser.h>

#include "desk/documents/references.h"
#include "desk/toolkit/dita_map.h"
#include "desk/toolkit/ditaval.h"
#include "desk/xml/xml_handles.h"
#include "fuzz/checks.h"
#include "fuzz/environment.h"
#include "fuzz/targets.h"

namespace ventrix::fuzz {
namespace {

desk::NativePath NativeFileWith(const std::string& name, std::string_view content) {
    return desk::ToNative(desk::SystemPath{TempFileWith(name, content)});
}

desk::XmlDocument Parse(const std::string& text) {
    return desk::XmlDocument(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_RECOVER));
}

void CheckReason(const std::string& reason) {
    Check(!reason.empty() && reason.find('\n') == std::string::npos, "the reason is not one line: " + reason);
}

}  // namespace

void ReferenceListing(std::string_view input) {
    const desk::XmlDocument document = Parse(std::string(input));
    if (document == nullptr || xmlDocGetRootElement(document.get()) == nullptr) {
        return;
    }
    for (const desk::Reference& reference : desk::ReferencesOf(document.get())) {
        Check(!reference.text.empty(), "an empty reference");
    }
    desk::IsDita(document.get());
}

// A DITAVAL file up to a form feed, then the topic that it filters.
void DitavalRules(std::string_view input) {
    const std::size_t end = std::min(input.find('\f'), input.size());
    std::string reason;
    const auto rules = desk::ReadDitaval(NativeFileWith("ditaval", input.substr(0, end)), reason);
    if (!rules) {
        CheckReason(reason);
        return;
    }
    const desk::XmlDocument topic = Parse(std::string(input.substr(std::min(end + 1, input.size()))));
    if (topic == nullptr || xmlDocGetRootElement(topic.get()) == nullptr) {
        return;
    }
    if (desk::Filter(*rules, topic.get(), [](const xmlNode*) {})) {
        for (xmlNode* node = xmlDocGetRootElement(topic.get()); node != nullptr;
             node = desk::NextNode(node, xmlDocGetRootElement(topic.get()))) {
            Check(node->type != XML_ELEMENT_NODE || !desk::IsExcluded(*rules, node),
                  "an excluded element is left");
        }
    }
}

void DitaMap(std::string_view input) {
    const desk::MessageSink checkLine = [](const std::string& line) {
        Check(line.find('\n') == std::string::npos, "a message of several lines: " + line);
    };
    const desk::DitaRun run{
        .document = NativeFileWith("map", input),
        .filters = {},
        .pages = {},
        .log = checkLine,
        .unread = checkLine,
        .finding = [&checkLine](const desk::DitaFinding& finding) { checkLine(finding.text); },
        .resources = {},
        .parameters = {}};
    const desk::DitaSources unfiltered;
    desk::DitaLibrary library(unfiltered, checkLine);
    desk::ReadNavigation(run.document, library, run);
}

}  // namespace ventrix::fuzz
