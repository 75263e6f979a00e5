// errno becomes an error number of the platform here and nowhere else.
#pragma once

#include <string>

#include "platform/error_codes.h"

namespace ventrix::platform {

/// 0 gives errorNone; an unknown errno gives errorInvalidFunction.
ErrorCode ErrorFromErrno(int error);

/// The same for a call on a path (native notation): a missing file whose folder is missing too is
/// errorPathNotFound.
ErrorCode ErrorFromErrno(int error, const std::string& nativePath);

}  // namespace ventrix::platform
