#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "apartments.h"
#include "platform/com_runtime.h"
#include "word_counter.h"

namespace ventrix::example {
namespace {

using ThreadNumber = std::uint32_t;

// Keeps the promise when this thread's message loop runs. Only the message queue owns it, so that it is
// broken if the thread ends before.
void PromiseMessageLoop(std::promise<ThreadNumber> loop) {
    const ThreadNumber thread = platform::CurrentThreadNumber();
    const auto owned = std::make_shared<std::promise<ThreadNumber>>(std::move(loop));
    platform::PostToThread(thread, [owned, thread] { owned->set_value(thread); });
}

std::optional<ThreadNumber> WaitForMessageLoop(std::future<ThreadNumber> loop) {
    try {
        return loop.get();
    } catch (const std::future_error&) {
        return std::nullopt;
    }
}

}  // namespace

std::int32_t RunClient(const std::string& server, const std::function<void()>& whileServing) {
    std::promise<ThreadNumber> loop;
    std::future<ThreadNumber> served = loop.get_future();
    std::int32_t status = 1;
    std::thread client([&status, &server, loop = std::move(loop)]() mutable {
        PromiseMessageLoop(std::move(loop));
        status = RunWordCounter(server.empty() ? nullptr : server.c_str());
    });
    if (const auto thread = WaitForMessageLoop(std::move(served))) {
        whileServing();
        platform::PostQuitToThread(*thread);
    }
    client.join();
    return status;
}

void RegisterBusyFilter(const std::function<bool()>& /*busy*/) {}

std::function<bool()> BusyForMethods(const std::function<bool()>& busy) {
    return busy;
}

}  // namespace ventrix::example
