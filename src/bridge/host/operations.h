// What this client asks of the host: plain functions over one call each. A failure gives the operation's
// failure result and sets Q_ApiLastError: -1 without the interface or when the call failed, -88 when the host
// is busy, else the status that the host reported. Success leaves Q_ApiLastError alone. What an operation
// returns is a copy in kit memory and the caller's to free; arguments stay the caller's. Texts are in the
// connection's text mode (UTF-8 once the client has said so). Object id 0 is none, or the host application.
#pragma once

#include <cstdint>

#include "bridge/contract/properties.h"
#include "bridge/contract/values.h"

namespace ventrix {

/// Asks the host to deliver a notification number to Notify: state 1 on. The status; -1 without the
/// interface.
std::int32_t Q_ApiWatchNotification(std::int32_t number, std::int32_t state);

/// 1 goes with UTF-8 as the kit's encoding.
void Q_ApiSetTextMode(std::int32_t mode);

/// Writes to the host's console. The status; -1 without the interface.
std::int32_t Q_ApiWriteConsole(const char* text);

/// Calls another client by name and waits until it has finished. Its integer answer; 0 on failure.
std::int32_t Q_ApiInvokeClient(const char* clientName, const char* command);

/// The same for a client that answers with values. Empty on failure. Free with Q_ApiFreeValueList.
Q_ValueList Q_ApiInvokeClientForValues(const char* clientName, const char* command);

/// While Notify handles a client call: the answer that the caller gets. What the host gives back, or empty.
Q_ValueList Q_ApiSendCallReply(const Q_ValueList* reply);

/// Opens a document under a script. Its object id, or 0. On a call that reached the host, *results points at
/// the bridge's one list of open results, valid until the next open or its release with Q_ApiFreePropList;
/// rows of a list that *results held before are freed first.
std::uint32_t Q_ApiOpenDocument(const char* path, const Q_PropList* script, Q_PropList** results);

/// The status; -1 without the interface.
std::int32_t Q_ApiCloseDocument(std::uint32_t objectId, std::int32_t flags);

/// One value per file that the document refers to. Empty on failure. Free with Q_ApiFreeValueList.
Q_ValueList Q_ApiListDocumentFiles(std::uint32_t objectId, std::int32_t selector, std::int32_t third);

/// A string property, free with Q_Free; null on failure and where the host has no such text.
char* Q_ApiReadStringProp(std::uint32_t ownerId, std::uint32_t objectId, const Q_PropIdent* property);
char* Q_ApiReadStringPropNum(std::uint32_t ownerId, std::uint32_t objectId, std::int32_t number);

}  // namespace ventrix
