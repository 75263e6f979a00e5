#include "platform/posix/message_queue.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <map>
#include <utility>

#include "platform/com.h"
#include "platform/com_runtime.h"

namespace ventrix::platform {
namespace {

constexpr UINT kWorkMessage = 0x0400;  // The first message number that is free for programs.

/// Every thread that asks for its number or for a message gets a queue, which lives in a thread-local entry
/// and is listed in one process-wide table by the thread's number. Posting looks the queue up and appends the
/// work. A std::function cannot travel in a MSG, so GetMessageW moves the work into the entry's `taken` map
/// and passes only a ticket; DispatchMessageW runs the work of that ticket. A call from another thread is
/// work of the kind kCall, which the owning thread also serves while it waits for a server, so that the two
/// cannot wait for each other. When a thread ends, its queue goes with it, and every call still waiting in it
/// fails.
struct QueueTable {
    std::mutex lock;
    std::map<std::uint32_t, std::shared_ptr<MessageQueue>> queues;
};

/// Never destroyed: threads may outlive the static objects.
QueueTable& Queues() {
    static auto& table = *new QueueTable;
    return table;
}

/// A thread's own state; it is in the table as long as the thread lives.
struct ThreadQueue {
    std::uint32_t number;
    std::shared_ptr<MessageQueue> queue = std::make_shared<MessageQueue>();
    std::map<WPARAM, MessageQueue::Work> taken;  ///< Work of messages that are not dispatched yet.
    WPARAM lastTicket = 0;

    ThreadQueue() {
        static std::atomic<std::uint32_t> lastNumber = 0;
        number = ++lastNumber;
        QueueTable& table = Queues();
        const std::lock_guard guard(table.lock);
        table.queues.emplace(number, queue);
    }
    ~ThreadQueue() {
        QueueTable& table = Queues();
        const std::lock_guard guard(table.lock);
        table.queues.erase(number);
    }
    ThreadQueue(const ThreadQueue&) = delete;
    ThreadQueue& operator=(const ThreadQueue&) = delete;
};

ThreadQueue& CurrentThreadQueue() {
    thread_local ThreadQueue own;
    return own;
}

std::shared_ptr<MessageQueue> FindQueue(std::uint32_t threadNumber) {
    QueueTable& table = Queues();
    const std::lock_guard guard(table.lock);
    const auto found = table.queues.find(threadNumber);
    return found == table.queues.end() ? nullptr : found->second;
}

/// Waits until the work has run. False if the queue dropped it.
bool WaitForOutcome(std::future<void>& outcome) {
    try {
        outcome.get();
        return true;
    } catch (const std::future_error&) {
        return false;
    }
}

}  // namespace

MessageQueue& CurrentQueue() {
    return *CurrentThreadQueue().queue;
}

void MessageQueue::Put(Work work, Kind kind) {
    {
        const std::lock_guard guard(lock_);
        items_.push_back({std::move(work), kind});
    }
    changed_.notify_all();
}

void MessageQueue::PutQuit() {
    {
        const std::lock_guard guard(lock_);
        quit_ = true;
    }
    changed_.notify_all();
}

std::optional<MessageQueue::Work> MessageQueue::Take() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [&] { return !items_.empty() || quit_; });
    if (items_.empty()) {
        quit_ = false;
        return std::nullopt;
    }
    Work work = std::move(items_.front().work);
    items_.pop_front();
    return work;
}

std::optional<MessageQueue::Work> MessageQueue::TakeCall(std::unique_lock<std::mutex>& guard, Time end) {
    const auto next = [&] {
        return std::find_if(items_.begin(), items_.end(),
                            [](const Item& item) { return item.kind == Kind::kCall; });
    };
    if (!changed_.wait_until(guard, end, [&] { return next() != items_.end(); })) {
        return std::nullopt;
    }
    const auto found = next();
    Work work = std::move(found->work);
    items_.erase(found);
    return work;
}

void MessageQueue::ServeCallsUntil(Time end) {
    std::unique_lock guard(lock_);
    while (std::optional<Work> call = TakeCall(guard, end)) {
        guard.unlock();
        (*call)();
        call.reset();
        guard.lock();
    }
}

std::uint32_t CurrentThreadNumber() {
    return CurrentThreadQueue().number;
}

bool PostToThread(std::uint32_t threadNumber, std::function<void()> work) {
    const std::shared_ptr<MessageQueue> queue = FindQueue(threadNumber);
    if (queue != nullptr) {
        queue->Put(std::move(work), MessageQueue::Kind::kMessage);
    }
    return queue != nullptr;
}

bool PostQuitToThread(std::uint32_t threadNumber) {
    const std::shared_ptr<MessageQueue> queue = FindQueue(threadNumber);
    if (queue != nullptr) {
        queue->PutQuit();
    }
    return queue != nullptr;
}

bool CallOnThread(std::uint32_t threadNumber, const std::function<void()>& work) {
    if (threadNumber == CurrentThreadNumber()) {
        work();
        return true;
    }
    std::shared_ptr<MessageQueue> queue = FindQueue(threadNumber);
    if (queue == nullptr) {
        return false;
    }
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> outcome = done->get_future();
    queue->Put(
        [done, &work] {
            work();
            done->set_value();
        },
        MessageQueue::Kind::kCall);
    // From here on only the queue owns the promise. If the thread ends, the promise is destroyed with the
    // queue, and the wait ends.
    done.reset();
    queue.reset();
    return WaitForOutcome(outcome);
}

}  // namespace ventrix::platform

namespace ventrix {

BOOL GetMessageW(MSG* message, HWND /*window*/, UINT /*first*/, UINT /*last*/) {
    platform::ThreadQueue& own = platform::CurrentThreadQueue();
    *message = {};
    std::optional<platform::MessageQueue::Work> work = own.queue->Take();
    if (!work) {
        message->message = WM_QUIT;
        return 0;
    }
    message->message = platform::kWorkMessage;
    message->wParam = ++own.lastTicket;
    own.taken.emplace(message->wParam, std::move(*work));
    return 1;
}

BOOL TranslateMessage(const MSG* /*message*/) {
    return 0;
}

LRESULT DispatchMessageW(const MSG* message) {
    auto& taken = platform::CurrentThreadQueue().taken;
    const auto found = taken.find(message->wParam);
    if (message->message != platform::kWorkMessage || found == taken.end()) {
        return 0;
    }
    const platform::MessageQueue::Work work = std::move(found->second);
    taken.erase(found);
    work();
    return 0;
}

void PostQuitMessage(int /*exitCode*/) {
    platform::CurrentQueue().PutQuit();
}

}  // namespace ventrix
