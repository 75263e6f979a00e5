// A library to preload. It makes one call of the chosen kind fail with the chosen error: the call that comes
// up in turn, counted over all processes of the programs named. fault_state.h has the variables; without them
// every call goes through.
//
// Kinds are those of the system's calls, with their relatives: a call counts under `write` if it changes a
// file's content or makes it durable, under `stat` if it only asks about a name. A failing `close` does close
// the descriptor, as the system's does. Calls that start a process count wherever the program lies, other
// calls only for paths below the place. The layer's own work uses raw system calls, so that it never counts.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fault_state.h"

using ventrix::faults::FaultState;

namespace {

FaultState* state = nullptr;  ///< Null: no call fails in this process.
const char* chosenKind = "";
const char* place = "";
std::uint32_t turn = 0;
int error = 0;

const char* Variable(const char* name) {
    const char* value = getenv(name);
    return value == nullptr ? "" : value;
}

bool IsNamedProgram() {
    char path[PATH_MAX] = {};
    if (syscall(SYS_readlink, "/proc/self/exe", path, sizeof path - 1) <= 0) {
        return false;
    }
    const char* name = strrchr(path, '/') + 1;
    const std::size_t length = strlen(name);
    for (const char* word = Variable(ventrix::faults::kProgramsVariable); *word != '\0';) {
        const std::size_t end = strcspn(word, ":");
        if (end == length && strncmp(word, name, length) == 0) {
            return true;
        }
        word += end + (word[end] == ':' ? 1 : 0);
    }
    return false;
}

__attribute__((constructor)) void Begin() {
    if (!IsNamedProgram()) {
        return;
    }
    chosenKind = Variable(ventrix::faults::kKindVariable);
    place = Variable(ventrix::faults::kPlaceVariable);
    turn = static_cast<std::uint32_t>(strtoul(Variable(ventrix::faults::kTurnVariable), nullptr, 10));
    error = static_cast<int>(strtol(Variable(ventrix::faults::kErrorVariable), nullptr, 10));
    const long file =
        syscall(SYS_openat, AT_FDCWD, Variable(ventrix::faults::kStateVariable), O_RDWR | O_CLOEXEC);
    if (file >= 0) {
        void* memory =
            mmap(nullptr, sizeof(FaultState), PROT_READ | PROT_WRITE, MAP_SHARED, static_cast<int>(file), 0);
        state = memory == MAP_FAILED ? nullptr : static_cast<FaultState*>(memory);
        syscall(SYS_close, file);
    }
}

/// Writes the absolute path of what `descriptor` is open on.
void PathOf(int descriptor, char* path) {
    char link[64];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const long length = syscall(SYS_readlink, link, path, PATH_MAX - 1);
    path[length < 0 ? 0 : length] = '\0';
}

void AbsolutePath(int folder, const char* name, char* path) {
    path[0] = '\0';
    if (name[0] != '/') {
        if (folder != AT_FDCWD) {
            PathOf(folder, path);
        } else if (syscall(SYS_getcwd, path, PATH_MAX) < 0) {
            path[0] = '\0';
        }
        strcat(path, "/");
    }
    strncat(path, name, PATH_MAX - 1);
}

bool IsChosen(const char* kind) {
    return state != nullptr && strcmp(kind, chosenKind) == 0;
}

/// Counts a call. True if it has to fail; `errno` is set then.
bool Count(const char* function, const char* path) {
    if (__atomic_add_fetch(&state->calls, 1, __ATOMIC_SEQ_CST) != turn) {
        return false;
    }
    snprintf(state->failed, sizeof state->failed, "%s(%s)", function, path);
    errno = error;
    return true;
}

bool FailsAt(const char* kind, const char* function, int folder, const char* name) {
    if (!IsChosen(kind) || name == nullptr) {
        return false;
    }
    char path[2 * PATH_MAX];
    AbsolutePath(folder, name, path);
    return strncmp(path, place, strlen(place)) == 0 && Count(function, path);
}

bool Fails(const char* kind, const char* function, const char* name) {
    return FailsAt(kind, function, AT_FDCWD, name);
}

bool Fails(const char* kind, const char* function, int descriptor) {
    if (!IsChosen(kind)) {
        return false;
    }
    char path[PATH_MAX];
    PathOf(descriptor, path);
    return strncmp(path, place, strlen(place)) == 0 && Count(function, path);
}

bool FailsToStart(const char* function, const char* program) {
    return IsChosen("spawn") && Count(function, program);
}

/// The function that the program would have called.
template <typename Function>
Function* Next(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// The third or fourth argument of an open call, which is there only if a file may be made.
mode_t ModeOf(int flags, va_list rest) {
    return (flags & (O_CREAT | O_TMPFILE)) == 0 ? 0 : va_arg(rest, mode_t);
}

}  // namespace

extern "C" {

// Kind: open.

int open(const char* name, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return Fails("open", "open", name) ? -1 : Next(&open, "open")(name, flags, mode);
}
int open64(const char* name, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return Fails("open", "open64", name) ? -1 : Next(&open64, "open64")(name, flags, mode);
}
int openat(int folder, const char* name, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return FailsAt("open", "openat", folder, name) ? -1 : Next(&openat, "openat")(folder, name, flags, mode);
}
int openat64(int folder, const char* name, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return FailsAt("open", "openat64", folder, name) ? -1
                                                     : Next(&openat64, "openat64")(folder, name, flags, mode);
}
// Programs that are built with checks call these where no file may be made.
int __open_2(const char* name, int flags) {
    return open(name, flags);
}
int __open64_2(const char* name, int flags) {
    return open64(name, flags);
}
FILE* fopen(const char* name, const char* mode) {
    return Fails("open", "fopen", name) ? nullptr : Next(&fopen, "fopen")(name, mode);
}
FILE* fopen64(const char* name, const char* mode) {
    return Fails("open", "fopen64", name) ? nullptr : Next(&fopen64, "fopen64")(name, mode);
}
DIR* opendir(const char* name) {
    return Fails("open", "opendir", name) ? nullptr : Next(&opendir, "opendir")(name);
}

// Kind: read.

ssize_t read(int file, void* data, size_t size) {
    return Fails("read", "read", file) ? -1 : Next(&read, "read")(file, data, size);
}
ssize_t pread(int file, void* data, size_t size, off_t offset) {
    return Fails("read", "pread", file) ? -1 : Next(&pread, "pread")(file, data, size, offset);
}
ssize_t pread64(int file, void* data, size_t size, off64_t offset) {
    return Fails("read", "pread64", file) ? -1 : Next(&pread64, "pread64")(file, data, size, offset);
}
size_t fread(void* data, size_t size, size_t count, FILE* file) {
    return Fails("read", "fread", fileno(file)) ? 0 : Next(&fread, "fread")(data, size, count, file);
}
dirent* readdir(DIR* folder) {
    return Fails("read", "readdir", dirfd(folder)) ? nullptr : Next(&readdir, "readdir")(folder);
}
dirent64* readdir64(DIR* folder) {
    return Fails("read", "readdir64", dirfd(folder)) ? nullptr : Next(&readdir64, "readdir64")(folder);
}

// Kind: write.

ssize_t write(int file, const void* data, size_t size) {
    return Fails("write", "write", file) ? -1 : Next(&write, "write")(file, data, size);
}
ssize_t writev(int file, const iovec* parts, int count) {
    return Fails("write", "writev", file) ? -1 : Next(&writev, "writev")(file, parts, count);
}
ssize_t pwrite(int file, const void* data, size_t size, off_t offset) {
    return Fails("write", "pwrite", file) ? -1 : Next(&pwrite, "pwrite")(file, data, size, offset);
}
ssize_t pwrite64(int file, const void* data, size_t size, off64_t offset) {
    return Fails("write", "pwrite64", file) ? -1 : Next(&pwrite64, "pwrite64")(file, data, size, offset);
}
size_t fwrite(const void* data, size_t size, size_t count, FILE* file) {
    return Fails("write", "fwrite", fileno(file)) ? 0 : Next(&fwrite, "fwrite")(data, size, count, file);
}
ssize_t sendfile(int to, int from, off_t* offset, size_t size) noexcept {
    return Fails("write", "sendfile", to) ? -1 : Next(&sendfile, "sendfile")(to, from, offset, size);
}
ssize_t sendfile64(int to, int from, off64_t* offset, size_t size) noexcept {
    return Fails("write", "sendfile64", to) ? -1 : Next(&sendfile64, "sendfile64")(to, from, offset, size);
}
ssize_t copy_file_range(int from, off64_t* read, int to, off64_t* written, size_t size, unsigned flags) {
    return Fails("write", "copy_file_range", to)
               ? -1
               : Next(&copy_file_range, "copy_file_range")(from, read, to, written, size, flags);
}
int fallocate(int file, int mode, off_t offset, off_t size) {
    return Fails("write", "fallocate", file) ? -1 : Next(&fallocate, "fallocate")(file, mode, offset, size);
}
int fallocate64(int file, int mode, off64_t offset, off64_t size) {
    return Fails("write", "fallocate64", file) ? -1
                                               : Next(&fallocate64, "fallocate64")(file, mode, offset, size);
}
int posix_fallocate(int file, off_t offset, off_t size) {
    return Fails("write", "posix_fallocate", file)
               ? error
               : Next(&posix_fallocate, "posix_fallocate")(file, offset, size);
}
int ftruncate(int file, off_t size) noexcept {
    return Fails("write", "ftruncate", file) ? -1 : Next(&ftruncate, "ftruncate")(file, size);
}
int ftruncate64(int file, off64_t size) noexcept {
    return Fails("write", "ftruncate64", file) ? -1 : Next(&ftruncate64, "ftruncate64")(file, size);
}
int truncate(const char* name, off_t size) noexcept {
    return Fails("write", "truncate", name) ? -1 : Next(&truncate, "truncate")(name, size);
}
int fsync(int file) {
    return Fails("write", "fsync", file) ? -1 : Next(&fsync, "fsync")(file);
}
int fdatasync(int file) {
    return Fails("write", "fdatasync", file) ? -1 : Next(&fdatasync, "fdatasync")(file);
}

// Kind: close.

int close(int file) {
    const bool fails = Fails("close", "close", file);
    const int result = Next(&close, "close")(file);
    errno = fails ? error : errno;
    return fails ? -1 : result;
}
int fclose(FILE* file) {
    const bool fails = Fails("close", "fclose", fileno(file));
    const int result = Next(&fclose, "fclose")(file);
    errno = fails ? error : errno;
    return fails ? EOF : result;
}
int closedir(DIR* folder) {
    const bool fails = Fails("close", "closedir", dirfd(folder));
    const int result = Next(&closedir, "closedir")(folder);
    errno = fails ? error : errno;
    return fails ? -1 : result;
}

// Kind: rename. Links count too: they give a file a name.

int rename(const char* from, const char* to) noexcept {
    return Fails("rename", "rename", to) ? -1 : Next(&rename, "rename")(from, to);
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return FailsAt("rename", "renameat", toFolder, to)
               ? -1
               : Next(&renameat, "renameat")(fromFolder, from, toFolder, to);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    return FailsAt("rename", "renameat2", toFolder, to)
               ? -1
               : Next(&renameat2, "renameat2")(fromFolder, from, toFolder, to, flags);
}
int link(const char* from, const char* to) noexcept {
    return Fails("rename", "link", to) ? -1 : Next(&link, "link")(from, to);
}
int symlink(const char* from, const char* to) noexcept {
    return Fails("rename", "symlink", to) ? -1 : Next(&symlink, "symlink")(from, to);
}

// Kind: mkdir.

int mkdir(const char* name, mode_t mode) noexcept {
    return Fails("mkdir", "mkdir", name) ? -1 : Next(&mkdir, "mkdir")(name, mode);
}
int mkdirat(int folder, const char* name, mode_t mode) noexcept {
    return FailsAt("mkdir", "mkdirat", folder, name) ? -1 : Next(&mkdirat, "mkdirat")(folder, name, mode);
}
char* mkdtemp(char* pattern) noexcept {
    return Fails("mkdir", "mkdtemp", pattern) ? nullptr : Next(&mkdtemp, "mkdtemp")(pattern);
}

// Kind: unlink.

int unlink(const char* name) noexcept {
    return Fails("unlink", "unlink", name) ? -1 : Next(&unlink, "unlink")(name);
}
int unlinkat(int folder, const char* name, int flags) noexcept {
    return FailsAt("unlink", "unlinkat", folder, name) ? -1
                                                       : Next(&unlinkat, "unlinkat")(folder, name, flags);
}
int rmdir(const char* name) noexcept {
    return Fails("unlink", "rmdir", name) ? -1 : Next(&rmdir, "rmdir")(name);
}
int remove(const char* name) noexcept {
    return Fails("unlink", "remove", name) ? -1 : Next(&remove, "remove")(name);
}

// Kind: stat.

int stat(const char* name, struct stat* result) noexcept {
    return Fails("stat", "stat", name) ? -1
                                       : Next<int(const char*, struct stat*)>(&stat, "stat")(name, result);
}
int stat64(const char* name, struct stat64* result) noexcept {
    return Fails("stat", "stat64", name)
               ? -1
               : Next<int(const char*, struct stat64*)>(&stat64, "stat64")(name, result);
}
int lstat(const char* name, struct stat* result) noexcept {
    return Fails("stat", "lstat", name) ? -1 : Next(&lstat, "lstat")(name, result);
}
int lstat64(const char* name, struct stat64* result) noexcept {
    return Fails("stat", "lstat64", name) ? -1 : Next(&lstat64, "lstat64")(name, result);
}
int fstat(int file, struct stat* result) noexcept {
    return Fails("stat", "fstat", file) ? -1 : Next(&fstat, "fstat")(file, result);
}
int fstat64(int file, struct stat64* result) noexcept {
    return Fails("stat", "fstat64", file) ? -1 : Next(&fstat64, "fstat64")(file, result);
}
int fstatat(int folder, const char* name, struct stat* result, int flags) noexcept {
    return FailsAt("stat", "fstatat", folder, name) ? -1
                                                    : Next(&fstatat, "fstatat")(folder, name, result, flags);
}
int fstatat64(int folder, const char* name, struct stat64* result, int flags) noexcept {
    return FailsAt("stat", "fstatat64", folder, name)
               ? -1
               : Next(&fstatat64, "fstatat64")(folder, name, result, flags);
}
int access(const char* name, int mode) noexcept {
    return Fails("stat", "access", name) ? -1 : Next(&access, "access")(name, mode);
}
ssize_t readlink(const char* name, char* target, size_t size) noexcept {
    return Fails("stat", "readlink", name) ? -1 : Next(&readlink, "readlink")(name, target, size);
}
char* realpath(const char* name, char* result) noexcept {
    return Fails("stat", "realpath", name) ? nullptr : Next(&realpath, "realpath")(name, result);
}

// Kind: chmod.

int chmod(const char* name, mode_t mode) noexcept {
    return Fails("chmod", "chmod", name) ? -1 : Next(&chmod, "chmod")(name, mode);
}
int fchmod(int file, mode_t mode) noexcept {
    return Fails("chmod", "fchmod", file) ? -1 : Next(&fchmod, "fchmod")(file, mode);
}
int fchmodat(int folder, const char* name, mode_t mode, int flags) noexcept {
    return FailsAt("chmod", "fchmodat", folder, name)
               ? -1
               : Next(&fchmodat, "fchmodat")(folder, name, mode, flags);
}

// Kind: spawn.

pid_t fork() noexcept {
    return FailsToStart("fork", "") ? -1 : Next(&fork, "fork")();
}
int execve(const char* program, char* const arguments[], char* const environment[]) noexcept {
    return FailsToStart("execve", program) ? -1 : Next(&execve, "execve")(program, arguments, environment);
}
int posix_spawn(pid_t* process, const char* program, const posix_spawn_file_actions_t* files,
                const posix_spawnattr_t* attributes, char* const arguments[], char* const environment[]) {
    return FailsToStart("posix_spawn", program)
               ? error
               : Next(&posix_spawn, "posix_spawn")(process, program, files, attributes, arguments,
                                                   environment);
}

}  // extern "C"
