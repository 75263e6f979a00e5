// Where external DTDs and entities come from: local files, whichever way a system id names them, and nothing
// else.
#pragma once

#include <libxml/parser.h>

#include <string>
#include <string_view>

namespace ventrix::xml {

/// The native path that a system id leads to: native or system notation, a file URL, or relative to a folder.
/// Empty for a network address.
std::string LocalFileOf(std::string_view systemId, std::string_view folder);

/// For the resolveEntity slot of a SAX handler.
xmlParserInput* OpenExternalSubset(void* context, const xmlChar* publicId, const xmlChar* systemId);

/// While it lives, libxml2 reads external entities from local files only.
class LocalEntitiesOnly {
  public:
    LocalEntitiesOnly();
    ~LocalEntitiesOnly();
    LocalEntitiesOnly(const LocalEntitiesOnly&) = delete;
    LocalEntitiesOnly& operator=(const LocalEntitiesOnly&) = delete;

  private:
    xmlExternalEntityLoader before_;
};

}  // namespace ventrix::xml
