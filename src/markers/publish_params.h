// The options of one request, as the pipeline and the document passes read them. The request parser owns the
// record for the length of one request. The publish driver fills the fields that no option sets, apart from
// `currentFile`, which each document pass sets to its own file. Strings are UTF-8.
#pragma once

#include <list>
#include <string>

namespace ventrix {

struct PublishParams {
    std::list<std::string> attributes;  ///< Names of the attributes to carry over.
    std::list<std::string> elements;    ///< Names of the inline elements to carry as text.
    /// Four names per attribute: source element, source attribute, target element, target attribute.
    std::list<std::string> scopedAttributes;
    std::list<std::string> addSourcePath;  ///< Elements whose first text gets the path of its source file.
    std::list<std::string> preserveXPathList;  ///< XPath queries to preserve.
    std::list<std::string> skipElements;       ///< Elements that no pass enters.
    std::string targetAttr;                    ///< Name of the tags attribute; empty means "data-twtags".
    std::string packageBase;                   ///< The packaged document: base of the source paths.
    std::string currentFile;                   ///< The file of the running pass.
    std::string preserveXPathAttr;             ///< Target of preserved queries; empty: the tags attribute.
    std::string sourcePathAttr;                ///< Target of source paths; empty: the tags attribute.
    std::string xpathAttr;                     ///< Target of XPaths; empty: the tags attribute.
    bool addXpath = false;                     ///< Turns on the XPath entries.
    std::string outFilePath;                   ///< Output path of the transformation; may be empty.
};

}  // namespace ventrix
