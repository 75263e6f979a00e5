#include "word_counter.h"

#include <sstream>
#include <string>

#include "bridge/callbacks.h"
#include "bridge/contract/request.h"
#include "bridge/host/operations.h"
#include "bridge/host/values.h"
#include "bridge/out_of_process.h"
#include "bridge/runtime_setup.h"
#include "kit/format/format.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"

namespace ventrix {
namespace {

constexpr char kCountCommand[] = "Count ";

int CountWords(const char* text) {
    std::istringstream words(text);
    std::string word;
    int count = 0;
    while (words >> word) {
        ++count;
    }
    return count;
}

void Answer(std::int32_t status, const std::string& sentence) {
    Q_Value values[2] = {};
    values[0].tag = kIntegerTag;
    values[0].number = status;
    values[1].tag = kTextTag;
    values[1].text = Q_CopyTextOrEmpty(sentence.c_str());
    const Q_ValueList reply = {2, values};
    Q_ValueList back = Q_ApiSendCallReply(&reply);
    Q_ApiFreeValueList(&back);
    Q_ApiFreeValue(&values[1]);
}

void HandleCommand(const char* command) {
    if (!Q_StrPrefix(command, kCountCommand)) {
        Answer(kRequestRefused, "");
        return;
    }
    const int words = CountWords(command + sizeof kCountCommand - 1);
    // Without a channel the output goes to the host's console. If the host is busy, the call is repeated.
    Q_Print(nullptr, "Word counter: %d words\n", words);
    Answer(0, std::to_string(words) + " words");
}

}  // namespace

// The callbacks that this client defines. The kit has defaults for the others.

void Initialize(std::int32_t) {
    Q_ApiRuntimeSetup();
    Q_ApiSetTextMode(1);
    Q_SetEncoding("UTF-8");
    Q_ApiWatchNotification(kRequestNotification, 1);
}

void Notify(std::int32_t number, std::uint32_t, const char* text, std::int32_t) {
    if (number == kRequestNotification) {
        HandleCommand(text);
    }
}

namespace example {

std::int32_t RunWordCounter(const char* serverName) {
    // Q_ApiRunClient can connect by itself, but only to a host on this machine.
    return Q_ApiConnectHost(nullptr, serverName, nullptr) == 0 ? Q_ApiRunClient() : 1;
}

}  // namespace example
}  // namespace ventrix
