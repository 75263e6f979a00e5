#include "platform/posix/activation.h"

#include <algorithm>
#include <cstddef>
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

/// Never destroyed: the destructor would release objects that are still offered when the process ends, after
/// what they depend on may be gone.
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

/// Queries the object for the interface of each record. Returns how many it has.
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
    // Destroyed after the lock is released, since the destructor of a factory may call back.
    std::vector<Offer> withdrawn;
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
namespace {

constexpr std::u16string_view kClassIdShape = u"{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";

int DigitValue(char16_t c) {
    if (c >= u'0' && c <= u'9') {
        return c - u'0';
    }
    if (c >= u'A' && c <= u'F') {
        return c - u'A' + 10;
    }
    return c >= u'a' && c <= u'f' ? c - u'a' + 10 : -1;
}

bool HasShape(std::u16string_view text) {
    if (text.size() != kClassIdShape.size()) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (kClassIdShape[i] == u'X' ? DigitValue(text[i]) < 0 : text[i] != kClassIdShape[i]) {
            return false;
        }
    }
    return true;
}

// The value of `count` digits from `at` on.
std::uint32_t Number(std::u16string_view text, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        value = value * 16 + static_cast<std::uint32_t>(DigitValue(text[at + i]));
    }
    return value;
}

}  // namespace

HRESULT CLSIDFromString(const OLECHAR* text, CLSID* id) {
    if (id == nullptr) {
        return E_INVALIDARG;
    }
    *id = {};
    if (text == nullptr) {
        return S_OK;
    }
    const std::u16string_view digits = text;
    if (!HasShape(digits)) {
        return CO_E_CLASSSTRING;
    }
    constexpr std::size_t kBytesAt[8] = {20, 22, 25, 27, 29, 31, 33, 35};
    id->Data1 = Number(digits, 1, 8);
    id->Data2 = static_cast<std::uint16_t>(Number(digits, 10, 4));
    id->Data3 = static_cast<std::uint16_t>(Number(digits, 15, 4));
    for (std::size_t i = 0; i < 8; ++i) {
        id->Data4[i] = static_cast<std::uint8_t>(Number(digits, kBytesAt[i], 2));
    }
    return S_OK;
}

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD /*context*/, REFIID interfaceId,
                         void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    return platform::Activate(classId, outer, u"", interfaceId, object);
}

}  // namespace ventrix
