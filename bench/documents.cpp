#include "bench/documents.h"

namespace ventrix::bench {
namespace {

constexpr std::size_t kParagraphsPerSection = 20;
constexpr std::size_t kElementsPerParagraph = 3;

void AppendParagraph(std::string& topic, std::size_t number) {
    topic += number % 4 == 0 ? "      <p audience=\"expert\">" : "      <p>";
    topic += "Before you open valve " + std::to_string(number) +
             ", press <uicontrol>Stop</uicontrol> and wait until the ";
    topic += number % 4 == 1 ? "<ph product=\"x2\">" : "<ph>";
    topic += "green lamp</ph> at the front &amp; back goes out.</p>\n";
}

void OpenSection(std::string& topic, std::size_t number) {
    topic += "    <section id=\"s" + std::to_string(number) + "\"";
    topic += number % 4 == 0 ? " platform=\"line\">\n" : ">\n";
}

}  // namespace

std::string MakeTopic(std::size_t elements) {
    std::string topic =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<topic id=\"t\">\n  <title>Valves</title>\n  <body>\n";
    const std::size_t paragraphs = elements / kElementsPerParagraph;
    for (std::size_t i = 0; i < paragraphs; ++i) {
        if (i % kParagraphsPerSection == 0) {
            topic += i == 0 ? "" : "    </section>\n";
            OpenSection(topic, i / kParagraphsPerSection);
        }
        AppendParagraph(topic, i);
    }
    return topic + "    </section>\n  </body>\n</topic>\n";
}

std::string MakeWide(std::size_t siblings) {
    std::string document = "<topic>\n";
    for (std::size_t i = 0; i < siblings; ++i) {
        document += i % 3 == 0 ? "<note audience=\"expert\">Hot</note>\n" : "<p>Turn the wheel</p>\n";
    }
    return document + "</topic>\n";
}

std::string MakeDeep(std::size_t levels) {
    std::string document;
    for (std::size_t i = 0; i < levels; ++i) {
        document += i % 3 == 0 ? "<section audience=\"expert\">down" : "<section>down";
    }
    for (std::size_t i = 0; i < levels; ++i) {
        document += "up</section>\n";
    }
    return document;
}

}  // namespace ventrix::bench
