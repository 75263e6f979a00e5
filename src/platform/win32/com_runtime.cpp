#include "platform/com_runtime.h"

#include "platform/win32/system_calls.h"

#include <objbase.h>

#include <algorithm>
#include <deque>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

// A message cannot own the work that it stands for. Each thread therefore has a queue of works, and a window
// that only receives messages, one for each work. Work that is posted runs in the thread's message loop and
// not while it waits for the result of a call to another apartment, since the system then leaves messages of
// programs in their queue.

namespace ventrix::platform {
namespace {

using Work = std::function<void()>;

constexpr UINT kWorkMessage = WM_APP;

struct ThreadQueue;

struct QueueTable {
    std::mutex lock;
    std::map<std::uint32_t, ThreadQueue*> queues;
};

/// Never destroyed: threads may outlive the static objects.
QueueTable& Queues() {
    static auto& table = *new QueueTable;
    return table;
}

/// A thread's own; it is in the table as long as the thread lives. The table's lock guards the works. The
/// system destroys the window with the thread.
struct ThreadQueue {
    ::HWND window;
    std::deque<Work> works;

    ThreadQueue();
    ~ThreadQueue();
    ThreadQueue(const ThreadQueue&) = delete;
    ThreadQueue& operator=(const ThreadQueue&) = delete;
};

void CALLBACK DeleteQueue(void* queue) {
    delete static_cast<ThreadQueue*>(queue);
}

/// In a slot of the system, which calls DeleteQueue when the thread ends. The compiler's thread-local objects
/// have lost their memory when their destructors run.
ThreadQueue& CurrentThreadQueue() {
    static const ::DWORD slot = ::FlsAlloc(DeleteQueue);
    if (::FlsGetValue(slot) == nullptr) {
        ::FlsSetValue(slot, new ThreadQueue);
    }
    return *static_cast<ThreadQueue*>(::FlsGetValue(slot));
}

Work TakeWork() {
    ThreadQueue& queue = CurrentThreadQueue();
    const std::lock_guard guard(Queues().lock);
    Work work = std::move(queue.works.front());
    queue.works.pop_front();
    return work;
}

LRESULT CALLBACK RunWork(::HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message != kWorkMessage) {
        return ::DefWindowProcW(window, message, first, second);
    }
    TakeWork()();
    return 0;
}

const wchar_t* WindowClass() {
    static constexpr wchar_t kName[] = L"VentrixThreadQueue";
    [[maybe_unused]] static const ATOM registered = [] {
        WNDCLASSW description = {};
        description.lpfnWndProc = RunWork;
        description.lpszClassName = kName;
        return ::RegisterClassW(&description);
    }();
    return kName;
}

ThreadQueue::ThreadQueue()
    : window(::CreateWindowExW(0, WindowClass(), nullptr, 0, 0, 0, 0, 0, static_cast<::HWND>(HWND_MESSAGE),
                               nullptr, nullptr, nullptr)) {
    const std::lock_guard guard(Queues().lock);
    Queues().queues.emplace(::GetCurrentThreadId(), this);
}

ThreadQueue::~ThreadQueue() {
    const std::lock_guard guard(Queues().lock);
    Queues().queues.erase(::GetCurrentThreadId());
}

/// In an apartment, serves the calls of other apartments meanwhile.
void WaitFor(HANDLE event) {
    ::DWORD index = 0;
    if (::CoWaitForMultipleHandles(0, INFINITE, 1, &event, &index) != S_OK) {
        ::WaitForSingleObject(event, INFINITE);
    }
}

/// The system's view of a class that is offered. It lives on the stack of the host's thread, which ends after
/// the class has been withdrawn.
class OfferedClass final : public ::IClassFactory {
  public:
    explicit OfferedClass(const ClassFactory& factory) : factory_(factory) {}

    ::HRESULT STDMETHODCALLTYPE QueryInterface(const ::IID& id, void** object) override {
        const bool known = id == __uuidof(::IUnknown) || id == __uuidof(::IClassFactory);
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ::ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ::ULONG STDMETHODCALLTYPE Release() override { return 1; }

    ::HRESULT STDMETHODCALLTYPE CreateInstance(::IUnknown* outer, const ::IID& id, void** object) override {
        *object = nullptr;
        return outer == nullptr ? factory_(reinterpret_cast<const IID&>(id), object) : CLASS_E_NOAGGREGATION;
    }
    ::HRESULT STDMETHODCALLTYPE LockServer(::WINBOOL) override { return S_OK; }

  private:
    const ClassFactory& factory_;
};

class Apartment {
  public:
    Apartment() { ::CoInitialize(nullptr); }
    ~Apartment() { ::CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

void ServeMessages() {
    ::MSG message = {};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
        ::DispatchMessageW(&message);
    }
}

/// What the host's thread runs until the quit message. `offered` receives its number, or 0 if the system does
/// not offer the class.
void ServeClass(const CLSID& classId, const ClassFactory& factory, std::promise<std::uint32_t>& offered) {
    const Apartment apartment;
    const std::uint32_t number = CurrentThreadNumber();
    OfferedClass object(factory);
    ::DWORD registration = 0;
    const HRESULT result =
        ::CoRegisterClassObject(reinterpret_cast<const ::CLSID&>(classId), &object, ::CLSCTX_LOCAL_SERVER,
                                ::REGCLS_MULTIPLEUSE, &registration);
    offered.set_value(SUCCEEDED(result) ? number : 0);
    if (SUCCEEDED(result)) {
        ServeMessages();
        ::CoRevokeClassObject(registration);
    }
}

struct Offer {
    CLSID classId;
    std::thread hostThread;
    std::uint32_t hostThreadNumber;
};

struct OfferTable {
    std::mutex lock;
    std::vector<Offer> offers;
};

/// Never destroyed: a class may still be offered when the process ends.
OfferTable& Offers() {
    static auto& table = *new OfferTable;
    return table;
}

std::optional<Offer> TakeOffer(REFCLSID classId) {
    const std::lock_guard guard(Offers().lock);
    std::vector<Offer>& offers = Offers().offers;
    const auto found = std::find_if(offers.begin(), offers.end(),
                                    [&](const Offer& offer) { return offer.classId == classId; });
    if (found == offers.end()) {
        return std::nullopt;
    }
    Offer taken = std::move(*found);
    offers.erase(found);
    return taken;
}

void Withdraw(REFCLSID classId) {
    std::optional<Offer> offer = TakeOffer(classId);
    if (!offer) {
        return;
    }
    const Handle thread(::OpenThread(SYNCHRONIZE, FALSE, offer->hostThreadNumber));
    PostQuitToThread(offer->hostThreadNumber);
    // When the thread leaves its apartment, objects of this thread may be released.
    WaitFor(thread.Get());
    offer->hostThread.join();
}

}  // namespace

void OfferClass(REFCLSID classId, ClassFactory factory, std::u16string_view /*server*/) {
    Withdraw(classId);
    if (!factory) {
        return;
    }
    std::promise<std::uint32_t> offered;
    std::future<std::uint32_t> started = offered.get_future();
    std::thread thread(
        [&offered, id = classId, factory = std::move(factory)] { ServeClass(id, factory, offered); });
    const std::uint32_t number = started.get();
    if (number == 0) {
        thread.join();
        throw std::runtime_error("the system does not offer the host's class to clients");
    }
    const std::lock_guard guard(Offers().lock);
    Offers().offers.push_back({classId, std::move(thread), number});
}

std::uint32_t CurrentThreadNumber() {
    CurrentThreadQueue();
    return ::GetCurrentThreadId();
}

bool PostToThread(std::uint32_t threadNumber, std::function<void()> work) {
    const std::lock_guard guard(Queues().lock);
    const auto found = Queues().queues.find(threadNumber);
    if (found == Queues().queues.end()) {
        return false;
    }
    found->second->works.push_back(std::move(work));
    ::PostMessageW(found->second->window, kWorkMessage, 0, 0);
    return true;
}

bool PostQuitToThread(std::uint32_t threadNumber) {
    return ::PostThreadMessageW(threadNumber, WM_QUIT, 0, 0) != FALSE;
}

bool CallOnThread(std::uint32_t threadNumber, const std::function<void()>& work) {
    if (threadNumber == ::GetCurrentThreadId()) {
        work();
        return true;
    }
    const Handle ended(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    bool served = false;
    // Sets the event when the queue gives the work up, whether it has run or not.
    std::shared_ptr<void> signal(ended.Get(), [](HANDLE event) { ::SetEvent(event); });
    if (!PostToThread(threadNumber, [&work, &served, signal] {
            work();
            served = true;
        })) {
        return false;
    }
    signal.reset();
    WaitFor(ended.Get());
    return served;
}

}  // namespace ventrix::platform
