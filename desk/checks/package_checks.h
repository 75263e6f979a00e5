// What a Publish request leaves undone without reporting it. The module passes over a file that it cannot
// copy, save or place, so the desk host compares what a run left in its folder with what the document's list
// of files calls for. Nothing here changes anything. Paths are absolute.
#pragma once

#include <string>
#include <vector>

#include "desk/documents/document_files.h"
#include "desk/paths/paths.h"
#include "desk/script/package_state.h"

namespace ventrix::desk {

/// The package of one run. The module copies the documents and those graphics that are on the document's
/// drive, each to its place below the deepest folder that contains them all.
struct PackageLayout {
    NativePath commonFolder;          ///< With its closing slash.
    std::vector<NativePath> sources;  ///< What is copied, in the order of the list.
};

PackageLayout PackageLayoutOf(const DocumentFiles& files, const NativePath& document);

/// Sources that exist and have no copy in the package. `package` is the state after the last copy.
std::vector<NativePath> UncopiedSources(const PackageLayout& layout, const std::vector<PackageFile>& package);

/// Those of the copies that the encoding pass has started but not saved: those that are unchanged or empty
/// when the transformation begins. A save writes into the file, so that the copies have to be dated back
/// after the last copy, and one that fails in the middle leaves the file empty.
std::vector<NativePath> UnsavedCopies(const std::vector<NativePath>& encoded, const NativePath& output,
                                      const std::vector<PackageFile>& copied,
                                      const std::vector<PackageFile>& transformed);

/// Graphics that exist and are not where the pages in the result folder refer to them: at the path, relative
/// to that folder, that the graphic has relative to the document.
std::vector<NativePath> UnplacedGraphics(const DocumentFiles& files, const NativePath& document,
                                         const NativePath& resultFolder);

/// Pages below the output folder that a transformation wrote there, and that were not moved to the result
/// folder, because the disk was full or a folder could not be created. Packaged files do not count.
std::vector<NativePath> MisplacedPages(const NativePath& output, const NativePath& resultFolder,
                                       const std::vector<PackageFile>& package);

/// True for the name of an XML file, which the module encodes, and deletes after the transformation.
bool IsXmlCopy(const std::string& name);

/// The XML files of a package.
std::vector<NativePath> XmlFiles(const NativePath& output, const std::vector<PackageFile>& package);

/// Those of the paths that are files.
std::vector<NativePath> Existing(std::vector<NativePath> paths);

/// The folders above the listed files that do not exist, deepest first. The module creates them where a
/// graphic is missing.
std::vector<NativePath> AbsentFolders(const DocumentFiles& files);

/// Removes those of the folders that exist now and are empty.
void RemoveIfEmpty(const std::vector<NativePath>& folders);

}  // namespace ventrix::desk
