// What the fault layer and the test that drives it share: the names of environment variables and a record in
// a file, which every process of a run maps into its memory.
#pragma once

#include <cstdint>

namespace ventrix::faults {

inline constexpr const char* kKindVariable = "VENTRIX_FAULT_KIND";  ///< Kind of call, such as "open".
inline constexpr const char* kTurnVariable = "VENTRIX_FAULT_TURN";  ///< The call that fails; the first is 1.
inline constexpr const char* kErrorVariable = "VENTRIX_FAULT_ERROR";  ///< The error number of that call.
inline constexpr const char* kPlaceVariable = "VENTRIX_FAULT_PLACE";  ///< Only paths that begin so count.
inline constexpr const char* kProgramsVariable = "VENTRIX_FAULT_PROGRAMS";  ///< File names, with colons.
inline constexpr const char* kStateVariable = "VENTRIX_FAULT_STATE";        ///< File with a FaultState.

struct FaultState {
    std::uint32_t calls;  ///< Calls of the kind so far. Less than the turn: no call has failed.
    char failed[1024];    ///< Function and path of the call that failed; zero-terminated.
};

}  // namespace ventrix::faults
