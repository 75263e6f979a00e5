#include "desk/report/source_trace.h"

#include <algorithm>

#include "desk/report/source_walk.h"
#include "desk/xml/lenient_load.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

std::ptrdiff_t LineEnds(const NativePath& file) {
    std::string content;
    return platform::ReadWholeFile(file.utf8, content) == platform::kErrorNone
               ? std::ranges::count(content, '\n')
               : -1;
}

}  // namespace

SourceTrace TraceSources(const std::vector<EncodedFile>& files, const Preservation& preservation,
                         const PreservedItems& items, StringTable& strings) {
    SourceTrace trace;
    for (const EncodedFile& file : files) {
        const LenientDocument loaded = LoadLeniently(file.copy);
        if (loaded.document == nullptr || !loaded.wellFormed) {
            trace.unread.push_back(file.source);
            continue;
        }
        trace.files.push_back(file.source);
        const bool linesKnown = LineEnds(file.copy) == LineEnds(file.source);
        SourceWalk(preservation, items, linesKnown, trace, strings)
            .Run(*xmlDocGetRootElement(loaded.document.get()));
    }
    return trace;
}

}  // namespace ventrix::desk
