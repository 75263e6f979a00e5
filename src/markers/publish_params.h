// The options of one request, as the pipeline and the document passes read them.
// The request parser owns the record for the length of one request. All texts are UTF-8.
#pragma once

#include <list>
#include <string>

namespace ventrix {

struct PublishParams {
    std::list<std::string> attributes;  ///< Names of attributes to carry over.
    std::list<std::string> elements;    ///< Names of inline elements to carry as text.
    std::list<std::string>
        scopedAttributes;  ///< Groups of four names: source element and attribute, target ones.
    std::list<std::string>
        addSourcePath;  ///< Element names that get the source path; a pass crosses names off.
    std::list<std::string> preserveXPathList;  ///< XPath queries to preserve.
    std::list<std::string> skipElements;       ///< Elements that no pass enters.
    std::string targetAttr;         ///< Name of the tags attribute; empty stands for "data-twtags".
    std::string packageBase;        ///< The packaged document: base of source paths.
    std::string currentFile;        ///< The file of the running pass.
    std::string preserveXPathAttr;  ///< Target of preserved queries; empty: the tags attribute.
    std::string sourcePathAttr;     ///< Target of source paths; empty: the tags attribute.
    std::string xpathAttr;          ///< Target of XPaths; empty: the tags attribute.
    bool addXpath = false;          ///< Turns on the XPath entries.
    std::string outFilePath;        ///< Output path of the transformation; may be empty.
};

}  // namespace ventrix
