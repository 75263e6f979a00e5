#include "bridge/client_description.h"

#include "bridge/properties.h"
#include "platform/module.h"

namespace ventrix {
namespace {

constexpr char kLanguageBlock[] = "040904b0";

struct DescriptionKey {
    std::int32_t number;
    const char* key;
};

constexpr DescriptionKey kKeys[] = {
    {2, "ClientName"},      {3, "ClientType"},       {4, "FileDescription"}, {5, "ClientProducts"},
    {6, "ClientFacet"},     {7, "ClientFormatId"},   {8, "ClientVendor"},    {9, "ClientSuffix"},
    {10, "ClientInFormat"}, {11, "ClientOutFormat"},
};

}  // namespace

bool ReadClientDescription(void* module, Q_PropList* description) {
    if (!platform::HasVersionBlock(module)) {
        return false;
    }
    for (const DescriptionKey& key : kKeys) {
        const auto text = platform::VersionBlockText(module, kLanguageBlock, key.key);
        if (text) {
            Q_ApiSetPropString(description, key.number, text->c_str());
        }
    }
    return true;
}

}  // namespace ventrix
