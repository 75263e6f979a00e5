// The kit's one IStream: a stream over a file, in which 32 bits express every size and position. One user
// each. Paths are UTF-8 in system notation. A stream is created with new, and its last Release closes the
// file.
#pragma once

#include <cstdint>

#include "kit/com_ultralite.h"
#include "platform/file_handle.h"

namespace ventrix {

enum Q_StreamMode : int {
    kStreamRead = 0,
    kStreamWrite = 1,
    kStreamReadWrite = 2,
};

class ChannelStreamC : public ImplementComC<IStream, ComUltraliteC> {
  public:
    ~ChannelStreamC() override;

    /// Opens the file that the path or its alias names, position 0. Missing files are created except for
    /// reading; truncate empties an existing one that is not opened for reading. A network file is opened by
    /// its local copy. 1, or 0 on failure, for a path of more than 4094 characters and for a stream that has
    /// its file.
    int OpenFile(const char* path, int mode, bool truncate);

    /// S_OK if all bytes came, S_FALSE if fewer.
    HRESULT Read(void* buffer, ULONG count, ULONG* read) override;

    /// S_OK if all bytes went, else E_FAIL.
    HRESULT Write(const void* bytes, ULONG count, ULONG* written) override;

    /// Moves by the low half of the offset, taken as a signed number. S_OK, or E_FAIL; the new position is
    /// then the number of E_FAIL.
    HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override;

    /// Copies from here to the target, as Q_StreamCopyBlocks. S_OK, or E_FAIL.
    HRESULT CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                   ULARGE_INTEGER* written) override;

    /// Fills in the type and the size; a size that can't be told is 0.
    HRESULT Stat(STATSTG* record, DWORD flags) override;

    // Not implemented: E_NOTIMPL.
    HRESULT SetSize(ULARGE_INTEGER size) override;
    HRESULT Commit(DWORD flags) override;
    HRESULT Revert() override;
    HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD kind) override;
    HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD kind) override;
    HRESULT Clone(IStream** stream) override;

  private:
    platform::FileHandle file_ = 0;
};

/// Reads until the count is there or nothing more comes. The bytes read.
std::uint32_t Q_StreamReadAll(IStream* stream, void* buffer, std::uint32_t count);

/// Writes until the count is gone or nothing more goes. The bytes written.
std::uint32_t Q_StreamWriteAll(IStream* stream, const void* buffer, std::uint32_t count);

/// Copies up to count bytes in blocks of at most 1024. 1, or 0 if a block could not be written whole. The
/// counters get the bytes read and written in either case.
int Q_StreamCopyBlocks(std::uint32_t count, IStream* source, std::uint32_t* readCount, IStream* target,
                       std::uint32_t* writtenCount);

}  // namespace ventrix
