// A scripted host with all 18 interfaces. A test sets what it answers. It logs each call of the client as one
// line that begins with the method's name in the contract, without "Method": "WatchNotification 13 1". What
// it hands out is in task memory; if it owns results, its destructor frees them.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/method_table.h"
#include "bridge/contract/notification_interfaces.h"

namespace ventrix::test {

using Lines = std::vector<std::string>;

/// The numbers with spaces between them.
template <class... Numbers>
std::string Line(Numbers... numbers) {
    std::string line;
    ((line += (line.empty() ? "" : " ") + std::to_string(numbers)), ...);
    return line;
}

/// A value of the contract as a test writes it: a number, a string or a list, by tag.
struct HostValue {
    std::uint32_t tag = 0;
    std::string text;
    std::int32_t number = 0;
    std::vector<HostValue> list;
};

HostValue Text(std::string text);
HostValue Number(std::int32_t number);
HostValue Fields(std::vector<HostValue> fields);

/// Entries of a document's file list.
HostValue Document(std::string path, std::int32_t unsaved = 0);
HostValue Graphic(std::string path);

/// Values of the contract, in blocks of an allocator.
using Allocator = std::function<void*(std::size_t)>;
Q_Value MakeValue(const HostValue& value, const Allocator& allocate);
Q_ValueList MakeList(const std::vector<HostValue>& values, const Allocator& allocate);

/// A row of a property list. The name counts only if the number is 0.
struct HostProp {
    std::int32_t number;
    std::string name;
    HostValue value;
};

/// Strings are quoted, lists are in brackets; a null string is null.
std::string Print(const Q_Value& value);
std::string Print(const Q_ValueList& list);

/// The rows as "number=value".
Lines Print(const Q_PropList& list);

struct HostDocument {
    std::string path;
    std::vector<HostValue> files;
};

class TestHost {
  public:
    TestHost();
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    // Behavior. Failures and statuses are by method.
    std::set<unsigned> missingInterfaces;
    std::map<std::string, HRESULT> failures;
    std::map<std::string, std::int32_t> statuses;
    HRESULT ownershipAnswer = S_FALSE;
    bool keepsClient = true;
    std::function<void(const std::string& command)> onClient;  ///< Runs inside a call of another client.

    // Answers.
    std::int32_t integerAnswer = 0;  ///< Of InvokeClient.
    std::vector<HostValue> values;   ///< Of InvokeClientForValues and SendCallReply.
    std::optional<std::string> installationFolder;
    std::map<std::uint32_t, HostDocument> documents;  ///< By id.
    std::uint32_t openedId = 4711;                    ///< 0 refuses the open.
    std::vector<HostProp> openResults = {{9, "", Text("opened")}};

    // What the client did.
    Lines log;
    Lines description;   ///< At registration.
    Lines openScript;    ///< Of the last open.
    int references = 0;  ///< Held by the client, for all interfaces together.

    IUnknown* Root() { return sides_[0].AsUnknown(); }

    /// The client's notification object, or null. The reference stays the host's.
    IQuorlaneNotifications0* Notifications() { return notifications_; }

    /// Releases the client's notification object, which ends the connection.
    void DropClient();

    /// Sends the client a request. The values of its reply; "3 replies" if it sent that many.
    std::string Request(const std::string& text);

  private:
    struct Methods;

    HRESULT Arrive(const std::string& method, const std::string& arguments, std::int32_t* status);
    HRESULT HandOut(HRESULT result, const std::vector<HostValue>& list, Q_ValueList* out);

    HostSide sides_[kHostInterfaceCount + 1];  ///< The root object at 0, then the interfaces by number.
    IQuorlaneNotifications0* notifications_ = nullptr;
    std::vector<void*> handedOut_;
    const Allocator allocate_ = [this](std::size_t size) {
        return handedOut_.emplace_back(CoTaskMemAlloc(size));
    };
};

/// A host that is connected to the module in the test program. Its log begins with Initialize.
class LinkedHost : public TestHost {
  public:
    LinkedHost();
};

}  // namespace ventrix::test
