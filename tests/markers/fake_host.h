// A host that answers client calls for the tests of this room: it notes each call and does what the test
// says.
#pragma once

#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bridge/connection.h"
#include "bridge/contract/method_table.h"

class FakeHost {
  public:
    FakeHost() {
        using namespace ventrix;
        clientTable_.Set<InvokeClientMethod>(&InvokeClient);
        clientTable_.Set<ReadStringPropMethod>(&ReadStringProp);
        valueTable_.Set<InvokeClientForValuesMethod>(&InvokeClientForValues);
        clientSide_ = {clientTable_.Slots(), this};
        valueSide_ = {valueTable_.Slots(), this};
        Side(InvokeClientMethod::interfaceNumber) = clientSide_.AsUnknown();
        Side(InvokeClientForValuesMethod::interfaceNumber) = valueSide_.AsUnknown();
    }
    ~FakeHost() {
        Side(ventrix::InvokeClientMethod::interfaceNumber) = nullptr;
        Side(ventrix::InvokeClientForValuesMethod::interfaceNumber) = nullptr;
    }
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    std::vector<std::string> calls;  ///< "client: command", in order.
    std::string folder;  ///< The installation folder; the host has no such text while it is empty.
    std::function<void(const std::string& command)> onCommand;
    std::function<std::vector<std::string>(const std::string& command)> onQuestion;  ///< The answer's texts.

  private:
    static ventrix::IUnknown*& Side(unsigned number) {
        return ventrix::connection.hostInterfaces[number - 1];
    }
    static FakeHost& Self(void* side) {
        return *static_cast<FakeHost*>(static_cast<ventrix::HostSide*>(side)->object);
    }

    static char* TaskText(const std::string& text) {
        char* const copy = static_cast<char*>(ventrix::CoTaskMemAlloc(text.size() + 1));
        std::memcpy(copy, text.c_str(), text.size() + 1);
        return copy;
    }

    static ventrix::HRESULT InvokeClient(void* side, const char* clientName, const char* command,
                                         std::int32_t* status, std::int32_t* answer) {
        FakeHost& self = Self(side);
        self.calls.push_back(std::string(clientName) + ": " + command);
        if (self.onCommand)
            self.onCommand(command);
        *status = *answer = 0;
        return ventrix::S_OK;
    }

    static ventrix::HRESULT ReadStringProp(void* side, std::uint32_t, std::uint32_t,
                                           const ventrix::Q_PropIdent*, std::int32_t* status, char** text) {
        FakeHost& self = Self(side);
        *status = 0;
        *text = self.folder.empty() ? nullptr : TaskText(self.folder);
        return ventrix::S_OK;
    }

    static ventrix::HRESULT InvokeClientForValues(void* side, const char* clientName, const char* command,
                                                  std::int32_t* status, ventrix::Q_ValueList* answer) {
        FakeHost& self = Self(side);
        self.calls.push_back(std::string(clientName) + ": " + command);
        const std::vector<std::string> texts =
            self.onQuestion ? self.onQuestion(command) : std::vector<std::string>{};
        *status = 0;
        answer->count = static_cast<std::uint32_t>(texts.size());
        answer->items = nullptr;
        if (texts.empty())
            return ventrix::S_OK;
        answer->items =
            static_cast<ventrix::Q_Value*>(ventrix::CoTaskMemAlloc(texts.size() * sizeof(ventrix::Q_Value)));
        for (std::size_t i = 0; i < texts.size(); ++i) {
            answer->items[i] = {};
            answer->items[i].tag = ventrix::Q_TextTag;
            answer->items[i].text = TaskText(texts[i]);
        }
        return ventrix::S_OK;
    }

    ventrix::HostMethodTable clientTable_, valueTable_;
    ventrix::HostSide clientSide_{}, valueSide_{};
};
