// The one conversion from errno to the error codes of error_codes.h.
#pragma once

#include <string>

#include "platform/error_codes.h"

namespace ventrix::platform {

/// 0 gives kErrorNone; an unknown errno gives kErrorInvalidFunction.
ErrorCode ErrorFromErrno(int error);

/// The same for a call on a path (native notation): a file that is missing together with its folder gives
/// kErrorPathNotFound.
ErrorCode ErrorFromErrno(int error, const std::string& nativePath);

}  // namespace ventrix::platform
