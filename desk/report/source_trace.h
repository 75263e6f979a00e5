// Reads the encoded copies of the sources: which places they have of what is to be preserved, and which
// marker group carries each.
#pragma once

#include <vector>

#include "desk/report/preservation.h"
#include "desk/report/trace.h"

namespace ventrix::desk {

struct EncodedFile {
    NativePath copy;    ///< As the transformation received it.
    NativePath source;  ///< Compared with the copy, to see whether both have the same lines.
};

/// The places in the order of the files and of the documents. Adds the strings of all groups to the table.
SourceTrace TraceSources(const std::vector<EncodedFile>& files, const Preservation& preservation,
                         const PreservedItems& items, StringTable& strings);

}  // namespace ventrix::desk
