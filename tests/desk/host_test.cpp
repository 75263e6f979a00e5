#include <gtest/gtest.h>

#include "desk/host/desk_host.h"
#include "platform/native_roots.h"
#include "support/test_folder.h"

namespace ventrix::desk {
namespace {

struct Ran {
    std::string problem;
    std::optional<std::vector<AnswerValue>> reply;
    std::vector<std::string> calls;
    int heldAtEnd = 0;
};

/// Loads a module, sends it one request and releases it.
Ran RunHost(const std::string& module, const std::string& request) {
    Ran ran;
    HostSettings settings;
    settings.installationFolder = {"Z:\\nowhere"};
    settings.trace = [&ran](const std::string& call) { ran.calls.push_back(call); };
    DeskHost host(std::move(settings));
    ran.problem = host.LoadModule({module});
    ran.reply = host.CallModule(request);
    host.ReleaseModule();
    ran.heldAtEnd = host.HeldReferences();
    return ran;
}

const std::vector<AnswerValue> kRefusedReply{std::int32_t{-43}, std::string(), std::string()};

TEST(DeskHostTest, ModuleStartsAsTheContractSays) {
    const Ran ran = RunHost(VENTRIX_MODULE, "Nonsense");
    EXPECT_EQ(ran.problem, "");
    EXPECT_EQ(ran.reply, kRefusedReply);
    std::vector<std::string> calls = ran.calls;
    // The module asks only if no earlier test of this process has set ICU's folder.
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

TEST(DeskHostTest, ModuleThatDoesNotStartIsReportedInOneLine) {
    const test::TestFolder folder;
    const struct {
        std::string module, problem;
    } rows[] = {
        {folder.Native("no.so"), "the module is missing: "},
        {folder.Write("text.so", "text"), "the module cannot be loaded: "},
        // A system that does not load programs as libraries says so.
        {VENTRIX_PROGRAM,
         platform::LibrarySuffix() == ".so" ? "the module cannot be loaded: " : "the module has no export "},
        {VENTRIX_REFUSING_MODULE, "the module does not connect to this host: "},
        {VENTRIX_UNREGISTERED_MODULE, "the module does not connect to this host: "},
    };
    for (const auto& row : rows) {
        const Ran ran = RunHost(row.module, "Validate -docId 1");
        EXPECT_EQ(ran.problem.substr(0, row.problem.size()), row.problem) << row.module;
        EXPECT_EQ(ran.problem.find('\n'), std::string::npos) << row.module;
        EXPECT_FALSE(ran.reply) << row.module;
    }
}

TEST(DeskHostTest, ValidateSeesMissingAndUnsavedFiles) {
    const test::TestFolder folder;
    const std::string log = folder.System("log.txt");
    DeskHost host({});
    ASSERT_EQ(host.LoadModule({VENTRIX_MODULE}), "");
    DocumentFiles files;
    files.refused = false;
    const NativePath document{folder.Write("a.xml", "<a/>")};
    files.files = {{"documentType", document, ""}, {"graphicsType", {folder.Native("gone.png")}, ""}};
    const std::uint32_t id = host.AddDocument(*ToSystem(document), files);
    const std::string request = "Validate -docId " + std::to_string(id) + " -logFile \"" + log + "\"";

    EXPECT_EQ(std::get<std::int32_t>(host.CallModule(request)->at(0)), 1) << "a missing file";
    host.FlagUnsaved(document);
    EXPECT_EQ(std::get<std::int32_t>(host.CallModule(request)->at(0)), 3) << "and an unsaved one";
}

/// 0 if a Validate succeeds and the module releases every reference.
int ValidateInAHostThatOwnsResults() {
    const test::TestFolder folder;
    HostSettings settings;
    settings.ownsResults = true;
    DeskHost host(settings);
    host.LoadModule({VENTRIX_MODULE});
    DocumentFiles files;
    files.files = {{"documentType", {folder.Write("a.xml", "<a/>")}, ""}};
    const std::string id = std::to_string(host.AddDocument(*ToSystem(files.files[0].path), files));
    const auto reply = host.CallModule("Validate -docId " + id + " -logFile " + folder.System("log.txt"));
    host.ReleaseModule();
    return reply && std::get<std::int32_t>(reply->at(0)) == 0 && host.HeldReferences() == 0 ? 0 : 1;
}

/// A loaded module asks only once who owns results, so this host needs a process of its own.
TEST(DeskHostDeathTest, HostThatOwnsResultsFreesThem) {
    EXPECT_EXIT(std::exit(ValidateInAHostThatOwnsResults()), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace ventrix::desk
