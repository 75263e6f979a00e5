// What a page has around its content: the way home, the contents with its own place in them, the pages before
// and after it, the style sheets. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "desk/toolkit/contents.h"
#include "desk/toolkit/dita_run.h"
#include "desk/toolkit/page_metadata.h"

namespace ventrix::desk {

/// A file that the pages use.
struct PageAsset {
    NativePath source;
    NativePath target;  ///< In the output.
};

struct PageAssets {
    std::vector<PageAsset> styleSheets;  ///< In the order in which they count.
    PageAsset script;
    std::vector<PageAsset> logo;  ///< One or none.
};

/// The toolkit's style sheet and script in its data folder and what the design adds, for the folder that the
/// layout keeps for them.
PageAssets AssetsFor(const PageDesign& design, const PageLayout& layout, const NativePath& dataFolder);

/// The page that a frame is for.
struct FramedPage {
    NativePath page;
    std::string title;        ///< Plain text, not empty.
    std::string windowTitle;  ///< Of the window and for search engines: plain text, not empty.
    std::string description;  ///< Plain text; may be empty.
    std::vector<MetadataEntry> metadata;
};

/// Adds an element `page-frame` to the root element, which the stylesheet makes the frame from. The size of a
/// frame does not depend on the size of the publication: a page of a large one shows the branches that it is
/// in, of each no more than the neighbourhood, and a link to all topics.
void AddPageFrame(xmlDoc* document, const FramedPage& framed, const Contents& contents,
                  const PageAssets& assets);

}  // namespace ventrix::desk
