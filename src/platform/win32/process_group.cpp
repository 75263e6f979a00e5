#include "platform/win32/process_group.h"

#include <chrono>
#include <cstddef>
#include <thread>
#include <vector>

namespace ventrix::platform {
namespace {

constexpr auto kPatience = std::chrono::seconds(10);
constexpr auto kBetweenLooks = std::chrono::milliseconds(20);

/// The job closes with the process's last handle to it, which only the process has: it is never closed here.
HANDLE Job() {
    static const HANDLE job = [] {
        const HANDLE made = ::CreateJobObjectW(nullptr, nullptr);
        ::JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        ::SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits, sizeof limits);
        ::AssignProcessToJobObject(made, ::GetCurrentProcess());
        return made;
    }();
    return job;
}

/// The numbers of the other processes of the job.
std::vector<::DWORD> OtherProcesses() {
    constexpr std::size_t kMost = 4096;
    std::vector<::ULONG_PTR> block(kMost + 2);
    auto* list = reinterpret_cast<::JOBOBJECT_BASIC_PROCESS_ID_LIST*>(block.data());
    ::QueryInformationJobObject(Job(), JobObjectBasicProcessIdList, list,
                                static_cast<DWORD>(block.size() * sizeof(::ULONG_PTR)), nullptr);
    std::vector<::DWORD> others;
    for (::DWORD i = 0; i < list->NumberOfProcessIdsInList; ++i) {
        const auto id = static_cast<::DWORD>(list->ProcessIdList[i]);
        if (id != ::GetCurrentProcessId()) {
            others.push_back(id);
        }
    }
    return others;
}

void EndByForce(::DWORD id) {
    const Handle process(::OpenProcess(PROCESS_TERMINATE, FALSE, id));
    if (process.IsOpen()) {
        ::TerminateProcess(process.Get(), 1);
    }
}

}  // namespace

void OwnProcessGroup() {
    Job();
}

void EndProcessGroup() {
    const auto until = std::chrono::steady_clock::now() + kPatience;
    // A single pass may miss a program that is being started at that moment.
    for (std::vector<::DWORD> running = OtherProcesses();
         !running.empty() && std::chrono::steady_clock::now() < until; running = OtherProcesses()) {
        for (const ::DWORD id : running) {
            EndByForce(id);
        }
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

}  // namespace ventrix::platform
