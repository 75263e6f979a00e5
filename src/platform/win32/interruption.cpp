#include "platform/interruption.h"

#include <exception>
#include <fstream>
#include <string_view>
#include <vector>

#include "platform/child_process.h"
#include "platform/win32/system_calls.h"

// The system calls the handler on a thread of its own. The main thread cannot be unwound, since it is inside
// the module. It is suspended while this thread holds the locks of the heaps, so that it does not hold them
// itself and the clean-ups can run in this thread. Other locks cannot be taken from outside: the C library's
// while it opens or closes a file, and in Wine, which suspends threads inside of system calls, the system's
// while it lists a folder. The order is
//
//     1. wait until no InterruptionPause lives     the list of clean-ups is whole
//     2. take the locks of the heaps
//     3. suspend the main thread                   no file changes any more
//     4. release the locks; if the main thread holds another one, let it go on and begin again at 2
//     5. end the programs and run the clean-ups
//     6. leave without the destructors of objects that the main thread still uses

namespace ventrix::platform {
namespace {

constexpr ::UINT kExitOfCtrlC = 130;  ///< 128 and SIGINT, as on POSIX.
constexpr ::UINT kExitOfClose = 143;  ///< 128 and SIGTERM.
constexpr ::DWORD kProbeMilliseconds = 1000;

/// Never destroyed: the handler's thread outlives the static objects.
struct Interruptions {
    HANDLE mainThread = nullptr;
    HANDLE free = ::CreateSemaphoreW(nullptr, 1, 1, nullptr);  ///< 0 while an InterruptionPause lives.
    int pauses = 0;                                            ///< Of the main thread.
    bool cleaning = false;
    std::vector<const std::function<void()>*> cleanUps;
};

Interruptions& State() {
    static Interruptions& state = *new Interruptions;
    return state;
}

std::vector<HANDLE> Heaps() {
    std::vector<HANDLE> heaps(64);
    const ::DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    heaps.resize(std::min<std::size_t>(count, heaps.size()));
    return heaps;
}

void SuspendMainThread() {
    const std::vector<HANDLE> heaps = Heaps();
    for (const HANDLE heap : heaps) {
        ::HeapLock(heap);
    }
    ::SuspendThread(State().mainThread);
    // The call only asks for it; a thread whose context can be read stands still.
    ::CONTEXT context = {};
    context.ContextFlags = CONTEXT_CONTROL;
    ::GetThreadContext(State().mainThread, &context);
    for (const HANDLE heap : heaps) {
        ::HeapUnlock(heap);
    }
}

/// Takes each lock that clean-ups take: they list folders, and open and write files.
::DWORD WINAPI TakeLocks(void*) {
    ::WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW(L"*", &found);
    if (search != INVALID_HANDLE_VALUE) {
        ::FindClose(search);
    }
    std::ofstream("NUL") << 0;
    return 0;
}

/// Whether a thread can do what the clean-ups do. If the suspended main thread keeps it from that, the main
/// thread goes on until the other one has ended.
bool CleanUpsCanRun() {
    const Handle probe(::CreateThread(nullptr, 0, TakeLocks, nullptr, 0, nullptr));
    if (!probe.IsOpen() || ::WaitForSingleObject(probe.Get(), kProbeMilliseconds) == WAIT_OBJECT_0) {
        return true;
    }
    ::ResumeThread(State().mainThread);
    ::WaitForSingleObject(probe.Get(), INFINITE);
    return false;
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

::BOOL WINAPI OnInterruption(::DWORD kind) {
    ::WaitForSingleObject(State().free, INFINITE);
    do {
        SuspendMainThread();
    } while (!CleanUpsCanRun());
    State().cleaning = true;
    EndStartedPrograms();
    RunCleanUps();
    constexpr std::string_view kText = "\ninterrupted\n";
    WriteAll(::GetStdHandle(STD_ERROR_HANDLE), kText.data(), kText.size());
    ::TerminateProcess(::GetCurrentProcess(), kind == CTRL_C_EVENT ? kExitOfCtrlC : kExitOfClose);
    return TRUE;
}

}  // namespace

void HandleInterruptions() {
    OwnStartedPrograms();
    ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(), &State().mainThread,
                      0, FALSE, DUPLICATE_SAME_ACCESS);
    ::SetConsoleCtrlHandler(OnInterruption, TRUE);
}

void StopHandlingInterruptions() {
    ::WaitForSingleObject(State().free, INFINITE);
}

InterruptionPause::InterruptionPause() {
    if (!State().cleaning && State().pauses++ == 0) {
        ::WaitForSingleObject(State().free, INFINITE);
    }
}

InterruptionPause::~InterruptionPause() {
    if (!State().cleaning && --State().pauses == 0) {
        ::ReleaseSemaphore(State().free, 1, nullptr);
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
