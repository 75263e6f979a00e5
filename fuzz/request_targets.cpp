// Requests, and the host's lists of a document's files.
#include "bridge/contract/request.h"
#include "fuzz/checks.h"
#include "fuzz/targets.h"
#include "pipeline/reference_scan.h"
#include "request/request_grammar.h"
#include "support/test_host.h"

namespace ventrix::fuzz {
namespace {

std::string Joined(const std::list<std::string>& parts, char separator) {
    std::string text;
    for (const std::string& part : parts) {
        text.append(text.empty() && &part == &parts.front() ? "" : std::string(1, separator)).append(part);
    }
    return text;
}

void CheckLength(const Q_String& value) {
    Check(value == nullptr || Q_StrLen(value.get()) <= kLongestRequestToken,
          "a value is longer than a token");
}

/// A value of any shape. Byte 0 ends a list.
test::HostValue NextValue(Parts& parts, int depth) {
    switch (parts.Byte() % 4) {
        case 0:
            return test::Number(static_cast<std::int32_t>(parts.Number()));
        case 1:
            return test::Document(parts.Line());
        case 2:
            return test::Text(parts.Line());
        default: {
            std::vector<test::HostValue> fields;
            while (depth < 10 && !parts.AtEnd() && parts.Byte() != 0) {
                fields.push_back(NextValue(parts, depth + 1));
            }
            return test::Fields(std::move(fields));
        }
    }
}

}  // namespace

void RequestGrammar(std::string_view input) {
    const std::string text(input);
    const PublishRequest request = ParseRequest(text.c_str());
    for (const Q_String* value : {&request.outputFolder, &request.stylesheet, &request.preScript,
                                  &request.postScript, &request.ditaval, &request.logFile}) {
        CheckLength(*value);
    }
    std::list<std::string> list;
    ParseCommaList(text, list, ',');
    Check(Joined(list, ',') == text, "the parts of a list are not the list");
    char token[16];
    for (const char* cursor = text.c_str(); *cursor != '\0';) {
        const char* next = ReadToken(cursor, token, sizeof token);
        Check(next > cursor, "a token of no length");
        cursor = next;
    }
}

void FileListing(std::string_view input) {
    static test::LinkedHost host;
    Parts parts(input);
    std::vector<test::HostValue> files;
    while (!parts.AtEnd()) {
        files.push_back(NextValue(parts, 0));
    }
    const std::size_t count = files.size();
    host.documents[7].files = std::move(files);
    host.log.clear();
    RenewReferences(7);
    Check(referenceCache.list.size() <= count, "more references than values");
    const ReferencePaths paths = CachedPaths();
    Check(paths.documents.size() + paths.graphics.size() == referenceCache.list.size(),
          "a reference is lost");
}

}  // namespace ventrix::fuzz
