#include "request/request_grammar.h"

#include <algorithm>
#include <cstring>

#include "kit/scan.h"

namespace ventrix {

namespace {

constexpr std::size_t tokenCapacity = 1024;

struct RequestOption {
    const char* name;
    bool takesValue;
    void (*store)(PublishRequest& request, const char* value);
};

void Store(Q_String& text, const char* value) {
    text.reset(Q_StrDup(value));
}

void StoreList(std::list<std::string>& list, const char* value) {
    ParseCommaList(value, list, ',');
}

constexpr bool isFlag = false;
constexpr bool hasValue = true;

constexpr RequestOption requestOptions[] = {
    {"-docId", hasValue, [](PublishRequest& r, const char* v) { Q_ScanText(v, "%d", &r.documentId); }},
    {"-outputFolder", hasValue, [](PublishRequest& r, const char* v) { Store(r.outputFolder, v); }},
    {"-outFilePath", hasValue, [](PublishRequest& r, const char* v) { r.params.outFilePath = v; }},
    {"-showProgressBar", isFlag, [](PublishRequest& r, const char*) { r.showProgressBar = true; }},
    {"-attributes", hasValue, [](PublishRequest& r, const char* v) { StoreList(r.params.attributes, v); }},
    {"-targetAttr", hasValue, [](PublishRequest& r, const char* v) { r.params.targetAttr = v; }},
    {"-elements", hasValue, [](PublishRequest& r, const char* v) { StoreList(r.params.elements, v); }},
    {"-ditaval", hasValue, [](PublishRequest& r, const char* v) { Store(r.ditaval, v); }},
    {"-useDITAOT", isFlag, [](PublishRequest& r, const char*) { r.useDitaOt = true; }},
    {"-useXSLT", hasValue, [](PublishRequest& r, const char* v) { Store(r.stylesheet, v); }},
    {"-usePreScript", hasValue, [](PublishRequest& r, const char* v) { Store(r.preScript, v); }},
    {"-usePostScript", hasValue, [](PublishRequest& r, const char* v) { Store(r.postScript, v); }},
    {"-logFile", hasValue, [](PublishRequest& r, const char* v) { Store(r.logFile, v); }},
    {"-scopedAttributes", hasValue,
     [](PublishRequest& r, const char* v) { StoreList(r.params.scopedAttributes, v); }},
    {"-addXpath", isFlag, [](PublishRequest& r, const char*) { r.params.addXpath = true; }},
    {"-xpathAttr", hasValue, [](PublishRequest& r, const char* v) { r.params.xpathAttr = v; }},
    {"-addSourcePath", hasValue,
     [](PublishRequest& r, const char* v) { StoreList(r.params.addSourcePath, v); }},
    {"-sourcePathAttr", hasValue, [](PublishRequest& r, const char* v) { r.params.sourcePathAttr = v; }},
    {"-preserveXPathList", hasValue,
     [](PublishRequest& r, const char* v) { StoreList(r.params.preserveXPathList, v); }},
    {"-preserveXPathAttr", hasValue,
     [](PublishRequest& r, const char* v) { r.params.preserveXPathAttr = v; }},
};

const RequestOption* FindOption(const char* name) {
    const auto* found =
        std::find_if(std::begin(requestOptions), std::end(requestOptions),
                     [name](const RequestOption& option) { return Q_StrICompare(name, option.name) == 0; });
    return found == std::end(requestOptions) ? nullptr : found;
}

RequestCommand CommandNamed(const char* name) {
    if (Q_StrIEqual(name, "Publish")) {
        return RequestCommand::publish;
    }
    return Q_StrIEqual(name, "Validate") ? RequestCommand::validate : RequestCommand::none;
}

/// Reads one option with its value. The buffer holds the last token read, which ends the request if it is
/// empty.
const char* ReadOption(const char* cursor, char* buffer, PublishRequest& request) {
    cursor = ReadToken(cursor, buffer, tokenCapacity);
    const RequestOption* option = FindOption(buffer);
    if (option == nullptr) {
        return cursor;
    }
    if (option->takesValue) {
        cursor = ReadToken(cursor, buffer, tokenCapacity);
    }
    if (buffer[0] != '\0') {
        option->store(request, buffer);
    }
    return cursor;
}

}  // namespace

const char* ReadToken(const char* cursor, char* buffer, std::size_t capacity) {
    cursor += std::strspn(cursor, " ");
    const bool quoted = *cursor == '"' || *cursor == '\'';
    const char end[] = {quoted ? *cursor : ' ', '\0'};
    if (quoted) {
        ++cursor;
    }
    const std::size_t length = std::strcspn(cursor, end);
    const std::size_t stored = std::min(length, capacity - 1);
    std::memcpy(buffer, cursor, stored);
    buffer[stored] = '\0';
    cursor += length;
    return quoted && *cursor != '\0' ? cursor + 1 : cursor;
}

void ParseCommaList(std::string_view text, std::list<std::string>& list, char separator) {
    if (text.empty()) {
        return;
    }
    for (auto end = text.find(separator); end != std::string_view::npos; end = text.find(separator)) {
        list.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    list.emplace_back(text);
}

PublishRequest ParseRequest(const char* text) {
    PublishRequest request;
    char token[tokenCapacity];
    const char* cursor = ReadToken(text, token, sizeof token);
    request.command = CommandNamed(token);
    while (request.command != RequestCommand::none && token[0] != '\0') {
        cursor = ReadOption(cursor, token, request);
    }
    return request;
}

}  // namespace ventrix
