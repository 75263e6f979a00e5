#include "desk/xml/file_access.h"

#include <libxml/parserInternals.h>
#include <libxml/uri.h>
#include <libxml/xmlIO.h>
#include <libxslt/documents.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

#include "desk/xml/limits.h"
#include "desk/xml/parse_budget.h"
#include "desk/xml/reference_path.h"
#include "desk/xml/xml_handles.h"
#include "platform/native_files.h"
#include "platform/native_roots.h"

namespace ventrix::desk {
namespace {

ReadScope* currentScope = nullptr;

/// What libxml2 opened last. The name that it keeps may have escapes or not.
NativePath openedLast;

struct OpenContent {
    std::string content;
    std::size_t at = 0;
};

/// The path in what libxml2 asks for: a file URL, or a path.
std::string_view WithoutScheme(std::string_view name) {
    for (const std::string_view prefix : {"file://localhost/", "file:///"}) {
        if (name.starts_with(prefix)) {
            const std::string_view path = name.substr(prefix.size() - 1);
            const bool hasDrive = platform::NativeRootLength(path.substr(1)) > 1;
            return hasDrive ? path.substr(1) : path;
        }
    }
    return name;
}

bool Read(const NativePath& path, OpenContent& opened) {
    const bool usable = !platform::ReadRegularFile(ToFilesystem(path), kMaxFileBytes, opened.content) &&
                        FindTooManyAttributes(opened.content).empty();
    if (usable) {
        openedLast = path;
    }
    return usable;
}

/// libxml2 passes names with and without escapes.
void* Open(const char* name) {
    const std::string path(WithoutScheme(name));
    const XmlString unescaped(reinterpret_cast<xmlChar*>(xmlURIUnescapeString(path.c_str(), 0, nullptr)));
    auto opened = std::make_unique<OpenContent>();
    return Read({std::string(View(unescaped.get()))}, *opened) || Read({path}, *opened) ? opened.release()
                                                                                        : nullptr;
}

int ReadPiece(void* context, char* buffer, int length) {
    auto& opened = *static_cast<OpenContent*>(context);
    const std::size_t count =
        std::min(opened.content.size() - opened.at, static_cast<std::size_t>(std::max(length, 0)));
    std::copy_n(opened.content.data() + opened.at, count, buffer);
    opened.at += count;
    return static_cast<int>(count);
}

int Close(void* context) {
    delete static_cast<OpenContent*>(context);
    return 0;
}

/// The first error of the parser, or why it could not begin.
std::string ReasonOf(xmlParserCtxt* parser, const ParseBudget& budget) {
    const xmlError* error = xmlCtxtGetLastError(parser);
    if (!budget.Refusal().empty()) {
        return budget.Refusal();
    }
    if (error == nullptr || error->domain == XML_FROM_IO || error->message == nullptr) {
        return "the file is missing or unreadable";
    }
    const std::string_view message = error->message;
    return "the file is not well-formed XML (line " + std::to_string(error->line) + ": " +
           std::string(message.substr(0, message.find('\n'))) + ")";
}

/// Loads what a stylesheet imports and the documents that it reads, with the limits of limits.h.
xmlDoc* LoadForXslt(const xmlChar* uri, xmlDict* names, int options, void* context, xsltLoadType type) {
    const XmlParser parser(xmlNewParserCtxt());
    if (parser == nullptr) {
        return nullptr;
    }
    if (names != nullptr) {
        xmlDictFree(parser->dict);
        parser->dict = names;
        xmlDictReference(names);
    }
    const ParseBudget budget(*parser);
    XmlDocument document(xmlCtxtReadFile(parser.get(), reinterpret_cast<const char*>(uri), nullptr,
                                         options | XML_PARSE_NONET | XML_PARSE_HUGE));
    if (!budget.Refusal().empty()) {
        document.reset();
    }
    if (document == nullptr && type == XSLT_LOAD_DOCUMENT && currentScope != nullptr) {
        currentScope->AddUnread(*static_cast<const xsltTransformContext*>(context), std::string(View(uri)),
                                ReasonOf(parser.get(), budget));
    }
    return document.release();
}

/// DTDs and parameter entities are read while the parser is in a subset. A general entity has a parser of its
/// own, which is in none.
xmlParserInput* LoadInScope(const char* url, const char* id, xmlParserCtxt* parser) {
    xmlParserInput* input = xmlNoNetExternalEntityLoader(url, id, parser);
    if (input == nullptr || parser == nullptr || parser->inSubset != 0 || currentScope == nullptr ||
        currentScope->Permits(openedLast, parser)) {
        return input;
    }
    xmlFreeInputStream(input);
    return nullptr;
}

}  // namespace

void ReadRegularFilesOnly() {
    static const bool done = [] {
        xmlInitParser();
        xmlCleanupInputCallbacks();
        xmlRegisterInputCallbacks([](const char*) { return 1; }, Open, ReadPiece, Close);
        xmlSetExternalEntityLoader(LoadInScope);
        xsltSetLoaderFunc(LoadForXslt);
        return true;
    }();
    static_cast<void>(done);
}

bool LiesInOneOf(const NativePath& file, const std::vector<NativePath>& folders) {
    const NativePath real = RealPath(file);
    return std::ranges::any_of(
        folders, [&](const NativePath& folder) { return IsBelowOrEqual(real, RealPath(folder)); });
}

std::string OutsideRefusal(const NativePath& file) {
    return file.utf8 +
           " lies outside the document's folders; if it belongs to the document, allow it with "
           "--allow-read " +
           NormalPath(FolderOf(RealPath(file))).utf8;
}

ReadScope::ReadScope(std::vector<NativePath> folders) : folders_(std::move(folders)), outer_(currentScope) {
    ReadRegularFilesOnly();
    currentScope = this;
}

ReadScope::~ReadScope() {
    currentScope = outer_;
}

ReadScope* ReadScope::Current() {
    return currentScope;
}

void ReadScope::Add(const std::vector<NativePath>& folders) {
    folders_.insert(folders_.end(), folders.begin(), folders.end());
}

void ReadScope::AddUnread(const xsltTransformContext& transformation, const std::string& uri,
                          const std::string& reason) {
    const xmlNode* instruction = transformation.inst;
    UnreadDocument unread{.uri = uri, .reason = reason};
    if (instruction != nullptr && instruction->doc != nullptr) {
        unread.stylesheet = TargetOf(View(instruction->doc->URL), {"/"}).path;
        unread.line = static_cast<int>(xmlGetLineNo(instruction));
    }
    const bool isKnown = std::ranges::any_of(unread_, [&unread](const UnreadDocument& known) {
        return known.stylesheet == unread.stylesheet && known.line == unread.line && known.uri == unread.uri;
    });
    if (!isKnown) {
        unread_.push_back(std::move(unread));
    }
}

bool ReadScope::Permits(const NativePath& file, const xmlParserCtxt* parser) {
    if (LiesInOneOf(file, folders_)) {
        return true;
    }
    if (refusal_.empty()) {
        const int line =
            parser == nullptr || parser->_private == nullptr ? 0 : ParseBudget::Of(parser).Line();
        refusal_ = (line == 0 ? "" : "line " + std::to_string(line) + ": ") + OutsideRefusal(file);
    }
    return false;
}

}  // namespace ventrix::desk
