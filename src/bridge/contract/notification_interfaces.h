// The client's side of the contract: the three interfaces of the notification object that a client hands to
// the host. The host queries for those that it needs. Integers have 32 bits. Strings are null-terminated, in
// the connection's text mode, and stay the host's.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/com.h"

namespace ventrix {

/// A resource that GetResource hands out: its size in bytes and its data in task memory, which the host
/// frees.
struct Q_ResourceRecord {
    std::uint32_t size;
    void* data;
};

/// What CMSCommand hands out. The string and the array are in the client's memory.
struct Q_CmsRecord {
    std::uint8_t head[8];
    char* text;
    std::uint32_t count;
    std::uint8_t tail[4];
    std::int32_t* numbers;
};

static_assert(sizeof(Q_ResourceRecord) == 16 && offsetof(Q_ResourceRecord, data) == 8);
static_assert(sizeof(Q_CmsRecord) == 32 && offsetof(Q_CmsRecord, text) == 8 &&
              offsetof(Q_CmsRecord, count) == 16 && offsetof(Q_CmsRecord, numbers) == 24);

inline constexpr GUID kCmsNotifications0Id = {
    0x7AA0C49A, 0x1141, 0x44EF, {0xA7, 0x84, 0x15, 0x55, 0x93, 0xF9, 0x50, 0x25}};
inline constexpr GUID kNotifications0Id = {
    0xEB813990, 0xB81C, 0x11D0, {0x98, 0x5E, 0x00, 0x60, 0x97, 0x0B, 0xEC, 0x0B}};
inline constexpr GUID kNotifications1Id = {
    0xA4B8972D, 0x5B3A, 0x4B57, {0x93, 0xC5, 0x3E, 0xB3, 0xD6, 0x2A, 0x4F, 0x1D}};

/// Every method returns S_OK, whatever the client did, except that GetResource returns E_FAIL if there is no
/// such resource.
class IQuorlaneNotifications0 : public IUnknown {
  public:
    virtual HRESULT Initialize(std::int32_t code) = 0;
    virtual HRESULT Quit() = 0;
    virtual HRESULT Command(std::int32_t command) = 0;
    virtual HRESULT Message(std::intptr_t value, std::int32_t first, std::int32_t second) = 0;
    virtual HRESULT DialogEvent(std::int32_t first, std::int32_t second, std::int32_t third) = 0;
    virtual HRESULT Notify(std::int32_t number, std::uint32_t objectId, const char* text,
                           std::int32_t integer) = 0;
    virtual HRESULT GetResource(std::uint32_t type, const char* name, Q_ResourceRecord* record) = 0;
};

class IQuorlaneNotifications1 : public IUnknown {
  public:
    virtual HRESULT HtmlDialogEventEx(std::int32_t event, std::intptr_t first, std::intptr_t second) = 0;
};

class IQuorlaneCMSNotifications0 : public IUnknown {
  public:
    virtual HRESULT CMSCommand(std::int32_t command, const char* text, std::int32_t integer,
                               std::intptr_t value, Q_CmsRecord* record) = 0;
};

}  // namespace ventrix
