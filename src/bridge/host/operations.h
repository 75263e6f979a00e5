// The operations of the host that this client uses, one function for each call. A failure gives the
// operation's failure result and sets Q_ApiLastError: -1 if the interface is missing or the call failed, -88
// if the host is busy, else the status that the host reported. Success does not change Q_ApiLastError.
// Results are copies in kit memory, which the caller frees; arguments stay the caller's. Strings are in the
// connection's text mode (UTF-8 after Q_ApiSetTextMode). Object id 0 means no object, or the host
// application.
#pragma once

#include <cstdint>

#include "bridge/contract/properties.h"
#include "bridge/contract/values.h"

namespace ventrix {

/// Asks the host to deliver a notification number to Notify (state 1). The status; -1 if the interface is
/// missing.
std::int32_t Q_ApiWatchNotification(std::int32_t number, std::int32_t state);

/// Sets how strings are encoded in both directions; 1 is UTF-8.
void Q_ApiSetTextMode(std::int32_t mode);

/// Writes to the host's console. The status; -1 if the interface is missing.
std::int32_t Q_ApiWriteConsole(const char* text);

/// Calls another client by name and waits until it has finished. Its integer answer, or 0 on failure.
std::int32_t Q_ApiInvokeClient(const char* clientName, const char* command);

/// The same for a client that replies with values. Empty on failure. Free with Q_ApiFreeValueList
/// (bridge/host/values.h), as the other value lists.
Q_ValueList Q_ApiInvokeClientForValues(const char* clientName, const char* command);

/// While Notify handles a client call: sends the values that the calling client receives. Returns the list
/// that the host gives back; empty on failure.
Q_ValueList Q_ApiSendCallReply(const Q_ValueList* reply);

/// Opens a document under an open script. Its object id, or 0. `results` may be null. If the call reached the
/// host, the rows of the list at *results are freed, and *results becomes the address of the bridge's one
/// list of open results. That list is valid until the next open or until it is freed with Q_ApiFreePropList.
std::uint32_t Q_ApiOpenDocument(const char* path, const Q_PropList* script, Q_PropList** results);

/// The status; -1 if the interface is missing.
std::int32_t Q_ApiCloseDocument(std::uint32_t objectId, std::int32_t flags);

/// A value for each file that the document refers to. Empty on failure.
Q_ValueList Q_ApiListDocumentFiles(std::uint32_t objectId, std::int32_t selector, std::int32_t third);

/// A string property, to be freed with Q_Free. Null on failure, and if the host has no such string.
char* Q_ApiReadStringProp(std::uint32_t ownerId, std::uint32_t objectId, const Q_PropIdent* property);
char* Q_ApiReadStringPropNum(std::uint32_t ownerId, std::uint32_t objectId, std::int32_t number);

}  // namespace ventrix
