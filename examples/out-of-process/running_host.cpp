#include "running_host.h"

#include <utility>

#include "apartments.h"
#include "platform/com_runtime.h"

namespace ventrix::example {

RunningHost::RunningHost(RunningHostSettings settings)
    : settings_(std::move(settings)), host_(DeskSettings()) {
    platform::OfferClass(
        settings_.classId, [this](REFIID id, void** object) { return Activate(id, object); },
        settings_.server);
}

RunningHost::~RunningHost() {
    platform::OfferClass(settings_.classId, nullptr, settings_.server);
}

desk::HostSettings RunningHost::DeskSettings() {
    desk::HostSettings desk;
    desk.installationFolder = {"C:\\Quorlane"};
    desk.console = [this](const std::string& text) { console_ += text; };
    desk.busy = BusyForMethods(settings_.busy);
    return desk;
}

HRESULT RunningHost::Activate(REFIID interfaceId, void** object) {
    RegisterBusyFilter(settings_.busy);
    hostThread_ = platform::CurrentThreadNumber();
    return host_.Root()->QueryInterface(interfaceId, object);
}

std::int32_t RunningHost::Serve(const std::string& server) {
    const std::int32_t status = RunClient(server, [this] { CallClient(); });
    // The host's thread has to release what the client has registered, unless it was the client's and has
    // ended.
    platform::CallOnThread(hostThread_, [this] { host_.ReleaseModule(); });
    return status;
}

void RunningHost::CallClient() {
    platform::CallOnThread(hostThread_, [this] { host_.InitializeClient(); });
    for (const std::string& command : settings_.commands) {
        platform::CallOnThread(hostThread_,
                               [&] { answers_.push_back(CallByName(settings_.clientName, command)); });
    }
}

Answer RunningHost::CallByName(const std::string& clientName, const std::string& command) {
    return host_.RegisteredName() == clientName ? host_.CallModule(command) : std::nullopt;
}

}  // namespace ventrix::example
