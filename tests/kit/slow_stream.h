// A stream in memory that moves at most `step` bytes per call and holds at most `capacity` bytes.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "kit/com_ultralite.h"

namespace ventrix {

class SlowStreamC : public ImplementComC<IStream, ComUltraliteC> {
  public:
    HRESULT Read(void* buffer, ULONG count, ULONG* read) override {
        asked.push_back(count);
        *read = std::min({count, step, static_cast<ULONG>(content.size() - position)});
        std::memcpy(buffer, content.data() + position, *read);
        position += *read;
        return S_OK;
    }
    HRESULT Write(const void* bytes, ULONG count, ULONG* written) override {
        *written = std::min({count, step, static_cast<ULONG>(capacity - content.size())});
        content.append(static_cast<const char*>(bytes), *written);
        return S_OK;
    }
    HRESULT Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT Revert() override { return E_NOTIMPL; }
    HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
    HRESULT Clone(IStream**) override { return E_NOTIMPL; }

    std::string content;
    ULONG step = 4096;
    std::size_t capacity = 1 << 20;
    std::size_t position = 0;
    std::vector<ULONG> asked;
};

}  // namespace ventrix
