// The component model's apartment and the message filter of a client in its own process. Both are part of the
// connection's state.
#pragma once

namespace ventrix {

/// Enters the thread's apartment and registers a message filter. Does nothing if the thread is already in an
/// apartment, entered by this function or by other code.
void EnterApartment();

/// Revokes the filter, and leaves the apartment if EnterApartment entered it. During a call to the host, both
/// wait until the call returns.
void LeaveApartment();

}  // namespace ventrix
