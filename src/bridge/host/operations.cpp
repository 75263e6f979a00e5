#include "bridge/host/operations.h"

#include "bridge/connection.h"
#include "bridge/host/properties.h"
#include "bridge/host/values.h"
#include "bridge/host_call.h"

namespace ventrix {
namespace {

constexpr std::int32_t kNoStatus = -1;

// The results of the latest open. Callers get its address, not a copy.
Q_PropList openResults = {};

// Copies a list of the host into kit memory. The host's own is freed level by level, unless the host does
// that itself.
Q_ValueList TakeHostList(Q_ValueList* hostList) {
    Q_ValueList copy = {};
    Q_CopyValueListWith(&copy, hostList, Q_KitAlloc);
    if (!connection.hostOwnsResults) {
        Q_ReleaseValueListWith(hostList, CoTaskMemFree);
    }
    return copy;
}

char* TakeHostText(char* hostText) {
    char* copy = nullptr;
    Q_CopyTextWith(&copy, &hostText, Q_KitAlloc);
    if (hostText != nullptr && !connection.hostOwnsResults) {
        CoTaskMemFree(hostText);
    }
    return copy;
}

void TakeOpenResults(Q_PropList* hostList, Q_PropList** results) {
    if (results != nullptr) {
        Q_ApiFreePropList(*results);
        *results = &openResults;
    }
    Q_ApiFreePropList(&openResults);
    Q_CopyPropListWith(&openResults, hostList, Q_KitAlloc);
    if (!connection.hostOwnsResults) {
        Q_ReleasePropListWith(hostList, CoTaskMemFree);
    }
}

}  // namespace

std::int32_t Q_ApiWatchNotification(std::int32_t number, std::int32_t state) {
    std::int32_t status = kNoStatus;
    if (CallHost<WatchNotificationMethod>(number, state, &status)) {
        AcceptHostStatus(status);
    }
    return status;
}

void Q_ApiSetTextMode(std::int32_t mode) {
    std::int32_t status = kNoStatus;
    if (CallHost<SetTextModeMethod>(mode, &status)) {
        AcceptHostStatus(status);
    }
}

std::int32_t Q_ApiWriteConsole(const char* text) {
    std::int32_t status = kNoStatus;
    if (CallHost<WriteConsoleMethod>(text, &status)) {
        AcceptHostStatus(status);
    }
    return status;
}

std::int32_t Q_ApiInvokeClient(const char* clientName, const char* command) {
    std::int32_t status = kNoStatus;
    std::int32_t answer = 0;
    const bool called = CallHost<InvokeClientMethod>(clientName, command, &status, &answer);
    return called && AcceptHostStatus(status) ? answer : 0;
}

Q_ValueList Q_ApiInvokeClientForValues(const char* clientName, const char* command) {
    std::int32_t status = kNoStatus;
    Q_ValueList hostList = {};
    if (!CallHost<InvokeClientForValuesMethod>(clientName, command, &status, &hostList)) {
        return {};
    }
    Q_ValueList answer = TakeHostList(&hostList);
    if (!AcceptHostStatus(status)) {
        Q_ApiFreeValueList(&answer);
        return {};
    }
    return answer;
}

Q_ValueList Q_ApiSendCallReply(const Q_ValueList* reply) {
    Q_ValueList hostList = {};
    return CallHost<SendCallReplyMethod>(reply, &hostList) ? TakeHostList(&hostList) : Q_ValueList{};
}

std::uint32_t Q_ApiOpenDocument(const char* path, const Q_PropList* script, Q_PropList** results) {
    std::int32_t status = kNoStatus;
    std::uint32_t objectId = 0;
    Q_PropList hostList = {};
    if (!CallHost<OpenDocumentMethod>(path, script, &status, &objectId, &hostList)) {
        return 0;
    }
    TakeOpenResults(&hostList, results);
    return AcceptHostStatus(status) ? objectId : 0;
}

std::int32_t Q_ApiCloseDocument(std::uint32_t objectId, std::int32_t flags) {
    std::int32_t status = kNoStatus;
    if (CallHost<CloseDocumentMethod>(objectId, flags, &status)) {
        AcceptHostStatus(status);
    }
    return status;
}

Q_ValueList Q_ApiListDocumentFiles(std::uint32_t objectId, std::int32_t selector, std::int32_t third) {
    Q_ValueList hostList = {};
    return CallHost<ListDocumentFilesMethod>(objectId, selector, third, &hostList) ? TakeHostList(&hostList)
                                                                                   : Q_ValueList{};
}

char* Q_ApiReadStringProp(std::uint32_t ownerId, std::uint32_t objectId, const Q_PropIdent* property) {
    std::int32_t status = kNoStatus;
    char* hostText = nullptr;
    if (!CallHost<ReadStringPropMethod>(ownerId, objectId, property, &status, &hostText)) {
        return nullptr;
    }
    char* text = TakeHostText(hostText);
    if (!AcceptHostStatus(status)) {
        Q_KitRelease(text);
        return nullptr;
    }
    return text;
}

char* Q_ApiReadStringPropNum(std::uint32_t ownerId, std::uint32_t objectId, std::int32_t number) {
    const Q_PropIdent property = {number, nullptr};
    return Q_ApiReadStringProp(ownerId, objectId, &property);
}

}  // namespace ventrix
