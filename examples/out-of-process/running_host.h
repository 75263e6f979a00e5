// The desk host as a host that is already running. Clients find it by its class id. It has its own thread and
// apartment on Windows; elsewhere it is called on the client's thread (platform/com_runtime.h). The desk host
// has no lock and needs none, since all its functions run on the host's thread.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "desk/host/desk_host.h"
#include "platform/com.h"

namespace ventrix::example {

struct RunningHostSettings {
    CLSID classId;
    std::u16string server;       ///< Empty: this machine. Has no effect on Windows.
    std::function<bool()> busy;  ///< While it returns true, the host rejects every call; may be empty.
    std::string clientName;      ///< The client to call.
    std::vector<std::string> commands;
};

using Answer = std::optional<std::vector<desk::AnswerValue>>;

class RunningHost {
  public:
    /// Throws std::runtime_error if the host cannot be offered to clients.
    explicit RunningHost(RunningHostSettings settings);
    ~RunningHost();
    RunningHost(const RunningHost&) = delete;
    RunningHost& operator=(const RunningHost&) = delete;

    /// Runs the client (RunClient in apartments.h) and calls it with each command. 0, or 1 if the client
    /// found no host.
    std::int32_t Serve(const std::string& server = {});

    /// The answers by command; nothing for a call that no client of that name received.
    const std::vector<Answer>& Answers() const { return answers_; }

    /// The console output of clients.
    const std::string& Console() const { return console_; }

    const desk::DeskHost& Host() const { return host_; }

  private:
    desk::HostSettings DeskSettings();
    HRESULT Activate(REFIID interfaceId, void** object);
    void CallClient();
    Answer CallByName(const std::string& clientName, const std::string& command);

    RunningHostSettings settings_;
    std::string console_;
    std::vector<Answer> answers_;
    desk::DeskHost host_;
    std::atomic<std::uint32_t> hostThread_ = 0;  ///< 0 until a client has asked for the host.
};

}  // namespace ventrix::example
