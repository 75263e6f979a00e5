// Publishes where mounts are in the way: views of the sources, volumes, full disks. Skipped where the test
// may not mount.
#include <gtest/gtest.h>

#include <filesystem>

#include "publishing_world.h"
#include "support/mount.h"

namespace ventrix::test {
namespace {

namespace fs = std::filesystem;

class Mounted : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string why = ProgramMissing(); !why.empty()) {
            GTEST_SKIP() << why;
        }
        const TestFolder target;
        if (!Mount::Disk(target.Native(), 65536).IsMounted()) {
            GTEST_SKIP() << "this test may not mount";
        }
    }

    static std::string Lines(const std::vector<std::string>& lines) {
        std::string all;
        for (const std::string& line : lines) {
            all += line + "\n";
        }
        return all;
    }
};

TEST_F(Mounted, AViewOfTheSourcesIsNeverEmptied) {
    PublishingWorld world(2);
    ASSERT_EQ(world.Begin(), "");
    fs::create_directory(world.Native("out/view"));
    for (const char* place : {"out/view", "out"}) {
        const Mount view = Mount::Bind(world.Native("in"), world.Native(place));
        const Tree before = TreeOf(world.Native());
        for (const std::vector<std::string>& force :
             {std::vector<std::string>{}, std::vector<std::string>{"--force"}}) {
            const Ended ended = world.Publish({}, force);
            EXPECT_EQ(ended.status, 5) << place << ended.error;
            EXPECT_EQ(TreeOf(world.Native()), before) << place;
        }
    }
}

TEST_F(Mounted, AVolumeIsUsedWithoutForeignFilesAndRefusedWithThem) {
    PublishingWorld world(2);
    world.WriteSources(Edition::kNew);
    fs::create_directory(world.Native("out"));
    const Mount volume = Mount::Disk(world.Native("out"), 4 << 20);
    EXPECT_EQ(world.Publish().status, 0) << "empty";
    const Ended again = world.Publish();
    EXPECT_EQ(again.status, 0) << "with an earlier result" << again.error;
    EXPECT_NE(again.error.find("if this run fails, it is lost"), std::string::npos) << again.error;
    world.Write("out/mine.txt", "mine");
    const Tree before = TreeOf(world.Native("out"));
    EXPECT_EQ(world.Publish().status, 5);
    EXPECT_EQ(TreeOf(world.Native("out")), before);
}

TEST_F(Mounted, AFullDiskLosesNothing) {
    PublishingWorld world(2, "disk/");
    fs::create_directory(world.Native("disk"));
    const Mount disk = Mount::Disk(world.Native("disk"), 256 << 10);
    ASSERT_EQ(world.Begin(), "");
    const auto room = static_cast<int>(fs::space(world.Native("disk")).available);
    int failed = 0;
    for (int free = 0; free <= 80 << 10; free += 4 << 10) {
        SCOPED_TRACE(std::to_string(free) + " bytes free");
        world.Write("disk/in-the-way", std::string(static_cast<std::size_t>(room - free), 'x'));
        const Ended ended = world.Publish();
        fs::remove(world.Native("disk/in-the-way"));
        failed += ended.status == 0 ? 0 : 1;
        EXPECT_EQ(Lines(world.FaultsAfterPublish(ended)), "") << ended.status << ended.out << ended.error;
        EXPECT_EQ(Lines(world.SettleAndReturn(ended)), "");
    }
    EXPECT_GT(failed, 3);
}

TEST_F(Mounted, AFullFolderForTemporaryFilesLosesNothing) {
    PublishingWorld world(2);
    ASSERT_EQ(world.Begin(), "");
    const Mount disk = Mount::Disk(world.Native("tmp"), 64 << 10);
    world.Write("tmp/in-the-way", std::string(fs::space(world.Native("tmp")).available, 'x'));
    const Ended ended = world.Publish();
    fs::remove(world.Native("tmp/in-the-way"));
    EXPECT_NE(ended.status, 0);
    EXPECT_EQ(Lines(world.FaultsAfterPublish(ended)), "") << ended.out << ended.error;
}

}  // namespace
}  // namespace ventrix::test
