#include "desk/reference/option_details.h"

#include <map>

namespace ventrix::desk {

std::string DetailsOf(const std::string& option) {
    static const std::map<std::string, std::string> kDetails = {
        {"attributes",
         "A name that does not occur in any file of the document gets a note, and a probable misspelling a "
         "warning."},
        {"color", "`auto` uses colours on a terminal, unless the environment variable NO_COLOR is set."},
        {"css", "Files that it refers to are not copied."},
        {"drive", "Without this option, Z is the root folder."},
        {"format", "With `text`, the findings go to standard error."},
        {"keep-markers", "Without this option, it is taken out of there."},
        {"log",
         "Publishing without this option writes it beside the output folder, with `.log` appended to its "
         "name."},
        {"logo", "An image that browsers show: SVG, PNG, JPEG, GIF, WebP or AVIF."},
        {"output",
         "Your own files in it are kept. A failed run leaves the folder as it was. A folder with files that "
         "no run created is refused."},
        {"toolkit",
         "The built-in toolkit is quick and handles most of DITA, and names each place that it does not "
         "handle. "
         "`installed` is the `dita` command, else Debian's package. FOLDER is that of a DITA Open Toolkit, "
         "or "
         "its `bin/dita`. The result names the one that ran."},
        {"xslt", "HTML output is written as well-formed XHTML, and XInclude is processed."},
        {"xslt-engine",
         "Saxon is in Debian's package `libsaxonhe-java`, and is not confined to the folders of the document "
         "and "
         "of the result."},
    };
    const auto details = kDetails.find(option);
    return details == kDetails.end() ? std::string() : details->second;
}

}  // namespace ventrix::desk
