#include "running_host.h"

#include <future>
#include <memory>
#include <utility>

#include "platform/com_runtime.h"

namespace ventrix::example {
namespace {

// Waits until the client's message loop runs, since only then the client is registered for certain: it also
// serves calls while it waits for a busy host during start-up. False if the client's thread ends before.
bool WaitForMessageLoop(std::uint32_t clientThread) {
    auto promise = std::make_shared<std::promise<void>>();
    std::future<void> served = promise->get_future();
    if (!platform::PostToThread(clientThread, [promise] { promise->set_value(); })) {
        return false;
    }
    // Now only the message queue owns the promise. If the thread ends, the queue is deleted, and get()
    // throws.
    promise.reset();
    try {
        served.get();
        return true;
    } catch (const std::future_error&) {
        return false;
    }
}

}  // namespace

RunningHost::RunningHost(RunningHostSettings settings)
    : settings_(std::move(settings)), host_(DeskSettings()) {
    platform::OfferClass(
        settings_.classId, [this](REFIID id, void** object) { return Activate(id, object); },
        settings_.server);
}

RunningHost::~RunningHost() {
    platform::OfferClass(settings_.classId, nullptr, settings_.server);
    if (thread_.joinable()) {
        thread_.join();
    }
}

desk::HostSettings RunningHost::DeskSettings() {
    desk::HostSettings desk;
    desk.installationFolder = {"C:\\Quorlane"};
    desk.console = [this](const std::string& text) { console_ += text; };
    desk.busy = settings_.busy;
    return desk;
}

// Runs on the client's thread, as all calls of the client do.
HRESULT RunningHost::Activate(REFIID interfaceId, void** object) {
    const HRESULT result = host_.Root()->QueryInterface(interfaceId, object);
    if (SUCCEEDED(result) && !thread_.joinable()) {
        thread_ = std::thread(&RunningHost::ServeClient, this, platform::CurrentThreadNumber());
    }
    return result;
}

void RunningHost::ServeClient(std::uint32_t clientThread) {
    if (!WaitForMessageLoop(clientThread)) {
        return;
    }
    platform::CallOnThread(clientThread, [this] { host_.InitializeClient(); });
    for (const std::string& command : settings_.commands) {
        platform::CallOnThread(clientThread,
                               [&] { answers_.push_back(CallByName(settings_.clientName, command)); });
    }
    platform::PostQuitToThread(clientThread);
}

Answer RunningHost::CallByName(const std::string& clientName, const std::string& command) {
    return host_.RegisteredName() == clientName ? host_.CallModule(command) : std::nullopt;
}

}  // namespace ventrix::example
