// Locates the files that are installed with the program.
#pragma once

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct Installation {
    NativePath module;    ///< Ventrix.so.
    NativePath recorder;  ///< ventrix-script, which runs a script and records how it ends.
    NativePath folder;    ///< Contains Ventrix.xsl, dita-to-xhtml.xsl and icu_data.
};

/// Returns the locations relative to the running program: `../lib/ventrix` and `../share/ventrix` if the
/// latter exists, else those of the build tree. The returned files may be missing.
Installation FindInstallation();

}  // namespace ventrix::desk
