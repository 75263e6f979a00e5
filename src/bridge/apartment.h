// The apartment and the message filter of an out-of-process client, as part of the connection's state.
#pragma once

namespace ventrix {

/// Enters the thread's apartment and registers a message filter, unless that was done before or somebody else
/// is in the apartment.
void EnterApartment();

/// Ends the filter and leaves the apartment, if EnterApartment entered it.
void LeaveApartment();

}  // namespace ventrix
