// `ventrix.exe` with files and names that only Windows has.
#include <gtest/gtest.h>

#include "desk/command_line.h"
#include "platform/win32/system_calls.h"
#include "support/test_folder.h"

namespace ventrix::test {
namespace {

constexpr char kTopic[] = "<topic id=\"t\"><title>T</title><body><p audience=\"x\">P</p></body></topic>";

/// Keeps everybody else from opening the file.
platform::Handle Lock(const TestFolder& tree, const std::string& name) {
    return platform::Handle(::CreateFileW(platform::CallPath(tree.Native(name)).c_str(), GENERIC_READ, 0,
                                          nullptr, OPEN_EXISTING, 0, nullptr));
}

TEST(WindowsProgram, LockedFilesAreNamedAndNothingIsLost) {
    const TestFolder tree;
    const std::string page = "out/build-a.dita/xhtml/a.html";
    const std::vector<std::string> publish{"publish", "a.dita", "-o", "out", "--attributes", "audience"};
    tree.Write("a.dita", kTopic);
    ASSERT_EQ(RunVentrix(tree, publish).status, 0);
    {
        const platform::Handle lock = Lock(tree, "a.dita");
        ASSERT_TRUE(lock.IsOpen());
        const Finished finished = RunVentrix(tree, publish);
        EXPECT_EQ(finished.status, 3);
        EXPECT_NE(finished.error.find("a.dita cannot be read: "), std::string::npos) << finished.error;
    }
    {
        const platform::Handle lock = Lock(tree, page);
        ASSERT_TRUE(lock.IsOpen());
        const Finished finished = RunVentrix(tree, publish);
        EXPECT_NE(finished.status, 0);
        EXPECT_NE(finished.error.find("out"), std::string::npos) << finished.error;
    }
    EXPECT_EQ(RunVentrix(tree, publish).status, 0);
    EXPECT_NE(tree.Read(page).find("audienceQL_SEPx"), std::string::npos) << tree.Read(page);
    EXPECT_EQ(tree.Read("a.dita"), kTopic);
}

TEST(WindowsProgram, NamesMayHaveCharactersBeyondTheBasicPlane) {
    const TestFolder tree;
    const std::string name = "\xF0\x9D\x84\x9E \xF0\x9F\x98\x80 \xC3\xBC";
    tree.Write(name + ".dita", kTopic);
    const Finished finished = RunVentrix(tree, {"publish", name + ".dita", "-o", name, "--xpath"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    EXPECT_NE(finished.out.find(tree.Native(name)), std::string::npos) << finished.out;
    EXPECT_NE(tree.Read(name + "/build-" + name + ".dita/xhtml/" + name + ".html"), "");
}

}  // namespace
}  // namespace ventrix::test
