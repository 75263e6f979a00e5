#include <algorithm>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "apartments.h"
#include "bridge/contract/host_interfaces.h"
#include "kit/com_ultralite.h"
#include "platform/child_process.h"
#include "platform/com_runtime.h"
#include "platform/module.h"
#include "platform/win32/system_calls.h"
#include "win32/client_program.h"

namespace ventrix::example {
namespace {

constexpr DWORD kCancelCall = 0xFFFFFFFF;

// Calls of the component runtime itself, such as the question for a further interface, are not rejected.
bool IsCallOfTheContract(const INTERFACEINFO* call) {
    return call != nullptr && std::find(std::begin(kHostInterfaceIds), std::end(kHostInterfaceIds),
                                        call->iid) != std::end(kHostInterfaceIds);
}

class BusyHostFilterC final : public ImplementComC<IMessageFilter, ComUltraliteC> {
  public:
    explicit BusyHostFilterC(const std::function<bool()>& busy) : busy_(busy) {}

    DWORD HandleInComingCall(DWORD callType, HTASK caller, DWORD tickCount, INTERFACEINFO* info) override {
        return IsCallOfTheContract(info) && busy_() ? SERVERCALL_RETRYLATER : SERVERCALL_ISHANDLED;
    }

    DWORD RetryRejectedCall(HTASK callee, DWORD elapsed, DWORD rejectType) override { return kCancelCall; }

    DWORD MessagePending(HTASK callee, DWORD elapsed, DWORD pendingType) override {
        return PENDINGMSG_WAITDEFPROCESS;
    }

  private:
    std::function<bool()> busy_;
};

std::string ClientProgram() {
    const std::string own = platform::ModuleFileName(platform::MainModule());
    return own.substr(0, own.find_last_of('\\') + 1) + "word_counter_client.exe";
}

platform::StartedProgram StartClient(const std::string& server) {
    platform::ProgramStart start;
    start.arguments = {ClientProgram(), std::to_string(platform::CurrentThreadNumber())};
    if (!server.empty()) {
        start.arguments.push_back(server);
    }
    platform::StartedProgram client = platform::StartProgram(start);
    if (!client.notStarted.empty()) {
        throw std::runtime_error(client.notStarted);
    }
    return client;
}

// The thread of the client's message loop. Nothing if the client ends before its loop runs.
std::optional<std::uint32_t> WaitForMessageLoop(const platform::StartedProgram& client) {
    const auto process = reinterpret_cast<HANDLE>(client.handle);
    const auto threadMessages = reinterpret_cast<::HWND>(-1);
    ::MSG message = {};
    while (::PeekMessageW(&message, threadMessages, kServingMessage, kServingMessage, PM_REMOVE) == FALSE) {
        if (::MsgWaitForMultipleObjects(1, &process, FALSE, INFINITE, QS_POSTMESSAGE) == WAIT_OBJECT_0) {
            return std::nullopt;
        }
    }
    return static_cast<std::uint32_t>(message.wParam);
}

}  // namespace

std::int32_t RunClient(const std::string& server, const std::function<void()>& whileServing) {
    platform::StartedProgram client = StartClient(server);
    if (const auto thread = WaitForMessageLoop(client)) {
        whileServing();
        platform::PostQuitToThread(*thread);
    }
    return platform::WaitForProgram(client).exitCode;
}

void RegisterBusyFilter(const std::function<bool()>& busy) {
    if (busy) {
        auto* filter = new BusyHostFilterC(busy);
        CoRegisterMessageFilter(filter, nullptr);
        filter->Release();
    }
}

std::function<bool()> BusyForMethods(const std::function<bool()>& /*busy*/) {
    return {};
}

}  // namespace ventrix::example
