// The client as a program of its own, for Windows.
#include "win32/client_program.h"

#include <cstdio>
#include <cstdlib>

#include "platform/com_runtime.h"
#include "platform/win32/system_calls.h"
#include "word_counter.h"

int main(int count, char** arguments) {
    if (count < 2) {
        std::fputs("usage: word_counter_client THREAD [SERVER]\nword_counter starts this program.\n", stderr);
        return 2;
    }
    const auto starter = static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, 10));
    const std::uint32_t own = ventrix::platform::CurrentThreadNumber();
    // Runs in the message loop.
    ventrix::platform::PostToThread(
        own, [starter, own] { ::PostThreadMessageW(starter, ventrix::example::kServingMessage, own, 0); });
    return ventrix::example::RunWordCounter(count > 2 ? arguments[2] : nullptr);
}
