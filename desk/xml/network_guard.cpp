#include "desk/xml/network_guard.h"

#include <libxslt/xsltutils.h>

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "desk/xml/file_access.h"

namespace ventrix::desk {
namespace {

void TakeStructured(void* context, xmlErrorPtr error) {
    static_cast<NetworkGuard*>(context)->Take(*error);
}

__attribute__((format(printf, 2, 3))) void TakeGeneric(void* context, const char* format, ...) {
    char piece[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(piece, sizeof piece, format, arguments);
    va_end(arguments);
    static_cast<NetworkGuard*>(context)->Append(piece);
}

}  // namespace

NetworkGuard::NetworkGuard(const MessageSink& messages)
    : messages_(messages),
      structured_(xmlStructuredError),
      structuredContext_(xmlStructuredErrorContext),
      generic_(xmlGenericError),
      genericContext_(xmlGenericErrorContext),
      xsltGeneric_(xsltGenericError),
      xsltContext_(xsltGenericErrorContext) {
    ReadRegularFilesOnly();
    xmlSetStructuredErrorFunc(this, TakeStructured);
    xmlSetGenericErrorFunc(this, TakeGeneric);
    xsltSetGenericErrorFunc(this, TakeGeneric);
}

NetworkGuard::~NetworkGuard() {
    if (!line_.empty()) {
        Append("\n");
    }
    xsltSetGenericErrorFunc(xsltContext_, xsltGeneric_);
    xmlSetGenericErrorFunc(genericContext_, generic_);
    xmlSetStructuredErrorFunc(structuredContext_, structured_);
}

void NetworkGuard::Take(const xmlError& error) {
    if (error.file != nullptr) {
        Append((std::string(error.file) + ":" + std::to_string(error.line) + ": ").c_str());
    }
    Append(error.message == nullptr ? "unknown error\n" : error.message);
}

void NetworkGuard::Append(const char* piece) {
    for (; *piece != '\0'; ++piece) {
        if (*piece != '\n') {
            line_ += *piece == '\r' ? ' ' : *piece;
            continue;
        }
        Emit(std::exchange(line_, {}));
    }
}

void NetworkGuard::Emit(const std::string& line) {
    if (line == "error" || line.starts_with("compilation error: ") || line.starts_with("runtime error: ")) {
        place_ = line;
    } else if (!line.empty()) {
        messages_(place_.empty() || place_ == "error" ? line : place_ + ": " + line);
        place_.clear();
    }
}

}  // namespace ventrix::desk
