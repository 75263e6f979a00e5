// The host of all tests: a test says what it answers, and it keeps a log of every call that the client makes,
// one line each, methods by their contract names without "Method" ("WatchNotification 13 1"). It answers for
// all 18 interfaces. What it hands out lies in task memory; when it owns results it takes that back itself
// when it goes. One host at a time.
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

/// Numbers with blanks between them.
template <class... Numbers>
std::string Line(Numbers... numbers) {
    std::string line;
    ((line += (line.empty() ? "" : " ") + std::to_string(numbers)), ...);
    return line;
}

/// A value of the contract in a test's own memory: a number, a text or a list of values, by tag.
struct HostValue {
    std::uint32_t tag = 0;
    std::string text;
    std::int32_t number = 0;
    std::vector<HostValue> list;
};

HostValue Text(std::string text);
HostValue Number(std::int32_t number);
HostValue Fields(std::vector<HostValue> fields);

/// The entries of a document's file list.
HostValue Document(std::string path, std::int32_t unsaved = 0);
HostValue Graphic(std::string path);

/// The same in blocks of an allocator.
using Allocator = std::function<void*(std::size_t)>;
Q_Value MakeValue(const HostValue& value, const Allocator& allocate);
Q_ValueList MakeList(const std::vector<HostValue>& values, const Allocator& allocate);

/// A row of a property list: by number, or by name where the number is 0.
struct HostProp {
    std::int32_t number;
    std::string name;
    HostValue value;
};

/// Numbers as they are, texts in quotes, lists in brackets; null texts as null.
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

    // How it behaves. Failures and statuses go by method.
    std::set<unsigned> missingInterfaces;
    std::map<std::string, HRESULT> failures;
    std::map<std::string, std::int32_t> statuses;
    HRESULT ownershipAnswer = S_FALSE;
    bool keepsClient = true;
    std::function<void(const std::string& command)> onClient;  ///< Runs inside a call of another client.

    // What it answers.
    std::int32_t integerAnswer = 0;  ///< Of InvokeClient.
    std::vector<HostValue> values;   ///< Of InvokeClientForValues and SendCallReply.
    std::optional<std::string> installationFolder;
    std::map<std::uint32_t, HostDocument> documents;  ///< By id.
    std::uint32_t openedId = 4711;                    ///< 0: the open is refused.
    std::vector<HostProp> openResults = {{9, "", Text("opened")}};

    // What arrived.
    Lines log;
    Lines description;   ///< At registration.
    Lines openScript;    ///< Of the last open.
    int references = 0;  ///< Held by the client, over all sides.

    IUnknown* Root() { return sides_[0].AsUnknown(); }

    /// The client's notification object; null without a client. Not a new reference.
    IQuorlaneNotifications0* Notifications() { return notifications_; }

    /// Gives the client's object back, which ends the connection.
    void DropClient();

    /// Hands the client one request, and gives the values of its reply; "3 replies" if that is not one.
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

/// A host with the module that is linked into the test program: connected, with the log of its Initialize.
class LinkedHost : public TestHost {
  public:
    LinkedHost();
};

}  // namespace ventrix::test
