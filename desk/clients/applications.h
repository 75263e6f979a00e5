// The applications that the dispatcher knows by name: the usual document types, each with the public ids of
// its DTD.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ventrix::desk {

/// What a document says of its type.
struct DocumentType {
    std::string publicId;  ///< Empty without one; so is the system id.
    std::string systemId;
    std::string root;
};

/// The name for a document type: of the public id, else of the system id's file name, else of the root
/// element. A public id that no application has is a name of its own. Empty if nothing is known.
std::string ApplicationOf(const DocumentType& type);

/// The public ids under which the application's DTD may stand in a catalog, best first. A name that no
/// application has is taken as the public id.
std::vector<std::string> PublicIdsOf(const std::string& application);

}  // namespace ventrix::desk
