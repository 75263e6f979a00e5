// The error numbers of the platform's file and process calls, as the system of the backslash paths numbers
// them. An operation of this room gives 0 for success and one of these for failure; it keeps no last error of
// its own.
#pragma once

#include <cstdint>

namespace ventrix::platform {

using ErrorCode = std::uint32_t;

inline constexpr ErrorCode errorNone = 0;
inline constexpr ErrorCode errorInvalidFunction = 1;
inline constexpr ErrorCode errorFileNotFound = 2;
inline constexpr ErrorCode errorPathNotFound = 3;
inline constexpr ErrorCode errorTooManyOpenFiles = 4;
inline constexpr ErrorCode errorAccessDenied = 5;
inline constexpr ErrorCode errorInvalidHandle = 6;
inline constexpr ErrorCode errorNotEnoughMemory = 8;
inline constexpr ErrorCode errorWriteProtect = 19;
inline constexpr ErrorCode errorSharingViolation = 32;
inline constexpr ErrorCode errorInvalidParameter = 87;
inline constexpr ErrorCode errorDiskFull = 112;
inline constexpr ErrorCode errorInvalidName = 123;
inline constexpr ErrorCode errorDirNotEmpty = 145;
inline constexpr ErrorCode errorAlreadyExists = 183;
inline constexpr ErrorCode errorBadExeFormat = 193;
inline constexpr ErrorCode errorNameTooLong = 206;
inline constexpr ErrorCode errorNotADirectory = 267;
inline constexpr ErrorCode errorIoDevice = 1117;

}  // namespace ventrix::platform
