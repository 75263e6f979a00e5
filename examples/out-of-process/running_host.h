// The desk host as a host that is already running. Clients find it by its class id. When a client has asked
// for it, it calls that client from a thread of its own, and the calls arrive in the client's message loop.
// The desk host has no lock and needs none: its own thread waits while a call runs on the client's thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "desk/host/desk_host.h"
#include "platform/com.h"

namespace ventrix::example {

struct RunningHostSettings {
    CLSID classId;
    std::u16string server;       ///< Empty: this machine.
    std::function<bool()> busy;  ///< While it returns true, the host rejects every call; may be empty.
    std::string clientName;      ///< The client to call.
    std::vector<std::string> commands;
};

using Answer = std::optional<std::vector<desk::AnswerValue>>;

class RunningHost {
  public:
    explicit RunningHost(RunningHostSettings settings);

    /// Waits for the last call to finish. Must not run on the client's thread while the client's loop runs.
    ~RunningHost();
    RunningHost(const RunningHost&) = delete;
    RunningHost& operator=(const RunningHost&) = delete;

    /// The answers by command; nothing for a call that no client of that name received. Complete when the
    /// client's loop has ended.
    const std::vector<Answer>& Answers() const { return answers_; }

    /// The console output of clients.
    const std::string& Console() const { return console_; }

    const desk::DeskHost& Host() const { return host_; }

  private:
    desk::HostSettings DeskSettings();
    HRESULT Activate(REFIID interfaceId, void** object);
    void ServeClient(std::uint32_t clientThread);
    Answer CallByName(const std::string& clientName, const std::string& command);

    RunningHostSettings settings_;
    std::string console_;
    std::vector<Answer> answers_;
    desk::DeskHost host_;
    std::thread thread_;
};

}  // namespace ventrix::example
