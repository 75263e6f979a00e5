// Lists the files that a DITA map or topic, a DocBook or any other XML document refers to. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// One referenced file or web address.
struct DocumentFile {
    std::string key;  ///< "graphicsType" for a graphic, "documentType" for everything else.
    NativePath path;  ///< Absolute, and on a mapped drive; empty for a web address.
    std::string url;  ///< As written; empty for a file.
};

/// Something that the lister left out or could not read, named for the person.
struct ListingRemark {
    std::string what;    ///< The file or reference.
    std::string reason;  ///< One line without a line break.
};

struct DocumentFiles {
    std::vector<DocumentFile> files;     ///< The document first, each file once, in document order.
    std::vector<ListingRemark> remarks;  ///< What was left out, in the order met.
    bool readable = false;               ///< False when the document itself is missing or no XML.
    std::string reason;                  ///< Why it is not readable; empty otherwise.
    bool dita = false;                   ///< The document is a DITA map or topic.
};

/// Follows maps, topics and included files from the document at this native path, each reference listed where
/// it stands and followed at once. Never fetches anything from a network and ends on documents that refer to
/// themselves or in a ring. A missing file is listed, and so is one that is not well-formed, with what could
/// be read of it. Local files whose `scope` is external or peer are no part of the document and are left out.
/// Of a DTD without a public id, the file is listed if it exists and its path is relative.
DocumentFiles ListDocumentFiles(const NativePath& document);

}  // namespace ventrix::desk
