#include <gtest/gtest.h>

#include "desk/host/desk_host.h"
#include "support/test_folder.h"

namespace ventrix::desk {
namespace {

using testing::Test;

struct Ran {
    std::string problem;
    std::optional<std::vector<AnswerValue>> reply;
    std::vector<std::string> calls;
    int heldAtEnd = 0;
};

/// One whole life of the module in a host: load, one request, release.
Ran RunHost(HostSettings settings, HostScript script, const std::string& request,
            const std::string& module = VENTRIX_MODULE) {
    Ran ran;
    DeskHost host(std::move(settings), std::move(script));
    ran.problem = host.LoadModule({module});
    ran.reply = host.CallModule(request);
    host.ReleaseModule();
    ran.calls = host.Calls();
    ran.heldAtEnd = host.HeldReferences();
    return ran;
}

const std::vector<AnswerValue> kRefusedReply{std::int32_t{-43}, std::string(), std::string()};

TEST(DeskHostTest, StartsTheModuleAsTheContractSays) {
    const Ran ran = RunHost({{"Z:\\nowhere"}, false, {}, {}}, {}, "Nonsense");
    EXPECT_EQ(ran.problem, "");
    EXPECT_EQ(ran.reply, kRefusedReply);
    std::vector<std::string> calls = ran.calls;
    // Once ICU has its folder in this process, no module asks for it again.
    std::erase(calls, "ReadStringProp 0 89");
    const std::vector<std::string> expected{
        "Register ZNS QCK client for publishing different formats via Tintwick.",
        "SetTextMode 1",
        "Watch 53 1",
        "Watch 97 1",
        "Watch 13 1",
        "SendReply"};
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(ran.heldAtEnd, 0);
}

TEST(DeskHostTest, TellsWhyAModuleDoesNotStart) {
    const test::TestFolder folder;
    const struct {
        std::string module, problem;
    } rows[] = {
        {folder.Native("no.so"), "the module is missing: "},
        {folder.Write("text.so", "text"), "the module cannot be loaded: "},
        {VENTRIX_PROGRAM, "the module cannot be loaded: "},
    };
    for (const auto& row : rows) {
        const Ran ran = RunHost({}, {}, "Validate -docId 1", row.module);
        EXPECT_EQ(ran.problem.substr(0, row.problem.size()), row.problem) << row.module;
        EXPECT_EQ(ran.problem.find('\n'), std::string::npos) << row.module;
        EXPECT_FALSE(ran.reply) << row.module;
    }
}

/// A module that could not connect keeps what it got of the host until its library goes, so that each host
/// has a process of its own here.
TEST(DeskHostDeathTest, AModuleThatCannotConnectIsTold) {
    HostScript noMainInterface;
    noMainInterface.missingInterfaces = {4};
    HostScript dropping;
    dropping.dropsNotifications = true;
    for (const HostScript& script : {noMainInterface, dropping}) {
        EXPECT_EXIT(
            {
                DeskHost host({}, script);
                std::fputs(host.LoadModule({VENTRIX_MODULE}).c_str(), stderr);
                std::_Exit(host.CallModule("Validate -docId 1") ? 1 : 0);
            },
            testing::ExitedWithCode(0), "^the module does not connect to this host: ");
    }
}

TEST(DeskHostTest, ListsTheFilesOfADocumentWithTheirFlags) {
    const test::TestFolder folder;
    const std::string log = "Z:" + folder.Native("log.txt");
    DeskHost host({}, {});
    ASSERT_EQ(host.LoadModule({VENTRIX_MODULE}), "");
    DocumentFiles files;
    files.readable = true;
    const NativePath document{folder.Write("a.xml", "<a/>")};
    files.files = {{"documentType", document, ""}, {"graphicsType", {folder.Native("gone.png")}, ""}};
    const std::uint32_t id = host.AddDocument({"Z:" + document.utf8}, files);
    const std::string request = "Validate -docId " + std::to_string(id) + " -logFile \"" + log + "\"";

    EXPECT_EQ(std::get<std::int32_t>(host.CallModule(request)->at(0)), 1) << "a missing file";
    host.FlagUnsaved(document);
    EXPECT_EQ(std::get<std::int32_t>(host.CallModule(request)->at(0)), 3) << "and one that is not saved";
    EXPECT_EQ(host.Calls().back(), "SendReply");
}

/// 0 for a Validate that went well and left no reference behind.
int ValidateInAHostThatOwnsResults() {
    const test::TestFolder folder;
    HostSettings settings;
    settings.ownsResults = true;
    DeskHost host(settings);
    host.LoadModule({VENTRIX_MODULE});
    DocumentFiles files;
    files.files = {{"documentType", {folder.Write("a.xml", "<a/>")}, ""}};
    const std::string id = std::to_string(host.AddDocument(*ToSystem(files.files[0].path), files));
    const auto reply = host.CallModule("Validate -docId " + id + " -logFile Z:" + folder.Native("log.txt"));
    host.ReleaseModule();
    return reply && std::get<std::int32_t>(reply->at(0)) == 0 && host.HeldReferences() == 0 ? 0 : 1;
}

/// Who owns results is settled once for a loaded module, so that this host has a process of its own.
TEST(DeskHostDeathTest, AHostThatOwnsItsResultsFreesThem) {
    EXPECT_EXIT(std::exit(ValidateInAHostThatOwnsResults()), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace ventrix::desk
