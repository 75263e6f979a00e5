#include "request/reply.h"

#include "bridge/host/operations.h"
#include "bridge/host/values.h"
#include "kit/memory.h"

namespace ventrix {

namespace {

Q_Value IntegerValue(std::int32_t number) {
    Q_Value value = {};
    value.tag = kIntegerTag;
    value.number = number;
    return value;
}

Q_Value TextValue(const char* text) {
    Q_Value value = {};
    value.tag = kTextTag;
    value.text = Q_CopyTextOrEmpty(text);
    return value;
}

}  // namespace

void SendReply(std::int32_t status, const char* firstText, const char* secondText) {
    Q_ValueList list = {3, static_cast<Q_Value*>(Q_Calloc(3, sizeof(Q_Value), kMustSucceed))};
    list.items[0] = IntegerValue(status);
    list.items[1] = TextValue(firstText);
    list.items[2] = TextValue(secondText);
    Q_ValueList back = Q_ApiSendCallReply(&list);
    Q_ApiFreeValueList(&back);
    Q_ApiFreeValueList(&list);
}

}  // namespace ventrix
