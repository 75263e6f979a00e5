// The message queue of one thread. Any thread may add work; only the owning thread takes it out.
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
        kMessage,  ///< Served by the message loop only.
        kCall,     ///< A call from another thread, also served by ServeCallsUntil.
    };

    void Put(Work work, Kind kind);

    /// Adds the quit message, which is taken only when there is nothing else.
    void PutQuit();

    /// Waits for the next work and takes it. Nothing means the quit message, which is then removed.
    std::optional<Work> Take();

    /// Serves calls from other threads until `end`; messages stay in the queue.
    void ServeCallsUntil(Time end);

  private:
    struct Item {
        Work work;
        Kind kind;
    };

    /// Waits for the next call and takes it. Nothing when `end` is reached.
    std::optional<Work> TakeCall(std::unique_lock<std::mutex>& guard, Time end);

    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<Item> items_;
    bool quit_ = false;
};

/// This thread's queue. It is created by the first call, and destroyed with its content when the thread ends.
MessageQueue& CurrentQueue();

}  // namespace ventrix::platform
