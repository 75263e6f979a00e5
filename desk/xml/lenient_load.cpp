#include "desk/xml/lenient_load.h"

#include <libxml/SAX2.h>

#include <algorithm>

#include "desk/xml/file_access.h"
#include "desk/xml/limits.h"
#include "desk/xml/parse_budget.h"
#include "desk/xml/reference_path.h"
#include "platform/drives.h"
#include "platform/file_identity.h"
#include "platform/native_files.h"

namespace ventrix::desk {
namespace {

/// The parse errors that count; libxml2 recovers from the others.
struct Errors {
    std::string first;
    int line = 0, column = 0;  ///< Of the first.
    std::vector<std::string> undeclared;
    std::vector<UndeclaredPrefix> prefixes;
};

/// The parser ends its messages with a line break, and a quoted name may contain more.
std::string MessageLine(const char* message) {
    std::string line = message == nullptr ? "unknown error" : message;
    line.resize(line.find_last_not_of("\r\n") + 1);
    std::ranges::replace_if(
        line, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return line;
}

bool IsUndeclaredEntity(const xmlError& error) {
    return error.code == XML_ERR_UNDECLARED_ENTITY || error.code == XML_WAR_UNDECLARED_ENTITY;
}

void AddPrefix(const xmlError& error, std::vector<UndeclaredPrefix>& prefixes) {
    const std::string prefix = error.str1 == nullptr ? "" : error.str1;
    if (std::ranges::find(prefixes, prefix, &UndeclaredPrefix::prefix) == prefixes.end()) {
        prefixes.push_back({prefix, error.line});
    }
}

void CollectError(void* context, xmlErrorPtr error) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    auto& errors = *static_cast<Errors*>(ParseBudget::Of(parser).data);
    const std::string text = "line " + std::to_string(error->line) + ": " + MessageLine(error->message);
    if (IsUndeclaredEntity(*error)) {
        errors.undeclared.push_back(text);
    } else if (error->code == XML_NS_ERR_UNDEFINED_NAMESPACE) {
        AddPrefix(*error, errors.prefixes);
    } else if (error->level == XML_ERR_FATAL && errors.first.empty()) {
        errors.first = text;
        errors.line = error->line;
        errors.column = error->int2;
    }
}

/// Discards errors that belong to no parser context, such as a refused download, which libxml2 would print to
/// standard error.
class QuietScope {
  public:
    QuietScope() : function_(xmlStructuredError), context_(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {});
    }
    ~QuietScope() { xmlSetStructuredErrorFunc(context_, function_); }
    QuietScope(const QuietScope&) = delete;
    QuietScope& operator=(const QuietScope&) = delete;

  private:
    xmlStructuredErrorFunc function_;
    void* context_;
};

/// Turns an absolute path in either notation into a URI. A system id should be one already, but people write
/// plain paths, and the parser would not open one that contains spaces.
xmlParserInput* ResolveLocally(void* parser, const xmlChar* publicId, const xmlChar* systemId) {
    const std::string_view id = View(systemId);
    const bool absolute = id.starts_with('/') || platform::IsAbsoluteSystemPath(id);
    const NativePath path = absolute ? TargetOf(id, {"/"}).path : NativePath{};
    return xmlSAX2ResolveEntity(parser, publicId, path.Empty() ? systemId : Xml(FileUri(path).c_str()));
}

/// libxml2 does not keep the lines of declarations. They go to the field for the application's own data.
void DeclareEntity(void* context, const xmlChar* name, int type, const xmlChar* publicId,
                   const xmlChar* systemId, xmlChar* content) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    xmlSAX2EntityDecl(context, name, type, publicId, systemId, content);
    const bool parameter = type == XML_INTERNAL_PARAMETER_ENTITY || type == XML_EXTERNAL_PARAMETER_ENTITY;
    xmlEntity* entity = parameter || parser->inSubset != 1 ? nullptr : xmlGetDocEntity(parser->myDoc, name);
    if (entity != nullptr && entity->_private == nullptr) {
        entity->_private =
            reinterpret_cast<void*>(static_cast<std::intptr_t>(ParseBudget::Of(parser).Line()));
    }
}

void Parse(const std::string& content, const NativePath& path, int extraOptions, LenientDocument& result) {
    const int options = XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_RECOVER | XML_PARSE_NOERROR |
                        XML_PARSE_NOWARNING | extraOptions;
    const QuietScope quiet;
    const XmlParser parser(xmlNewParserCtxt());
    Errors errors;
    ParseBudget budget(*parser);
    budget.data = &errors;
    parser->sax->serror = CollectError;
    parser->sax->resolveEntity = ResolveLocally;
    parser->sax->entityDecl = DeclareEntity;
    result.document.reset(xmlCtxtReadMemory(parser.get(), content.data(), static_cast<int>(content.size()),
                                            FileUri(path).c_str(), nullptr, options));
    if (result.document != nullptr && xmlDocGetRootElement(result.document.get()) == nullptr) {
        result.document.reset();
    }
    result.beyondLimits = !budget.Refusal().empty();
    result.reason = result.beyondLimits ? budget.Refusal() : errors.first;
    if (result.document == nullptr && result.reason.empty()) {
        result.reason = "the file contains no XML element";
    }
    result.line = errors.line;
    result.column = errors.column;
    result.wellFormed = result.reason.empty();
    result.undeclaredEntities = std::move(errors.undeclared);
    result.undeclaredPrefixes = std::move(errors.prefixes);
}

std::string ReasonFor(const std::error_code& error) {
    if (error == std::errc::is_a_directory) {
        return "it is a folder, not a file";
    }
    if (error == std::errc::not_supported) {
        return "it is not a regular file";
    }
    return error == std::errc::file_too_large
               ? "it has more than " + std::to_string(kMaxFileBytes) + " bytes, which is the limit"
               : error.message();
}

}  // namespace

bool NamesExternalDtd(const xmlDoc* document) {
    const xmlDtd* dtd = document == nullptr ? nullptr : document->intSubset;
    return dtd != nullptr && (dtd->ExternalID != nullptr || dtd->SystemID != nullptr);
}

int DeclarationLine(const xmlEntity& entity) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(entity._private));
}

LenientDocument LoadLeniently(const NativePath& path, LoadFor purpose) {
    ReadRegularFilesOnly();
    LenientDocument result;
    std::string content;
    if (const std::error_code error = platform::ReadRegularFile(ToFilesystem(path), kMaxFileBytes, content)) {
        result.reason = ReasonFor(error);
        result.beyondLimits = error == std::errc::file_too_large;
        return result;
    }
    if (const auto identity = platform::IdentityOf(ToFilesystem(path))) {
        result.identity = {identity->device, identity->file};
    }
    result.reason = FindTooManyAttributes(content);
    if (!result.reason.empty()) {
        result.beyondLimits = true;
        return result;
    }
    // A DTD is loaded at once only for a stylesheet. For the other purposes the document is parsed without
    // it, and a second time with it if that left entities undeclared and the document names a DTD: most
    // documents then need no DTD at all.
    const int expansion = purpose == LoadFor::kListing ? 0 : XML_PARSE_NOENT | XML_PARSE_NOCDATA;
    const int dtd = XML_PARSE_DTDLOAD | XML_PARSE_DTDATTR;
    Parse(content, path, purpose == LoadFor::kStylesheet ? expansion | dtd : expansion, result);
    if (purpose != LoadFor::kStylesheet && !result.beyondLimits && !result.undeclaredEntities.empty() &&
        NamesExternalDtd(result.document.get())) {
        Parse(content, path, expansion | XML_PARSE_DTDLOAD, result);
    }
    if (NamesExternalDtd(result.document.get())) {
        result.undeclaredPrefixes.clear();
    }
    return result;
}

}  // namespace ventrix::desk
