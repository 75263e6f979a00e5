// An output folder `out` in a test's own folder, and all of it compared at once.
#pragma once

#include <map>

#include "desk/output/output_keeper.h"
#include "folder_fixture.h"

namespace ventrix::desk {

/// What a folder holds: a path below it and the file's content, "/" for a folder, "@" for a link. Manifests
/// and marks have the content "mark".
using Tree = std::map<std::string, std::string>;

class OutputFixture : public FolderFixture {
  protected:
    Tree TreeOf(const std::string& folder = {}) const {
        namespace fs = std::filesystem;
        Tree tree;
        for (const auto& entry : fs::recursive_directory_iterator(Native(folder))) {
            const std::string name = platform::Utf8FromPath(entry.path().lexically_relative(Native(folder)));
            const std::string whole = platform::Utf8FromPath(entry.path().lexically_relative(Native()));
            const bool isMark =
                entry.path().filename() == kResultMark || entry.path().filename() == kFailedMark;
            tree[name] = entry.is_symlink()     ? "@"
                         : entry.is_directory() ? "/"
                         : isMark               ? "mark"
                                                : Read(whole);
        }
        return tree;
    }

    OutputOrder Order(bool force = false) const {
        OutputOrder order;
        order.folder = Native("out");
        order.force = force;
        order.request = "Publish";
        order.version = "1";
        return order;
    }

    /// The keeper, or null with the refusal in `refusal`.
    std::unique_ptr<OutputKeeper> Take(const OutputOrder& order) { return TakeOutput(order, refusal); }
    std::unique_ptr<OutputKeeper> Take() { return Take(Order()); }

    void WriteAll(const std::string& folder, const Tree& files) const {
        for (const auto& [name, content] : files) {
            Write(folder + "/" + name, content);
        }
    }

    /// A finished run that made these files.
    void Publish(const Tree& files) {
        const auto keeper = Take();
        ASSERT_TRUE(keeper) << refusal;
        WriteAll("out", files);
        EXPECT_EQ(keeper->Commit().error, "");
    }

    std::string refusal;
};

}  // namespace ventrix::desk
