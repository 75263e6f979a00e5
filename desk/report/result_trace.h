// Reads the result of a transformation before it is decoded: which marker groups arrived in the text of its
// pages, which of their entries decoding will apply there, and what was copied to other places.
#pragma once

#include <string>
#include <vector>

#include "desk/report/preservation.h"
#include "desk/report/trace.h"

namespace ventrix::desk {

struct ResultFile {
    NativePath copy;       ///< As the transformation left it.
    NativePath name;       ///< Relative to the output folder; absolute if it lies elsewhere.
    bool isPage = false;   ///< Its text is what a reader sees.
    bool decoded = false;  ///< It will be, if it can be read.
};

/// The groups in the order of the files. Those that are not in the table of strings are listed as changed.
ResultTrace TraceResult(const std::vector<ResultFile>& files, const Preservation& preservation,
                        const StringTable& strings);

/// For a page of that name which was not decoded after all: nothing in it was applied.
void MarkUndecoded(const NativePath& name, const StringTable& strings, ResultTrace& trace);

}  // namespace ventrix::desk
