// Changes a package where the transformation could not cope with it, above all its marker text. A toolkit
// makes file names of a branch filter's prefix, shapes of the words in an image map, and sort keys, search
// words and attributes of metadata: marker text breaks these or reaches a reader. A preserved element has
// neither text of its own, if that comes from a reference, nor an id that references could find.
#pragma once

#include <string>

#include "desk/toolkit/dita_run.h"
#include "desk/toolkit/no_prose.h"

namespace ventrix::desk {

/// Changes the XML files in the folder and below: takes marker text out of elements that contain no prose;
/// escapes the paths of XInclude, if it is not a DITA package; and puts elements back that references need.
/// Preserved elements that this affects are findings. Returns the first file that could not be written, one
/// line with the reason; empty if all is done.
std::string PreparePackage(const NativePath& folder, Vocabulary vocabulary,
                           const std::function<void(const DitaFinding&)>& finding);

}  // namespace ventrix::desk
