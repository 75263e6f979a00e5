// Cuts a request into tokens and reads its options into one record. The parser is tolerant: it skips what it
// does not know and checks no value. Texts are UTF-8 bytes, and only the space separates tokens: "Publish
// -docId 7 -useDITAOT".
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

/// One request as it was given. A text is null where its option is absent; an option given twice has its
/// later value.
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

/// Copies the next token, without its quotes, into the buffer, cut to capacity - 1 bytes and terminated.
/// Returns the cursor behind the whole token. At the end of the text the token is empty.
const char* ReadToken(const char* cursor, char* buffer, std::size_t capacity);

/// Appends the pieces between the separators to the list, untrimmed; a trailing separator leaves an empty
/// last piece, and an empty text gives no piece.
void ParseCommaList(std::string_view text, std::list<std::string>& list, char separator);

/// Reads a whole request. Without a command that is known, nothing behind it is read. Command and option
/// names match in any case; an empty token, also as a value, ends the request.
PublishRequest ParseRequest(const char* text);

}  // namespace ventrix
