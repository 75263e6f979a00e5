#include "platform/posix/errno_codes.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/posix/native_paths.h"

namespace ventrix::platform {

ErrorCode ErrorFromErrno(int error) {
    switch (error) {
        case 0:
            return errorNone;
        case ENOENT:
            return errorFileNotFound;
        case ENOTDIR:
        case ELOOP:
            return errorPathNotFound;
        case EMFILE:
        case ENFILE:
            return errorTooManyOpenFiles;
        case EACCES:
        case EPERM:
        case EISDIR:
            return errorAccessDenied;
        case EBADF:
            return errorInvalidHandle;
        case ENOMEM:
            return errorNotEnoughMemory;
        case EROFS:
            return errorWriteProtect;
        case EBUSY:
        case ETXTBSY:
            return errorSharingViolation;
        case EINVAL:
            return errorInvalidParameter;
        case ENOSPC:
        case EDQUOT:
            return errorDiskFull;
        case EILSEQ:
            return errorInvalidName;
        case ENOTEMPTY:
            return errorDirNotEmpty;
        case EEXIST:
            return errorAlreadyExists;
        case ENOEXEC:
            return errorBadExeFormat;
        case ENAMETOOLONG:
            return errorNameTooLong;
        case EIO:
        case ENXIO:
            return errorIoDevice;
        default:
            return errorInvalidFunction;
    }
}

ErrorCode ErrorFromErrno(int error, const std::string& nativePath) {
    struct stat folder = {};
    if (error == ENOENT && ::stat(NativeParent(nativePath).c_str(), &folder) != 0) {
        return errorPathNotFound;
    }
    return ErrorFromErrno(error);
}

}  // namespace ventrix::platform
