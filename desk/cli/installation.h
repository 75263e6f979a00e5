// Locates the files that are installed with the program.
#pragma once

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct Installation {
    NativePath module;    ///< Ventrix.so, on Windows Ventrix.dll.
    NativePath recorder;  ///< ventrix-script, which runs a script and records how it ends.
    NativePath folder;    ///< Contains Ventrix.xsl, dita-to-xhtml.xsl and icu_data.
};

/// Returns the locations relative to the running program: `../lib/ventrix` and `../share/ventrix` if the
/// latter exists; all beside the program, with the folder `data`, if that exists, as in the zip for Windows;
/// else those of the build tree. The returned files may be missing.
Installation FindInstallation();

}  // namespace ventrix::desk
