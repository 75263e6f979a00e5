// A host that a test scripts: it answers for all 18 interfaces, keeps a log of what arrived, and fails by
// switch. Methods go by their contract names without "Method" ("InvokeClient"). What it hands out lies in
// task memory; when it owns results it takes that back itself when it goes.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/method_table.h"
#include "bridge/contract/notification_interfaces.h"

namespace ventrix::test {

class FakeHost {
  public:
    FakeHost();
    ~FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    // How it behaves.
    std::set<unsigned> missingInterfaces;
    std::map<std::string, HRESULT> failures;
    std::map<std::string, std::int32_t> statuses;
    HRESULT ownershipAnswer = S_FALSE;
    bool keepsClient = true;
    std::function<HRESULT()> whileClientIsCalled;  ///< Runs inside InvokeClient and gives its result.

    // What it answers. The lists are patterns in kit memory; the host hands out copies and frees the
    // patterns.
    std::int32_t integerAnswer = 0;
    std::uint32_t openedId = 4711;
    std::optional<std::string> text;
    Q_ValueList values = {};
    Q_PropList openResults = {};

    // What arrived.
    std::vector<std::string> log;
    std::vector<std::pair<std::int32_t, std::string>> description;  ///< At registration: number and text.
    std::vector<std::string> reply;                                 ///< The values of the latest reply.
    int references = 0;                                             ///< Held by the client, over all sides.

    IUnknown* Root() { return sides_[0].AsUnknown(); }

    /// The client's notification object; null without a client. Not a new reference.
    IQuorlaneNotifications0* Notifications() { return notifications_; }

    /// Gives the client's object back, which ends the connection.
    void DropClient();

  private:
    struct Methods;

    HRESULT Arrive(const std::string& method, const std::string& arguments, std::int32_t* status);
    void HandOutValues(HRESULT result, Q_ValueList* out);

    HostSide sides_[HostInterfaceCount + 1];  ///< The root object at 0, then the interfaces by number.
    IQuorlaneNotifications0* notifications_ = nullptr;
};

}  // namespace ventrix::test
