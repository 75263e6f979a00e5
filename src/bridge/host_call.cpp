#include "bridge/host_call.h"

#include "bridge/apartment.h"
#include "kit/last_error.h"

namespace ventrix {

HostCallScope::HostCallScope(IUnknown* target) : target_(target) {
    target_->AddRef();
    ++connection.openCalls;
}

HostCallScope::~HostCallScope() {
    target_->Release();
    if (--connection.openCalls == 0 && connection.leavesAfterCall) {
        LeaveApartment();
    }
}

bool AcceptHostResult(HRESULT result) {
    if (SUCCEEDED(result)) {
        return true;
    }
    Q_ApiLastError = result == RPC_E_SERVERCALL_RETRYLATER ? -88 : -1;
    return false;
}

bool AcceptHostStatus(std::int32_t status) {
    if (status == 0) {
        return true;
    }
    Q_ApiLastError = status;
    return false;
}

}  // namespace ventrix
