// The applications that the dispatcher knows: common document types by name, each with the public ids of its
// DTD.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ventrix::desk {

/// The type that a document declares.
struct DocumentType {
    std::string publicId;  ///< May be empty, as may the system id.
    std::string systemId;
    std::string root;  ///< Name of the root element.
};

/// The application of a document type, found by the public id, else by the file name in the system id, else
/// by the root element. An unknown public id is returned as the name. Empty if nothing is known.
std::string ApplicationOf(const DocumentType& type);

/// The public ids under which a catalog may list the application's DTD, best first. An unknown name is
/// returned as the only id.
std::vector<std::string> PublicIdsOf(const std::string& application);

}  // namespace ventrix::desk
