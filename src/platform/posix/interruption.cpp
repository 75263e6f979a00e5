#include "platform/interruption.h"

#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <exception>
#include <vector>

#include "platform/child_process.h"
#include "platform/posix/process_tree.h"

// The signals are blocked in every thread, and one thread waits for them. The main thread cannot be unwound,
// since it is inside the module, and it may hold any lock, that of the allocator too. So nothing can be
// cleaned up in this process once the main thread stands still, and nothing safely while it runs. The way out
// is a copy of the process: fork takes the allocator's and the streams' locks, so that they are free in the
// copy. The order is
//
//     1. wait until no InterruptionPause lives     the list of clean-ups is whole
//     2. fork the cleaner, which waits
//     3. park the main thread in a signal handler  no file changes any more
//     4. let the cleaner end the programs and run the clean-ups
//     5. leave by _exit, without the destructors of objects that the main thread still uses
//
// Between 2 and 3 the main thread may continue for some microseconds. A clean-up therefore relies on the disk
// where memory may have changed since; what registers and unregisters clean-ups is covered by 1.

namespace ventrix::platform {
namespace {

constexpr int kSignalExitBase = 128;
constexpr time_t kParkingSeconds = 2;

/// Never destroyed: the waiting thread outlives the static objects.
struct Interruptions {
    pthread_t mainThread = {};
    sem_t parked = {};
    sem_t free = {};  ///< 0 while an InterruptionPause lives.
    int pauses = 0;   ///< Of the main thread.
    bool cleaning = false;
    std::vector<const std::function<void()>*> cleanUps;
};

Interruptions& State() {
    static Interruptions& state = *[] {
        auto* made = new Interruptions;
        ::sem_init(&made->parked, 0, 0);
        ::sem_init(&made->free, 0, 1);
        return made;
    }();
    return state;
}

int ParkingSignal() {
    return SIGRTMIN;
}

void WaitFor(sem_t& semaphore) {
    while (::sem_wait(&semaphore) != 0 && errno == EINTR) {
    }
}

extern "C" void StandStill(int) {
    ::sem_post(&State().parked);
    for (;;) {
        ::pause();
    }
}

/// Gives up after two seconds: a thread in an uninterruptible system call changes nothing in user space.
void ParkMainThread() {
    timespec until = {};
    ::clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += kParkingSeconds;
    ::pthread_kill(State().mainThread, ParkingSignal());
    while (::sem_timedwait(&State().parked, &until) != 0 && errno == EINTR) {
    }
}

void RunCleanUps() {
    const auto& cleanUps = State().cleanUps;
    for (auto cleanUp = cleanUps.rbegin(); cleanUp != cleanUps.rend(); ++cleanUp) {
        try {
            (**cleanUp)();
        } catch (const std::exception&) {
            continue;  // The others still count.
        }
    }
}

/// The life of the cleaner, which begins once `start` is closed at its other end.
[[noreturn]] void Clean(pid_t run, int start) {
    char none = 0;
    while (::read(start, &none, 1) < 0 && errno == EINTR) {
    }
    State().cleaning = true;
    EndDescendants(run);
    RunCleanUps();
    ::_exit(0);
}

void CleanUp() {
    int gate[2];
    if (::pipe2(gate, O_CLOEXEC) != 0) {
        return;
    }
    const pid_t run = ::getpid();
    const pid_t cleaner = ::fork();
    if (cleaner == 0) {
        ::close(gate[1]);
        Clean(run, gate[0]);
    }
    ParkMainThread();
    ::close(gate[1]);
    while (cleaner > 0 && ::waitpid(cleaner, nullptr, 0) < 0 && errno == EINTR) {
    }
}

sigset_t HandledSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction current = {};
        ::sigaction(signal, nullptr, &current);
        if (current.sa_handler != SIG_IGN) {
            ::sigaddset(&signals, signal);
        }
    }
    return signals;
}

void* AwaitInterruption(void*) {
    const sigset_t signals = HandledSignals();
    int signal = 0;
    if (::sigwait(&signals, &signal) != 0) {
        return nullptr;
    }
    WaitFor(State().free);
    CleanUp();
    constexpr char kText[] = "\ninterrupted\n";
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, kText, sizeof kText - 1);
    ::_exit(kSignalExitBase + signal);
}

}  // namespace

void HandleInterruptions() {
    OwnStartedPrograms();
    State().mainThread = ::pthread_self();
    struct sigaction parking = {};
    parking.sa_handler = StandStill;
    ::sigfillset(&parking.sa_mask);
    ::sigaction(ParkingSignal(), &parking, nullptr);

    const sigset_t signals = HandledSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    pthread_t waiting = {};
    if (::pthread_create(&waiting, nullptr, AwaitInterruption, nullptr) == 0) {
        ::pthread_detach(waiting);
    } else {
        ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}

void StopHandlingInterruptions() {
    WaitFor(State().free);
}

InterruptionPause::InterruptionPause() {
    if (!State().cleaning && State().pauses++ == 0) {
        WaitFor(State().free);
    }
}

InterruptionPause::~InterruptionPause() {
    if (!State().cleaning && --State().pauses == 0) {
        ::sem_post(&State().free);
    }
}

InterruptionCleanUp::InterruptionCleanUp(std::function<void()> action) : action_(std::move(action)) {
    const InterruptionPause pause;
    State().cleanUps.push_back(&action_);
}

InterruptionCleanUp::~InterruptionCleanUp() {
    const InterruptionPause pause;
    std::erase(State().cleanUps, &action_);
}

}  // namespace ventrix::platform
