// The message queue of one thread. Any thread may put work in; only the owning thread takes it out.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace ventrix::platform {

class MessageQueue {
  public:
    using Work = std::function<void()>;
    using Time = std::chrono::steady_clock::time_point;

    enum class Kind {
        kMessage,  ///< Waits for the message loop.
        kCall,     ///< A call from outside, which is served while the thread waits as well.
    };

    void Put(Work work, Kind kind);

    /// Puts the quit message behind everything that is or comes in.
    void PutQuit();

    /// Waits for the next piece of work. Nothing is the quit message, which is then taken out.
    std::optional<Work> Take();

    /// Serves calls from outside until the time has come; messages stay where they are.
    void ServeCallsUntil(Time end);

  private:
    struct Item {
        Work work;
        Kind kind;
    };

    std::optional<Work> TakeCall(std::unique_lock<std::mutex>& guard, Time end);

    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<Item> items_;
    bool quit_ = false;
};

/// This thread's queue. It exists from the first call on and drops what is in it when the thread ends.
MessageQueue& CurrentQueue();

}  // namespace ventrix::platform
