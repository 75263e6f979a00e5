#include "platform/posix/activation.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/com_runtime.h"
#include "platform/posix/apartment.h"

namespace ventrix::platform {
namespace {

struct Offer {
    CLSID classId;
    std::u16string server;
    ClassFactory factory;
};

struct OfferTable {
    std::mutex lock;
    std::vector<Offer> offers;
};

/// Never destroyed: an object that is still offered at the end of the process is not released into its ruins.
OfferTable& Offers() {
    static auto& table = *new OfferTable;
    return table;
}

ClassFactory FindFactory(REFCLSID classId, std::u16string_view server) {
    OfferTable& table = Offers();
    const std::lock_guard guard(table.lock);
    for (const Offer& offer : table.offers) {
        if (offer.classId == classId && offer.server == server) {
            return offer.factory;
        }
    }
    return {};
}

bool IsKnownServer(std::u16string_view server) {
    OfferTable& table = Offers();
    const std::lock_guard guard(table.lock);
    return server.empty() || std::any_of(table.offers.begin(), table.offers.end(),
                                         [&](const Offer& offer) { return offer.server == server; });
}

HRESULT Activate(REFCLSID classId, IUnknown* outer, std::u16string_view server, REFIID interfaceId,
                 void** object) {
    if (CurrentApartment().entries == 0) {
        return CO_E_NOTINITIALIZED;
    }
    if (outer != nullptr) {
        return CLASS_E_NOAGGREGATION;
    }
    if (!IsKnownServer(server)) {
        return RPC_S_SERVER_UNAVAILABLE_RESULT;
    }
    const ClassFactory factory = FindFactory(classId, server);
    return factory ? factory(interfaceId, object) : REGDB_E_CLASSNOTREG;
}

/// Asks the object for every interface of the records. How many it has.
DWORD QueryAll(IUnknown* object, DWORD count, MULTI_QI* results) {
    DWORD met = 0;
    for (MULTI_QI* query = results; query != results + count; ++query) {
        void* found = nullptr;
        query->hr = object->QueryInterface(*query->pIID, &found);
        query->pItf = static_cast<IUnknown*>(found);
        met += SUCCEEDED(query->hr) ? 1u : 0u;
    }
    return met;
}

}  // namespace

void OfferClass(REFCLSID classId, ClassFactory factory, std::u16string_view server) {
    std::vector<Offer> withdrawn;  // Destroyed after the lock is open, since a release may call back.
    OfferTable& table = Offers();
    const std::lock_guard guard(table.lock);
    const auto isSame = [&](const Offer& offer) {
        return offer.classId == classId && offer.server == server;
    };
    const auto same = std::stable_partition(table.offers.begin(), table.offers.end(), std::not_fn(isSame));
    std::move(same, table.offers.end(), std::back_inserter(withdrawn));
    table.offers.erase(same, table.offers.end());
    if (factory) {
        table.offers.push_back({classId, std::u16string(server), std::move(factory)});
    }
}

ClassFactory RunningObject(IUnknown* object) {
    object->AddRef();
    const std::shared_ptr<IUnknown> held(object, [](IUnknown* last) { last->Release(); });
    return [held](REFIID interfaceId, void** out) { return held->QueryInterface(interfaceId, out); };
}

HRESULT CreateInstanceOnServer(REFCLSID classId, IUnknown* outer, DWORD /*context*/, COSERVERINFO* server,
                               DWORD count, MULTI_QI* results) {
    if (count == 0 || results == nullptr) {
        return E_INVALIDARG;
    }
    std::for_each(results, results + count, [](MULTI_QI& query) { query.pItf = nullptr; });
    const OLECHAR* name = server == nullptr ? nullptr : server->pwszName;
    void* found = nullptr;
    const HRESULT activation = Activate(classId, outer, name == nullptr ? u"" : name, IID_IUnknown, &found);
    if (FAILED(activation)) {
        std::for_each(results, results + count, [&](MULTI_QI& query) { query.hr = activation; });
        return activation;
    }
    auto* object = static_cast<IUnknown*>(found);
    const DWORD met = QueryAll(object, count, results);
    object->Release();
    if (met == count) {
        return S_OK;
    }
    return met == 0 ? E_NOINTERFACE : CO_S_NOTALLINTERFACES;
}

}  // namespace ventrix::platform

namespace ventrix {

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD /*context*/, REFIID interfaceId,
                         void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    return platform::Activate(classId, outer, u"", interfaceId, object);
}

}  // namespace ventrix
