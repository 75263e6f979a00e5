// Where the desk host's own files lie.
#pragma once

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct Installation {
    NativePath module;  ///< Ventrix.so.
    NativePath folder;  ///< Holds Ventrix.xsl, dita-to-xhtml.xsl and icu_data.
};

/// Found from where this program lies: `../lib/ventrix` and `../share/ventrix` where it is installed, else
/// the places of the build tree. The files need not exist.
Installation FindInstallation();

}  // namespace ventrix::desk
