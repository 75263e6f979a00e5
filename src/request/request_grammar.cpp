#include "request/request_grammar.h"

#include <algorithm>
#include <cstring>

#include "bridge/contract/request.h"
#include "kit/format/scan.h"

namespace ventrix {

namespace {

constexpr std::size_t kTokenCapacity = kLongestRequestToken + 1;

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

constexpr bool kIsFlag = false;
constexpr bool kHasValue = true;

constexpr RequestOption kRequestOptions[] = {
    {kDocIdOption, kHasValue, [](PublishRequest& r, const char* v) { Q_ScanText(v, "%d", &r.documentId); }},
    {kOutputFolderOption, kHasValue, [](PublishRequest& r, const char* v) { Store(r.outputFolder, v); }},
    {kOutFilePathOption, kHasValue, [](PublishRequest& r, const char* v) { r.params.outFilePath = v; }},
    {kShowProgressBarOption, kIsFlag, [](PublishRequest& r, const char*) { r.showProgressBar = true; }},
    {kAttributesOption, kHasValue,
     [](PublishRequest& r, const char* v) { StoreList(r.params.attributes, v); }},
    {kTargetAttrOption, kHasValue, [](PublishRequest& r, const char* v) { r.params.targetAttr = v; }},
    {kElementsOption, kHasValue, [](PublishRequest& r, const char* v) { StoreList(r.params.elements, v); }},
    {kDitavalOption, kHasValue, [](PublishRequest& r, const char* v) { Store(r.ditaval, v); }},
    {kUseDitaOtOption, kIsFlag, [](PublishRequest& r, const char*) { r.useDitaOt = true; }},
    {kUseXsltOption, kHasValue, [](PublishRequest& r, const char* v) { Store(r.stylesheet, v); }},
    {kUsePreScriptOption, kHasValue, [](PublishRequest& r, const char* v) { Store(r.preScript, v); }},
    {kUsePostScriptOption, kHasValue, [](PublishRequest& r, const char* v) { Store(r.postScript, v); }},
    {kLogFileOption, kHasValue, [](PublishRequest& r, const char* v) { Store(r.logFile, v); }},
    {kScopedAttributesOption, kHasValue,
     [](PublishRequest& r, const char* v) { StoreList(r.params.scopedAttributes, v); }},
    {kAddXpathOption, kIsFlag, [](PublishRequest& r, const char*) { r.params.addXpath = true; }},
    {kXpathAttrOption, kHasValue, [](PublishRequest& r, const char* v) { r.params.xpathAttr = v; }},
    {kAddSourcePathOption, kHasValue,
     [](PublishRequest& r, const char* v) { StoreList(r.params.addSourcePath, v); }},
    {kSourcePathAttrOption, kHasValue, [](PublishRequest& r, const char* v) { r.params.sourcePathAttr = v; }},
    {kPreserveXPathListOption, kHasValue,
     [](PublishRequest& r, const char* v) { StoreList(r.params.preserveXPathList, v); }},
    {kPreserveXPathAttrOption, kHasValue,
     [](PublishRequest& r, const char* v) { r.params.preserveXPathAttr = v; }},
};

const RequestOption* FindOption(const char* name) {
    const auto* found =
        std::find_if(std::begin(kRequestOptions), std::end(kRequestOptions),
                     [name](const RequestOption& option) { return Q_StrICompare(name, option.name) == 0; });
    return found == std::end(kRequestOptions) ? nullptr : found;
}

RequestCommand CommandNamed(const char* name) {
    if (Q_StrIEqual(name, kPublishCommand)) {
        return RequestCommand::kPublish;
    }
    return Q_StrIEqual(name, kValidateCommand) ? RequestCommand::kValidate : RequestCommand::kNone;
}

/// Reads an option and its value. Leaves the last token in the buffer; if it is empty, the request ends
/// there.
const char* ReadOption(const char* cursor, char* buffer, PublishRequest& request) {
    cursor = ReadToken(cursor, buffer, kTokenCapacity);
    const RequestOption* option = FindOption(buffer);
    if (option == nullptr) {
        return cursor;
    }
    if (option->takesValue) {
        cursor = ReadToken(cursor, buffer, kTokenCapacity);
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
    char token[kTokenCapacity];
    const char* cursor = ReadToken(text, token, sizeof token);
    request.command = CommandNamed(token);
    while (request.command != RequestCommand::kNone && token[0] != '\0') {
        cursor = ReadOption(cursor, token, request);
    }
    return request;
}

}  // namespace ventrix
