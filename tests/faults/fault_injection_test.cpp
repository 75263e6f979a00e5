// Publishes and validates a small map again and again, with one call that fails in each run: the first of its
// kind, the second, and so on until the run makes no further call of that kind.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "layer/fault_state.h"
#include "publishing_world.h"

namespace ventrix::test {
namespace {

using faults::FaultState;
using Arguments = std::vector<std::string>;

struct Kind {
    const char* name;
    std::vector<int> errors;  ///< Used in turn.
};

const Kind kKinds[] = {
    {"open", {EMFILE, EACCES, EIO, ENOSPC}},
    {"read", {EIO}},
    {"write", {ENOSPC, EIO}},
    {"close", {EIO, ENOSPC}},
    {"rename", {EACCES, EIO, ENOSPC}},
    {"mkdir", {ENOSPC, EACCES}},
    {"unlink", {EACCES, EIO}},
    {"stat", {EACCES, EIO}},
    {"chmod", {EACCES, EIO}},
    {"spawn", {EAGAIN, ENOMEM}},
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.name;
}

/// One call that is to fail.
struct Fault {
    const Kind& kind;
    unsigned turn;
    int Error() const { return kind.errors[turn % kind.errors.size()]; }
};

class Faults : public testing::TestWithParam<Kind> {
  protected:
    void SetUp() override {
        if (const std::string why = ProgramMissing(); !why.empty()) {
            GTEST_SKIP() << why;
        }
        StartAgain();
    }

    /// Leaves a world that a fault has damaged.
    void StartAgain() {
        world_ = std::make_unique<PublishingWorld>(2);
        ASSERT_EQ(world_->Begin(), "");
    }

    std::vector<std::string> Variables(const Fault& fault) const {
        return {"LD_PRELOAD=" VENTRIX_FAULT_LAYER,
                std::string(faults::kKindVariable) + "=" + fault.kind.name,
                faults::kTurnVariable + ("=" + std::to_string(fault.turn)),
                faults::kErrorVariable + ("=" + std::to_string(fault.Error())),
                faults::kPlaceVariable + ("=" + world_->Native() + "/"),
                std::string(faults::kProgramsVariable) + "=ventrix:ventrix-script",
                faults::kStateVariable + ("=" + state_.Native("state"))};
    }

    void ResetState() const { state_.Write("state", std::string(sizeof(FaultState), '\0')); }

    FaultState State() const {
        FaultState state{};
        const std::string bytes = state_.Read("state");
        std::memcpy(&state, bytes.data(), std::min(bytes.size(), sizeof state));
        return state;
    }

    static void Report(const Fault& fault, const FaultState& state, const Ended& ended,
                       const std::vector<std::string>& wrong) {
        std::string lines;
        for (const std::string& line : wrong) {
            lines += "  - " + line + "\n";
        }
        ADD_FAILURE() << fault.kind.name << " " << fault.turn << ", " << strerrorname_np(fault.Error())
                      << ": " << state.failed << "\n  exit status " << ended.status << "\n"
                      << lines << ended.out << ended.error;
    }

    std::unique_ptr<PublishingWorld> world_;

  private:
    TestFolder state_;
};

TEST_P(Faults, PublishLosesNothingAndReportsWhatIsMissing) {
    for (unsigned turn = 1;; ++turn) {
        const Fault fault{GetParam(), turn};
        ResetState();
        // Only a script makes the program start another one.
        const Ended ended = world_->Publish(Variables(fault), GetParam().name == std::string("spawn")
                                                                  ? Arguments{"--pre-script", "script"}
                                                                  : Arguments{});
        const FaultState state = State();
        if (state.calls < turn) {
            // A kind that a run never calls would prove nothing.
            EXPECT_GT(turn, 1U);
            break;
        }
        std::vector<std::string> wrong = world_->FaultsAfterPublish(ended);
        const std::vector<std::string> next = world_->SettleAndReturn(ended);
        wrong.insert(wrong.end(), next.begin(), next.end());
        if (!wrong.empty()) {
            Report(fault, state, ended, wrong);
        }
        if (!wrong.empty() || world_->HasKeptEntries()) {
            StartAgain();
        }
        ASSERT_LT(turn, 5000U);
    }
}

TEST_P(Faults, ValidateChangesNothingAndReportsWhatItCouldNotRead) {
    Ended undisturbed = world_->Validate();
    ASSERT_EQ(undisturbed.status, 0) << undisturbed.out << undisturbed.error;
    for (unsigned turn = 1;; ++turn) {
        const Fault fault{GetParam(), turn};
        ResetState();
        const Ended ended = world_->Validate(Variables(fault));
        const FaultState state = State();
        if (state.calls < turn) {
            break;
        }
        const std::vector<std::string> wrong = world_->FaultsAfterValidate(ended, undisturbed);
        world_->ClearTemporaryFolder();
        if (!wrong.empty()) {
            Report(fault, state, ended, wrong);
            StartAgain();
            undisturbed = world_->Validate();
        }
        ASSERT_LT(turn, 5000U);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, Faults, testing::ValuesIn(kKinds),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ventrix::test
