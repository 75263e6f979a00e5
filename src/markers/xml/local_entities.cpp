#include "markers/xml/local_entities.h"

#include <libxml/parserInternals.h>
#include <libxml/uri.h>

#include <string>
#include <string_view>

#include "platform/drives.h"

namespace ventrix::xml {
namespace {

std::string Unescaped(std::string_view uri) {
    char* text = xmlURIUnescapeString(uri.data(), static_cast<int>(uri.size()), nullptr);
    std::string result = text == nullptr ? std::string(uri) : text;
    xmlFree(text);
    return result;
}

std::string FileUrlPath(std::string_view url) {
    url.remove_prefix(std::string_view("file:").size());
    if (url.starts_with("///")) {
        url.remove_prefix(2);
    } else if (url.starts_with("//localhost/")) {
        url.remove_prefix(std::string_view("//localhost").size());
    }
    std::string path = Unescaped(url);
    // "/C:/folder" is a path on a drive after the slash of the URL.
    return path.size() > 2 && path[2] == ':' ? platform::ToNative(path.substr(1)) : path;
}

/// The native path that a system id means; empty for a network address. `folder` is where relative ones
/// start.
std::string LocalFileOf(std::string_view systemId, std::string_view folder) {
    if (systemId.starts_with("file:")) {
        return FileUrlPath(systemId);
    }
    if (platform::IsAbsoluteSystemPath(systemId)) {
        return platform::ToNative(systemId);
    }
    if (systemId.find("://") != std::string_view::npos) {
        return {};
    }
    std::string path(systemId);
    for (char& c : path) {
        c = c == '\\' ? '/' : c;
    }
    return path.starts_with('/') || folder.empty() ? path : std::string(folder) + '/' + path;
}

bool Exists(const std::string& nativePath) {
    return xmlCheckFilename(nativePath.c_str()) == 1;
}

xmlParserInput* OpenLocal(std::string_view systemId, xmlParserCtxt* context) {
    const char* document = context->input == nullptr ? nullptr : context->input->filename;
    const std::string_view path = document == nullptr ? std::string_view() : document;
    const std::size_t slash = path.rfind('/');
    std::string file =
        LocalFileOf(systemId, slash == std::string_view::npos ? std::string_view() : path.substr(0, slash));
    if (!file.empty() && !Exists(file)) {
        file = Unescaped(file);
    }
    return file.empty() || !Exists(file) ? nullptr : xmlNewInputFromFile(context, file.c_str());
}

xmlParserInput* LoadLocal(const char* url, const char* id, xmlParserCtxt* context) {
    return url == nullptr || context == nullptr ? nullptr : OpenLocal(url, context);
}

}  // namespace

xmlParserInput* OpenExternalSubset(void* context, const xmlChar* publicId, const xmlChar* systemId) {
    return systemId == nullptr
               ? nullptr
               : OpenLocal(reinterpret_cast<const char*>(systemId), static_cast<xmlParserCtxt*>(context));
}

LocalEntitiesOnly::LocalEntitiesOnly() : previous_(xmlGetExternalEntityLoader()) {
    xmlSetExternalEntityLoader(LoadLocal);
}

LocalEntitiesOnly::~LocalEntitiesOnly() {
    xmlSetExternalEntityLoader(previous_);
}

}  // namespace ventrix::xml
