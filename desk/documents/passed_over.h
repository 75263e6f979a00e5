// The files of a document that the module passes over: it encodes the files whose names end in .xml, .dita or
// .ditamap, in lower case, and packages others as they are.
#pragma once

#include <vector>

#include "desk/documents/document_files.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

struct PassedOverFile {
    NativePath path;
    bool xml = false;  ///< It has a root element, is not a page, and the document refers to it as markup.
};

/// Returns them in the order of the list, without graphics, missing files and the files of a DTD.
std::vector<PassedOverFile> PassedOverFiles(const DocumentFiles& files);

}  // namespace ventrix::desk
