// The parser of requests such as "Publish -docId 7 -useDITAOT". It is tolerant: it skips unknown tokens and
// does not check values. Strings are UTF-8. Only a space separates tokens; a tab is an ordinary character.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>

#include "kit/text/strings.h"
#include "markers/publish_params.h"

namespace ventrix {

enum class RequestCommand { kNone, kValidate, kPublish };

/// A parsed request. The string of an absent option is null. If an option occurs twice, the later
/// value replaces the earlier one, except that lists append.
struct PublishRequest {
    RequestCommand command = RequestCommand::kNone;
    std::int32_t documentId = 0;
    Q_String outputFolder;
    Q_String stylesheet;
    Q_String preScript;
    Q_String postScript;
    Q_String ditaval;
    Q_String logFile;
    bool useDitaOt = false;
    bool showProgressBar = false;
    PublishParams params;
};

/// Copies the next token, without its quotes, into the buffer, truncated to capacity - 1 bytes and
/// terminated. Returns the position after the whole token. At the end of the request the token is empty.
const char* ReadToken(const char* cursor, char* buffer, std::size_t capacity);

/// Appends the parts between the separators to the list, untrimmed. A separator at the end gives an empty
/// last part; an empty string gives no part.
void ParseCommaList(std::string_view text, std::list<std::string>& list, char separator);

/// Parses a request. If the command is unknown, the options are not read. Commands and option names are
/// compared without regard to case. An empty token, also as a value, ends the request.
PublishRequest ParseRequest(const char* text);

}  // namespace ventrix
