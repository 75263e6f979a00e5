#include "desk/toolkit/page_layout.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace ventrix::desk {
namespace {

/// The source folder that a folder of the document's folder corresponds to; none of the files is in it.
NativePath UnusedFolder(const NativePath& document, const std::string& name,
                        const std::vector<NativePath>& files) {
    NativePath folder{FolderOf(document).utf8 + name + '/'};
    const auto isUsed = [&files](const NativePath& candidate) {
        return std::ranges::any_of(
            files, [&candidate](const NativePath& file) { return file.utf8.starts_with(candidate.utf8); });
    };
    for (int number = 2; isUsed(folder); ++number) {
        folder = {FolderOf(document).utf8 + name + '-' + std::to_string(number) + '/'};
    }
    return folder;
}

}  // namespace

PageLayout LayoutOf(const NativePath& document, const std::vector<NativePath>& files,
                    const NativePath& outputBase) {
    PageLayout layout{.sourceBase = FolderOf(document), .outputBase = outputBase};
    std::error_code error;
    for (const NativePath& file : files) {
        if (std::filesystem::exists(ToFilesystem(file), error)) {
            layout.sourceBase = CommonFolder(layout.sourceBase, file);
        }
    }
    layout.assets = OutputOf(layout, UnusedFolder(document, "ventrix-style", files));
    return layout;
}

NativePath OutputOf(const PageLayout& layout, const NativePath& source) {
    const std::string& base = layout.sourceBase.utf8;
    return source.utf8.starts_with(base)
               ? NativePath{layout.outputBase.utf8 + source.utf8.substr(base.size())}
               : NativePath{};
}

void AssignPage(PageLayout& layout, const NativePath& topic) {
    const NativePath copy = OutputOf(layout, topic);
    if (copy.Empty() || layout.pages.contains(topic)) {
        return;
    }
    const NativePath page = FreePage(layout, FromFilesystem(ToFilesystem(copy).replace_extension(".html")));
    layout.pages[topic] = page;
    layout.taken.insert(page);
}

NativePath PageOf(const PageLayout& layout, const NativePath& topic) {
    const auto assigned = layout.pages.find(topic);
    return assigned == layout.pages.end() ? NativePath{} : assigned->second;
}

NativePath FreePage(const PageLayout& layout, const NativePath& page) {
    NativePath free = page;
    for (int number = 2; layout.taken.contains(free); ++number) {
        const std::string name =
            FromFilesystem(ToFilesystem(page).stem()).utf8 + "-" + std::to_string(number) + ".html";
        free = FromFilesystem(ToFilesystem(page).replace_filename(ToFilesystem({name})));
    }
    return free;
}

std::string RelativeReference(const NativePath& fromPage, const NativePath& toFile) {
    const std::string& from = fromPage.utf8;
    const std::string& to = toFile.utf8;
    const auto differ = std::ranges::mismatch(from, to).in1;
    // Up to the last slash that both have.
    const auto common = static_cast<std::size_t>(
        std::find(std::reverse_iterator(differ), from.rend(), '/').base() - from.begin());
    std::string reference;
    for (auto up = std::count(from.begin() + static_cast<std::ptrdiff_t>(common), from.end(), '/'); up > 0;
         --up) {
        reference += "../";
    }
    return PercentEncoded(reference + to.substr(common));
}

}  // namespace ventrix::desk
