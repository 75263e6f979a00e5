// The error codes of file and process operations, numbered as in the component model's platform, whatever the
// operating system. An operation returns kErrorNone or one of the others; there is no separate last error.
#pragma once

#include <cstdint>

namespace ventrix::platform {

using ErrorCode = std::uint32_t;

inline constexpr ErrorCode kErrorNone = 0;
inline constexpr ErrorCode kErrorInvalidFunction = 1;
inline constexpr ErrorCode kErrorFileNotFound = 2;
inline constexpr ErrorCode kErrorPathNotFound = 3;
inline constexpr ErrorCode kErrorTooManyOpenFiles = 4;
inline constexpr ErrorCode kErrorAccessDenied = 5;
inline constexpr ErrorCode kErrorInvalidHandle = 6;
inline constexpr ErrorCode kErrorNotEnoughMemory = 8;
inline constexpr ErrorCode kErrorWriteProtect = 19;
inline constexpr ErrorCode kErrorSharingViolation = 32;
inline constexpr ErrorCode kErrorInvalidParameter = 87;
inline constexpr ErrorCode kErrorDiskFull = 112;
inline constexpr ErrorCode kErrorInvalidName = 123;
inline constexpr ErrorCode kErrorDirNotEmpty = 145;
inline constexpr ErrorCode kErrorAlreadyExists = 183;
inline constexpr ErrorCode kErrorBadExeFormat = 193;
inline constexpr ErrorCode kErrorNameTooLong = 206;
inline constexpr ErrorCode kErrorNotADirectory = 267;
inline constexpr ErrorCode kErrorIoDevice = 1117;

}  // namespace ventrix::platform
