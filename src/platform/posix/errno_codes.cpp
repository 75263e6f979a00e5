#include "platform/posix/errno_codes.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/posix/native_paths.h"

namespace ventrix::platform {

ErrorCode ErrorFromErrno(int error) {
    switch (error) {
        case 0:
            return kErrorNone;
        case ENOENT:
            return kErrorFileNotFound;
        case ENOTDIR:
        case ELOOP:
            return kErrorPathNotFound;
        case EMFILE:
        case ENFILE:
            return kErrorTooManyOpenFiles;
        case EACCES:
        case EPERM:
        case EISDIR:
            return kErrorAccessDenied;
        case EBADF:
            return kErrorInvalidHandle;
        case ENOMEM:
            return kErrorNotEnoughMemory;
        case EROFS:
            return kErrorWriteProtect;
        case EBUSY:
        case ETXTBSY:
            return kErrorSharingViolation;
        case EINVAL:
            return kErrorInvalidParameter;
        case ENOSPC:
        case EDQUOT:
            return kErrorDiskFull;
        case EILSEQ:
            return kErrorInvalidName;
        case ENOTEMPTY:
            return kErrorDirNotEmpty;
        case EEXIST:
            return kErrorAlreadyExists;
        case ENOEXEC:
            return kErrorBadExeFormat;
        case ENAMETOOLONG:
            return kErrorNameTooLong;
        case EIO:
        case ENXIO:
            return kErrorIoDevice;
        default:
            return kErrorInvalidFunction;
    }
}

ErrorCode ErrorFromErrno(int error, const std::string& nativePath) {
    struct stat folder = {};
    if (error == ENOENT && ::stat(NativeParent(nativePath).c_str(), &folder) != 0) {
        return kErrorPathNotFound;
    }
    return ErrorFromErrno(error);
}

}  // namespace ventrix::platform
