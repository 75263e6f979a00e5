// The desk host in the role of a host that is already running: it can be found by its class id, and, once a
// client has asked for it, calls that client from a thread of its own. The calls arrive in the client's
// message loop. Host and client take turns: while the host's thread waits for a call, the client's thread has
// the host.
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
    std::function<bool()> busy;  ///< While it says so, the host turns every call away; may be empty.
    std::string clientName;      ///< The client that is called.
    std::vector<std::string> commands;
};

using Answer = std::optional<std::vector<desk::AnswerValue>>;

class RunningHost {
  public:
    explicit RunningHost(RunningHostSettings settings);

    /// Waits for the last call, then lets the client go. The client's thread is another one, or its loop has
    /// ended.
    ~RunningHost();
    RunningHost(const RunningHost&) = delete;
    RunningHost& operator=(const RunningHost&) = delete;

    /// What the client answered, by command; nothing for a call that no client of that name took. Complete
    /// when the client's loop has ended.
    const std::vector<Answer>& Answers() const { return answers_; }

    /// What clients wrote to the console.
    const std::string& Console() const { return console_; }

    const desk::DeskHost& Host() const { return host_; }

  private:
    desk::HostSettings DeskSettings();
    desk::HostScript Script() const;
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
