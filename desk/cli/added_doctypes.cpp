#include "desk/cli/added_doctypes.h"

#include <string>

#include "desk/xml/doctype.h"
#include "desk/xml/stylesheet.h"
#include "platform/files.h"

namespace ventrix::desk {

void RemoveAddedDoctypes(const DocumentFiles& files, const DocumentCopies& copies) {
    for (const DocumentFile& file : files.files) {
        const NativePath copy = CopyOf(copies, file.path);
        std::string source, content;
        if (file.entity && copy != file.path &&
            platform::ReadWholeFile(file.path.utf8, source) == platform::kErrorNone && !HasDoctype(source) &&
            platform::ReadWholeFile(copy.utf8, content) == platform::kErrorNone && HasDoctype(content)) {
            WriteOutput(copy, WithoutAddedDoctype(content));
        }
    }
}

}  // namespace ventrix::desk
