// Interrupts `ventrix` while it waits for a program that it or the module started.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>

#include <vector>

#include "support/processes.h"
#include "support/test_folder.h"

namespace ventrix::desk {
namespace {

using test::AwaitChild;
using test::Eventually;
using test::IsRunning;

// A program that waits, with another in the background that would write `late` four seconds from now.
constexpr char kWaits[] =
    "#!/bin/sh\ncd \"$PROBE\"\nsetsid sh -c 'echo $$ >background.pid; sleep 4; echo late >late' "
    "&\n"
    "until [ -s background.pid ]; do sleep 0.02; done\necho $$ >program.pid\nsleep 30\n";

class Interrupting : public testing::Test, protected test::TestFolder {
  protected:
    Interrupting() {
        Write("in/m.ditamap", "<map><topicref href='t.dita'/></map>");
        Write("in/t.dita", "<topic id='t'><title>T</title></topic>");
        WriteProgram("toolkit/bin/dita", kWaits);
        WriteProgram("script", kWaits);
        std::filesystem::create_directory(Native("tmp"));
    }

    pid_t Start(std::vector<std::string> arguments) {
        std::vector<std::string> environment{"PATH=/usr/bin:/bin", "TMPDIR=" + Native("tmp"),
                                             "PROBE=" + Native()};
        for (const char* begin : {"ventrix", "publish"}) {
            arguments.insert(arguments.begin() + (begin == std::string("publish") ? 1 : 0), begin);
        }
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, Native("error").c_str(), O_WRONLY | O_CREAT,
                                         0600);
        posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        sigset_t usual;
        sigfillset(&usual);
        posix_spawnattr_setsigdefault(&attributes, &usual);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
        pid_t process = 0;
        EXPECT_EQ(posix_spawn(&process, VENTRIX_PROGRAM, &files, &attributes, Pointers(arguments).data(),
                              Pointers(environment).data()),
                  0);
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
        return process;
    }

    static std::vector<char*> Pointers(std::vector<std::string>& strings) {
        std::vector<char*> pointers;
        for (std::string& string : strings) {
            pointers.push_back(string.data());
        }
        pointers.push_back(nullptr);
        return pointers;
    }

    bool Waits() const {
        return Eventually([&] { return IsRunning(Native("program.pid")); });
    }
    bool NothingRuns() const {
        return !IsRunning(Native("program.pid")) && !IsRunning(Native("background.pid"));
    }
    void Forget() const {
        for (const char* name : {"program.pid", "background.pid", "error"}) {
            std::filesystem::remove(Native(name));
        }
    }
};

TEST_F(Interrupting, EndsToolkitsAndScriptsAndRemovesTemporaryFolders) {
    const std::vector<std::string> ways[] = {
        {Native("in/m.ditamap"), "-o", Native("out"), "--toolkit", Native("toolkit")},
        {Native("in/m.ditamap"), "-o", Native("out"), "--pre-script", Native("script")},
    };
    for (const auto& way : ways) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            const pid_t process = Start(way);
            ASSERT_TRUE(Waits()) << Read("error");
            kill(process, signal);
            kill(process, SIGINT);
            const int status = AwaitChild(process);
            EXPECT_TRUE(status == 128 + signal || status == 128 + SIGINT) << status;
            EXPECT_TRUE(NothingRuns()) << way.back();
            EXPECT_TRUE(std::filesystem::is_empty(Native("tmp"))) << way.back();
            EXPECT_TRUE(Read("error").ends_with("\ninterrupted\n")) << Read("error");
            Forget();
        }
    }
    EXPECT_FALSE(Exists("late"));
}

TEST_F(Interrupting, AKilledRunLeavesNoProgramRunning) {
    const pid_t process =
        Start({Native("in/m.ditamap"), "-o", Native("out"), "--toolkit", Native("toolkit")});
    ASSERT_TRUE(Waits()) << Read("error");
    kill(process, SIGKILL);
    EXPECT_EQ(AwaitChild(process), 1000 + SIGKILL);
    EXPECT_TRUE(Eventually([&] { return NothingRuns(); }));
    EXPECT_FALSE(Exists("late"));
}

}  // namespace
}  // namespace ventrix::desk
