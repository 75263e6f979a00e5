// Lists the files that a DITA map or topic, a DocBook document or any other XML document refers to. Strings
// are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "desk/documents/document_names.h"
#include "desk/paths/paths.h"
#include "desk/xml/lenient_load.h"

namespace ventrix::desk {

// The keys under which the host lists a file to the module.
inline constexpr char kDocumentKey[] = "documentType";
inline constexpr char kGraphicKey[] = "graphicsType";

/// One referenced file or web address.
struct DocumentFile {
    std::string key;           ///< kGraphicKey or kDocumentKey.
    NativePath path;           ///< Absolute and on a mapped drive; empty for a web address.
    std::string url;           ///< As written; empty for a file.
    NativePath referrer = {};  ///< The file that refers to it first; empty for the document itself.
    int line = 0;              ///< Of that reference; 0 if unknown.
    bool opaque = false;       ///< All references take it as code, text or a download, not as markup.
    bool dtd = false;          ///< A DTD or a part of one, which is no part of a result.
    bool entity = false;       ///< An external entity of another file, which may have no DOCTYPE.
};

/// A reference that is left out of the list.
struct ListingRemark {
    NativePath referrer;
    int line = 0;        ///< 0 if unknown.
    std::string what;    ///< The reference as written.
    std::string reason;  ///< One line.
};

/// A namespace prefix that a file uses and does not declare.
struct StrayPrefix {
    NativePath file;
    UndeclaredPrefix use;
};

struct DocumentFiles {
    std::vector<DocumentFile> files;  ///< The document first, each file once, in document order.
    /// The folders that the text of the document may come from, with those that the user has allowed.
    std::vector<NativePath> readable;
    std::vector<ListingRemark> remarks;  ///< In document order.
    std::vector<StrayPrefix> prefixes;   ///< Of the files whose references were followed.
    bool refused = true;                 ///< The document cannot or must not be processed.
    std::string reason;                  ///< Why, one line; empty otherwise.
    bool dita = false;                   ///< The document is a DITA map or topic.
    DocumentNames names;                 ///< Of the files whose references were followed.
};

/// Follows maps, topics and included files, depth first: a file's own references come right after it. Nothing
/// is fetched from a network, and documents that refer to themselves or to each other end the walk. A missing
/// file is listed; of a file that is not well-formed, the references up to the error and what the parser
/// recovers are listed too. A local file whose `scope` is external or peer is not part of the document and is
/// left out. A DTD without a public id is listed if it exists and its path is relative, with the files that
/// it pulls in.
///
/// The document is refused if it is missing, not well-formed, or has a name that the module would misread; if
/// it or a file that it refers to exceeds a limit of desk/xml/limits.h; and if an external entity or an
/// inclusion as text names a file outside of the document's area (document_area.h) and of the folders in
/// `allowRead`. `files` may then be incomplete.
DocumentFiles ListDocumentFiles(const NativePath& document, const std::vector<NativePath>& allowRead = {});

/// The files, without web addresses.
std::vector<NativePath> LocalFiles(const DocumentFiles& files);

}  // namespace ventrix::desk
