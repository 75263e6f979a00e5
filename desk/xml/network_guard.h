// Keeps libxml2 and libxslt off the network while it lives, and receives their messages. Guards may nest: the
// settings belong to the process, and each guard restores those that it found.
#pragma once

#include <libxml/xmlerror.h>

#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

class NetworkGuard {
  public:
    explicit NetworkGuard(const MessageSink& messages);
    ~NetworkGuard();
    NetworkGuard(const NetworkGuard&) = delete;
    NetworkGuard& operator=(const NetworkGuard&) = delete;

    /// Adds the message of an error, with its place.
    void Take(const xmlError& error);

    /// Adds a piece of a message; complete lines go to the sink.
    void Append(const char* piece);

  private:
    void Emit(const std::string& line);

    const MessageSink& messages_;
    std::string line_;
    std::string place_;  ///< libxslt reports the place of an error on a line before the message.
    xmlStructuredErrorFunc structured_;
    void* structuredContext_;
    xmlGenericErrorFunc generic_;
    void* genericContext_;
    xmlGenericErrorFunc xsltGeneric_;
    void* xsltContext_;
};

}  // namespace ventrix::desk
