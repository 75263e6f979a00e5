// Where the desk host's own files lie. Paths are native.
#pragma once

#include <string>

namespace ventrix::desk {

struct Installation {
    std::string module;    ///< Ventrix.so.
    std::string recorder;  ///< ventrix-script, which runs a script and writes down how it ends.
    std::string folder;    ///< Holds Ventrix.xsl, dita-to-xhtml.xsl and icu_data.
};

/// Found from where this program lies: `../lib/ventrix` and `../share/ventrix` where it is installed, else
/// the places of the build tree. The files need not exist.
Installation FindInstallation();

}  // namespace ventrix::desk
