// The kit's one IStream: an unbuffered stream over a file, with 32-bit sizes and positions, and the table of
// path aliases that it consults when it opens a file. Paths are UTF-8 in system notation. A stream is created
// with new; its last Release closes the file and deletes the stream.
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

/// The alias of the path, compared exactly, or the path itself if it has none. The result is valid until the
/// table changes. The table is process-wide.
const char* Q_PathAlias(const char* path);

/// Sets the alias of a path, which opens another file in its place; a null alias removes it. A null path is
/// ignored.
void Q_SetPathAlias(const char* path, const char* alias);

class ChannelStreamC : public ImplementComC<IStream, ComUltraliteC> {
  public:
    ~ChannelStreamC() override;

    /// Opens the file that the path or its alias names, at position 0. `mode` is a Q_StreamMode. A missing
    /// file is created unless the mode is kStreamRead; `truncate` empties an existing one, and is ignored for
    /// kStreamRead. For a network file the local copy is opened. 1, or 0 on failure, for a path of more than
    /// 4094 UTF-16 units, and if the stream already has a file.
    int OpenFile(const char* path, int mode, bool truncate);

    /// S_OK if all bytes were read, S_FALSE if fewer.
    HRESULT Read(void* buffer, ULONG count, ULONG* read) override;

    /// S_OK if all bytes were written, else E_FAIL.
    HRESULT Write(const void* bytes, ULONG count, ULONG* written) override;

    /// Moves by the low half of the offset, read as a signed number. S_OK, or E_FAIL, which is then also
    /// stored as the new position.
    HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override;

    /// Copies from the current position to the target, as Q_StreamCopyBlocks does. S_OK, or E_FAIL.
    HRESULT CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                   ULARGE_INTEGER* written) override;

    /// Fills in the type and the size; a size that cannot be determined is 0.
    HRESULT Stat(STATSTG* record, DWORD flags) override;

    // Not implemented; these return E_NOTIMPL.
    HRESULT SetSize(ULARGE_INTEGER size) override;
    HRESULT Commit(DWORD flags) override;
    HRESULT Revert() override;
    HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD kind) override;
    HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD kind) override;
    HRESULT Clone(IStream** stream) override;

  private:
    platform::FileHandle file_ = 0;
};

/// Reads until count bytes are read or a call reads none. Returns the bytes read.
std::uint32_t Q_StreamReadAll(IStream* stream, void* buffer, std::uint32_t count);

/// Writes until count bytes are written or a call writes none. Returns the bytes written.
std::uint32_t Q_StreamWriteAll(IStream* stream, const void* buffer, std::uint32_t count);

/// Copies up to count bytes in blocks of at most 1024. 1, or 0 if a block could not be written completely.
/// In either case the bytes read and written are stored in the counters.
int Q_StreamCopyBlocks(std::uint32_t count, IStream* source, std::uint32_t* readCount, IStream* target,
                       std::uint32_t* writtenCount);

}  // namespace ventrix
