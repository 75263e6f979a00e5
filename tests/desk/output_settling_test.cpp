// Each row of the table in run_journal.h, built by hand.
#include "desk/output/entries.h"
#include "output_fixture.h"
#include "platform/file_identity.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

enum class Output { kNone, kMade, kMadeWithoutFiles, kEarlier, kOtherEmpty, kOtherFull };

struct State {
    const char* name;
    std::optional<RunState> journal;
    bool existed;
    bool earlier;
    Output output;
    bool refused;
    Tree expected;  ///< Of everything; with "RUN" for the run folder.
};

class Settling : public OutputFixture, public testing::WithParamInterface<State> {
  protected:
    std::uint64_t FileOf(const std::string& name) const { return platform::IdentityOf(Native(name))->file; }

    void MakeOutput(Output output) const {
        if (output == Output::kMade) {
            WriteAll("out", {{"page.html", "new"}, {"own.txt", "new"}});
        } else if (output == Output::kOtherFull) {
            WriteAll("out", {{"other.txt", "other"}});
        } else if (output == Output::kMadeWithoutFiles) {
            fs::create_directories(Native("out/images"));
        } else if (output == Output::kOtherEmpty) {
            fs::create_directory(Native("out"));
        }
    }

    void MakeEarlier(const std::string& folder) const {
        WriteAll(folder, {{"page.html", "old"}, {"gone/stale.html", "old"}});
        Manifest manifest;
        manifest.mark = kResultMark;
        std::vector<std::string> findings;
        ListFiles(Native(folder), manifest, findings);
        ASSERT_FALSE(WriteManifest(Native(folder), manifest));
        WriteAll(folder, {{"own.txt", "mine"}, {"git/config", "mine"}});
    }

    void Build(const State& state) const {
        const RunPlaces places = PlacesOf(Native("out"));
        fs::create_directory(places.folder);
        Write(".out.ventrix-run/lock", "");
        if (state.earlier) {
            MakeEarlier(".out.ventrix-run/earlier");
        }
        MakeOutput(state.output);
        Journal journal;
        journal.existed = state.existed;
        journal.mode = fs::perms::owner_all;
        if (state.output == Output::kEarlier) {
            MakeEarlier("out");
            journal.earlierFile = FileOf("out");
        } else if (state.output == Output::kMade || state.output == Output::kMadeWithoutFiles) {
            journal.madeFile = FileOf("out");
        }
        if (state.journal) {
            journal.state = *state.journal;
            ASSERT_FALSE(WriteJournal(places, journal));
        }
    }
};

Tree Below(const std::string& folder, const Tree& tree) {
    Tree below{{folder, "/"}};
    for (const auto& [name, content] : tree) {
        below[folder + "/" + name] = content;
    }
    return below;
}

Tree Joined(Tree one, const Tree& other) {
    one.insert(other.begin(), other.end());
    return one;
}

const Tree kEarlierTree = {{"page.html", "old"},  {"gone", "/"},       {"gone/stale.html", "old"},
                           {kResultMark, "mark"}, {"own.txt", "mine"}, {"git", "/"},
                           {"git/config", "mine"}};
const Tree kEarlier = Below("out", kEarlierTree);
const Tree kFailed = Below("out.failed", {{"page.html", "new"}, {"own.txt", "new"}, {kFailedMark, "mark"}});
const Tree kMerged = Below("out", {{"page.html", "new"},
                                   {"own.txt", "new"},
                                   {"own.txt.kept", "mine"},
                                   {"git", "/"},
                                   {"git/config", "mine"}});
const Tree kOther = Below("out", {{"other.txt", "other"}});

TEST_P(Settling, EachStateHasADefinedOutcome) {
    const State& state = GetParam();
    Build(state);
    const Tree before = TreeOf();
    for (int time = 0; time < 2; ++time) {
        const Settlement settlement = SettleRun(PlacesOf(Native("out")), {});
        EXPECT_EQ(!settlement.refusal.empty(), state.refused) << settlement.refusal;
    }
    if (state.refused) {
        EXPECT_EQ(TreeOf(), before);
        return;
    }
    RemoveRunFolder(PlacesOf(Native("out")));
    EXPECT_EQ(TreeOf(), state.expected);
}

constexpr auto kPrepared = RunState::kPrepared;
constexpr auto kRunning = RunState::kRunning;
constexpr auto kCommitted = RunState::kCommitted;

INSTANTIATE_TEST_SUITE_P(
    Table, Settling,
    testing::Values(State{"NothingBegun", {}, true, false, Output::kOtherFull, false, kOther},
                    State{"NoJournalButEarlier", {}, true, true, Output::kNone, true, {}},
                    State{"PreparedOnly", kPrepared, true, false, Output::kEarlier, false, kEarlier},
                    State{"MovedAside", kPrepared, true, true, Output::kNone, false, kEarlier},
                    State{"NewFolderNotThere", kRunning, true, true, Output::kNone, false, kEarlier},
                    State{"RunWentOn", kRunning, true, true, Output::kMade, false, Joined(kEarlier, kFailed)},
                    State{"RunMadeNoFile", kRunning, true, true, Output::kMadeWithoutFiles, false, kEarlier},
                    State{"RunIntoNewFolder", kRunning, false, false, Output::kMade, false, kFailed},
                    State{
                        "NewFolderWithoutFile", kRunning, false, false, Output::kMadeWithoutFiles, false, {}},
                    State{"PutBack", kRunning, true, false, Output::kEarlier, false, kEarlier},
                    State{"NewFolderAgainGone", kRunning, false, false, Output::kNone, false, {}},
                    State{"UserMadeFolder", kRunning, false, false, Output::kOtherFull, false, kOther},
                    State{"UserMadeEmptyFolder", kRunning, true, true, Output::kOtherEmpty, false, kEarlier},
                    State{"UserFilledFolder", kRunning, true, true, Output::kOtherFull, true, {}},
                    State{"Committed", kCommitted, true, true, Output::kMade, false, kMerged},
                    State{"CommittedResultDeleted", kCommitted, true, true, Output::kNone, false, kEarlier},
                    State{"CommittedAndMerged", kCommitted, true, false, Output::kOtherFull, false, kOther}),
    [](const testing::TestParamInfo<State>& row) { return row.param.name; });

TEST_F(Settling, FailedFolderIsReplacedOnlyIfNothingOfTheUserIsInIt) {
    const auto fail = [&](const std::string& content) {
        const auto keeper = Take();
        Write("out/page.html", content);
        return keeper->RollBack().failedFolder.filename().string();
    };
    EXPECT_EQ(fail("1"), "out.failed");
    EXPECT_EQ(fail("2"), "out.failed");
    EXPECT_EQ(Read("out.failed/page.html"), "2");
    Write("out.failed/notes.txt", "mine");
    EXPECT_EQ(fail("3"), "out.failed.2");
    EXPECT_EQ(fail("4"), "out.failed.2");
    EXPECT_EQ(Read("out.failed/page.html"), "2");
    fs::remove_all(Native("out.failed"));
    Write("out.failed", "a file");
    EXPECT_EQ(fail("5"), "out.failed.2");
    EXPECT_EQ(Read("out.failed"), "a file");
    // A run that reads what a failed one left.
    OutputOrder order = Order();
    order.inputs = {Native("out.failed.2/page.html")};
    const auto keeper = Take(order);
    Write("out/page.html", "6");
    EXPECT_EQ(keeper->RollBack().failedFolder.filename(), "out.failed.3");
    EXPECT_EQ(Read("out.failed.2/page.html"), "5");
}

}  // namespace
}  // namespace ventrix::desk
