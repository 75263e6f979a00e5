// Interrupts `ventrix` while it waits for a program that it or the module started.
#include <gtest/gtest.h>

#include <vector>

#include "support/child.h"
#include "support/environment.h"
#include "support/scripts.h"

namespace ventrix::desk {
namespace {

using test::Child;
using test::Ending;
using test::Eventually;
using test::IsRunning;
using test::StatusAfter;

/// The steps of a program whose folder is `up` below that of the test.
std::string WaitingSteps(const std::string& up) {
    return "start $here/" + up + "background\nawait $here/" + up + "background.pid\nnumber $here/" + up +
           "program.pid\nsleep 30\n";
}

/// Runs with a toolkit or a script that waits, and with another program in the background that would write
/// `late` four seconds from now.
class Interrupting : public testing::Test, protected test::TestFolder {
  protected:
    Interrupting() : temporary_(test::kTemporary, Native("tmp")) {
        Write("in/m.ditamap", "<map><topicref href='t.dita'/></map>");
        Write("in/t.dita", "<topic id='t'><title>T</title></topic>");
        Write("background",
              test::ScriptWith("number $here/background.pid\nsleep 4\nappend late $here/late\n"));
        WriteScript(*this, "toolkit/bin/dita", WaitingSteps("../../"));
        script_ = WriteScript(*this, "script", WaitingSteps(""));
        std::filesystem::create_directory(Native("tmp"));
    }

    std::vector<std::string> WithToolkit() const {
        return {"publish", Native("in/m.ditamap"), "-o", Native("out"), "--toolkit", Native("toolkit")};
    }
    std::vector<std::string> WithScript() const {
        return {"publish", Native("in/m.ditamap"), "-o", Native("out"), "--pre-script", script_};
    }
    test::ChildStart Start(const std::vector<std::string>& arguments) const {
        return {VENTRIX_PROGRAM, arguments, Native(), Native("printed"), Native("error")};
    }

    bool Waits() const {
        return Eventually([&] { return IsRunning(Native("program.pid")); });
    }
    bool NothingRuns() const {
        return !IsRunning(Native("program.pid")) && !IsRunning(Native("background.pid"));
    }
    void Forget() const {
        for (const char* name : {"program.pid", "background.pid"}) {
            std::filesystem::remove(Native(name));
        }
    }

  private:
    test::VariableChange temporary_;
    std::string script_;
};

TEST_F(Interrupting, EndsToolkitsAndScriptsAndRemovesTemporaryFolders) {
    for (const auto& way : {WithToolkit(), WithScript()}) {
        for (const Ending ending : test::Interruptions()) {
            Child run(Start(way));
            ASSERT_TRUE(Waits()) << Read("error");
            run.End(ending);
            run.End(Ending::kInterrupt);
            const int status = run.Await();
            EXPECT_TRUE(status == StatusAfter(ending) || status == StatusAfter(Ending::kInterrupt)) << status;
            EXPECT_TRUE(NothingRuns()) << way.back();
            EXPECT_TRUE(std::filesystem::is_empty(Native("tmp"))) << way.back();
            EXPECT_TRUE(Read("error").ends_with("\ninterrupted\n")) << Read("error");
            Forget();
        }
    }
    EXPECT_FALSE(Exists("late"));
}

TEST_F(Interrupting, AKilledRunLeavesNoProgramRunning) {
    Child run(Start(WithToolkit()));
    ASSERT_TRUE(Waits()) << Read("error");
    run.End(Ending::kKill);
    EXPECT_EQ(run.Await(), StatusAfter(Ending::kKill));
    EXPECT_TRUE(Eventually([&] { return NothingRuns(); }));
    EXPECT_FALSE(Exists("late"));
}

}  // namespace
}  // namespace ventrix::desk
