#include "bridge/values.h"

#include <cstring>

#include "bridge/bridge_test.h"
#include "kit/memory.h"

namespace ventrix::test {
namespace {

class ValuesTest : public BridgeTest {};

template <class Element>
Element* NewArray(std::uint32_t count) {
    return static_cast<Element*>(Q_Calloc(count, sizeof(Element), Q_MustSucceed));
}

Q_StringList Strings(const char* first, const char* second) {
    Q_StringList list = {2, NewArray<char*>(2)};
    list.items[0] = Q_CopyTextOrEmpty(first);
    list.items[1] = second == nullptr ? nullptr : Q_CopyTextOrEmpty(second);
    return list;
}

Q_Value ArrayValue(std::uint32_t tag, std::uint32_t count, void* items) {
    Q_Value value = {};
    value.tag = tag;
    value.array = {count, items};
    return value;
}

Q_Value PlainArrayValue(std::uint32_t tag, std::uint32_t elementSize) {
    auto* bytes = NewArray<unsigned char>(3 * elementSize);
    for (std::uint32_t i = 0; i < 3 * elementSize; ++i) {
        bytes[i] = static_cast<unsigned char>(i + 1);
    }
    return ArrayValue(tag, 3, bytes);
}

Q_Value StringsValue() {
    Q_Value value = {};
    value.tag = 6;
    value.strings = Strings("one", nullptr);
    return value;
}

Q_Value Tag8Value() {
    auto* element = NewArray<Q_Tag8Element>(1);
    *element = {{1, 2, 3, 4, 5, 6, 7, 8}, Q_CopyTextOrEmpty("eight"), {9}};
    return ArrayValue(8, 1, element);
}

Q_Value Tag17Value() {
    auto* element = NewArray<Q_Tag17Element>(1);
    *element = {Q_CopyTextOrEmpty("seventeen"), {1, 2},  Strings("a", "b"),
                Strings("c", nullptr),          nullptr, Q_CopyTextOrEmpty("third")};
    return ArrayValue(17, 1, element);
}

Q_Value Tag18Value() {
    auto* element = NewArray<Q_Tag18Element>(1);
    *element = {Q_CopyTextOrEmpty("eighteen"), Strings("a", "b"), {7}};
    return ArrayValue(18, 1, element);
}

Q_Value Tag21Value() {
    auto* element = NewArray<Q_Tag21Element>(1);
    *element = {nullptr, Strings("a", "b"), {0, nullptr}, {7}};
    return ArrayValue(21, 1, element);
}

Q_Value Tag22Value() {
    auto* element = NewArray<Q_Tag22Element>(1);
    *element = {{7}, Strings("a", "b")};
    return ArrayValue(22, 1, element);
}

Q_Value RecordValue() {
    Q_Value value = {};
    value.tag = 19;
    value.record = std::memset(NewArray<char>(Q_RecordSize), 7, Q_RecordSize);
    return value;
}

Q_Value BytesValue(std::uint32_t tag) {
    Q_Value value = {};
    value.tag = tag;
    std::memset(value.bytes, 0x5A, sizeof value.bytes);
    return value;
}

// Every tag with a rich payload; a number is the blocks that a copy takes from the boundary's allocator.
struct Sample {
    Q_Value value;
    std::size_t blocks;
};

std::vector<Sample> Samples() {
    return {
        {BytesValue(0), 0},
        {Number(-7), 0},
        {Text("text"), 1},
        {PlainArrayValue(5, 4), 1},
        {StringsValue(), 2},
        {PlainArrayValue(7, 8), 1},
        {Tag8Value(), 2},
        {BytesValue(9), 0},
        {BytesValue(10), 0},
        {BytesValue(11), 0},
        {PlainArrayValue(12, 8), 1},
        {PlainArrayValue(13, 4), 1},
        {PlainArrayValue(14, 1), 1},
        {PlainArrayValue(15, 4), 1},
        {BytesValue(16), 0},
        {Tag17Value(), 8},
        {Tag18Value(), 5},
        {RecordValue(), 1},
        {Nested({Nested({Text("deep"), Tag8Value()}), Number(1)}), 7},
        {Tag21Value(), 5},  // The empty string list has a block too.
        {Tag22Value(), 4},
        {BytesValue(23), 0},
        {BytesValue(0xFFFFFFFF), 0},
    };
}

// The same bytes all over, with pointers followed: a flat print of what a value holds.
std::string Print(const Q_Value& value);

std::string Print(const char* text) {
    return text == nullptr ? "null" : text;
}

std::string Print(const Q_StringList& list) {
    std::string line = "(";
    for (std::uint32_t i = 0; i < list.count; ++i) {
        line += Print(list.items[i]) + " ";
    }
    return line + ")";
}

std::string PrintBytes(const void* bytes, std::size_t size) {
    std::string line;
    for (std::size_t i = 0; i < size; ++i) {
        line += std::to_string(static_cast<const unsigned char*>(bytes)[i]) + ",";
    }
    return line;
}

std::string PrintRecords(const Q_Value& value) {
    switch (value.tag) {
        case 8: {
            const auto* element = static_cast<Q_Tag8Element*>(value.array.items);
            return PrintBytes(element->head, 8) + Print(element->text) + PrintBytes(element->tail, 8);
        }
        case 17: {
            const auto* element = static_cast<Q_Tag17Element*>(value.array.items);
            return Print(element->text) + PrintBytes(element->middle, 16) + Print(element->firstStrings) +
                   Print(element->secondStrings) + Print(element->secondText) + Print(element->thirdText);
        }
        case 18: {
            const auto* element = static_cast<Q_Tag18Element*>(value.array.items);
            return Print(element->text) + Print(element->strings) + PrintBytes(element->tail, 8);
        }
        case 21: {
            const auto* element = static_cast<Q_Tag21Element*>(value.array.items);
            return Print(element->text) + Print(element->firstStrings) + Print(element->secondStrings) +
                   PrintBytes(element->tail, 8);
        }
        default: {
            const auto* element = static_cast<Q_Tag22Element*>(value.array.items);
            return PrintBytes(element->head, 8) + Print(element->strings);
        }
    }
}

std::string PrintList(const Q_ValueList& list) {
    std::string line = "[";
    for (std::uint32_t i = 0; i < list.count; ++i) {
        line += Print(list.items[i]) + " ";
    }
    return line + "]";
}

std::string Print(const Q_Value& value) {
    const std::string tag = std::to_string(value.tag) + ":";
    switch (value.tag) {
        case 1:
            return tag + std::to_string(value.number);
        case 3:
            return tag + Print(value.text);
        case 5:
        case 13:
        case 15:
            return tag + PrintBytes(value.array.items, 4UL * value.array.count);
        case 6:
            return tag + Print(value.strings);
        case 7:
        case 12:
            return tag + PrintBytes(value.array.items, 8UL * value.array.count);
        case 14:
            return tag + PrintBytes(value.array.items, value.array.count);
        case 8:
        case 17:
        case 18:
        case 21:
        case 22:
            return tag + std::to_string(value.array.count) + PrintRecords(value);
        case 19:
            return tag + PrintBytes(value.record, Q_RecordSize);
        case 20:
            return tag + PrintList(*value.list);
        default:
            return tag + PrintBytes(value.bytes, sizeof value.bytes);
    }
}

std::string WithEmptyForNull(std::string text) {
    for (auto at = text.find("null"); at != std::string::npos; at = text.find("null")) {
        text.erase(at, 4);
    }
    return text;
}

bool IsUndefined(std::uint32_t tag) {
    return tag == 0 || tag == 11 || tag == 16 || tag > 22;
}

TEST_F(ValuesTest, KitCopiesAreEqualButForNullTexts) {
    for (Sample& sample : Samples()) {
        SCOPED_TRACE(sample.value.tag);
        Q_Value copy = Q_ApiCopyValue(&sample.value);
        const std::string expected = IsUndefined(sample.value.tag) ? Print([&] {
            Q_Value bare = {};
            bare.tag = sample.value.tag;
            return bare;
        }())
                                                                   : WithEmptyForNull(Print(sample.value));
        EXPECT_EQ(WithEmptyForNull(Print(copy)), expected);
        EXPECT_EQ(Print(copy).find("null"), std::string::npos);
        Q_ApiFreeValue(&copy);
        Q_ApiFreeValue(&sample.value);
    }
}

TEST_F(ValuesTest, BoundaryCopiesAreExactAndTakeTheirBlocksFromTheFunction) {
    for (Sample& sample : Samples()) {
        SCOPED_TRACE(sample.value.tag);
        const BlockCounts before = LiveBlocks();
        Q_Value copy = {};
        Q_CopyValueWith(&copy, &sample.value, CoTaskMemAlloc);
        EXPECT_EQ(Print(copy), Print(sample.value));
        EXPECT_EQ(LiveBlocks().task - before.task, sample.blocks);
        EXPECT_EQ(LiveBlocks().kit, before.kit);
        Q_ReleaseValueWith(&copy, CoTaskMemFree);
        EXPECT_EQ(LiveBlocks().task, before.task);
        Q_ApiFreeValue(&sample.value);
    }
}

TEST_F(ValuesTest, FreeingClearsWhatWasOwnedAndNothingElse) {
    for (Sample& sample : Samples()) {
        SCOPED_TRACE(sample.value.tag);
        const Q_Value before = sample.value;
        Q_ApiFreeValue(&sample.value);
        EXPECT_EQ(sample.value.tag, before.tag);
        if (sample.blocks == 0) {
            EXPECT_EQ(std::memcmp(&sample.value, &before, sizeof before), 0);
        } else {
            EXPECT_EQ(sample.value.text == nullptr || sample.value.array.items == nullptr, true);
            Q_ApiFreeValue(&sample.value);
        }
    }
}

TEST_F(ValuesTest, NullTextsListsAndRecords) {
    Q_Value text = {};
    text.tag = Q_TextTag;
    Q_Value copy = {};
    Q_CopyValueWith(&copy, &text, CoTaskMemAlloc);
    EXPECT_EQ(copy.text, nullptr);
    copy = Q_ApiCopyValue(&text);
    EXPECT_STREQ(copy.text, "");
    Q_ApiFreeValue(&copy);
    for (const std::uint32_t tag : {19U, 20U}) {
        Q_Value empty = {};
        empty.tag = tag;
        EXPECT_EQ(Q_ApiCopyValue(&empty).record, nullptr);
        Q_ApiFreeValue(&empty);
    }
    Q_ApiFreeValue(nullptr);
    Q_ApiFreeValueList(nullptr);
    Q_ApiFreeStringList(nullptr);
}

// A count without an array stands for zeroed elements within the kit; across the boundary it is an empty
// list.
TEST_F(ValuesTest, CountWithoutArray) {
    Q_Value value = ArrayValue(18, 2, nullptr);
    Q_Value copy = Q_ApiCopyValue(&value);
    ASSERT_NE(copy.array.items, nullptr);
    EXPECT_EQ(copy.array.count, 2U);
    EXPECT_EQ(static_cast<Q_Tag18Element*>(copy.array.items)[1].text, nullptr);
    Q_ApiFreeValue(&copy);
    Q_ApiFreeValue(&value);

    const Q_ValueList broken = {3, nullptr};
    Q_ValueList list = {};
    Q_CopyValueListWith(&list, &broken, CoTaskMemAlloc);
    EXPECT_EQ(list.count, 0U);
    EXPECT_NE(list.items, nullptr) << "a list of none still has its block";
    Q_ReleaseValueListWith(&list, CoTaskMemFree);
}

TEST_F(ValuesTest, ListsClearTheirHeads) {
    Q_ValueList list = Values({Text("a"), Nested({Text("b")})});
    Q_ApiFreeValueList(&list);
    EXPECT_EQ(list.items, nullptr);
    EXPECT_EQ(list.count, 2U) << "the count stays";
    Q_ApiFreeValueList(&list);

    Q_StringList strings = Strings("a", nullptr);
    Q_StringList copy = {};
    Q_CopyStringListWith(&copy, &strings, CoTaskMemAlloc);
    EXPECT_EQ(Print(copy), Print(strings));
    Q_ReleaseStringListWith(&copy, CoTaskMemFree);
    Q_ApiFreeStringList(&strings);
    EXPECT_EQ(strings.items, nullptr);
    EXPECT_EQ(strings.count, 0U);
}

// Each allocation of a deep copy fails once; what was copied up to there must still be whole enough to free.
TEST_F(ValuesTest, SurvivesEveryFailedAllocation) {
    Q_Value value = Nested({Tag17Value(), Nested({Text("deep"), StringsValue()}), RecordValue()});
    for (int n = 1; n <= 24; ++n) {
        SCOPED_TRACE(n);
        FailKitAllocation(n);
        Q_Value copy = Q_ApiCopyValue(&value);
        FailKitAllocation(n);
        Q_Value boundary = {};
        Q_CopyValueWith(&boundary, &value, Q_KitAlloc);
        FailKitAllocation(0);
        Q_ApiFreeValue(&copy);
        Q_ApiFreeValue(&boundary);
    }
    Q_ApiFreeValue(&value);
    Q_Value numbers = PlainArrayValue(5, 4);
    FailKitAllocation(1);
    const Q_Value failed = Q_ApiCopyValue(&numbers);
    EXPECT_EQ(failed.array.items, nullptr);
    EXPECT_EQ(failed.array.count, 3U);
    FailKitAllocation(1);
    Q_Value unread = {};
    Q_CopyValueWith(&unread, &numbers, Q_KitAlloc);
    EXPECT_EQ(unread.array.count, 0U) << "a reader across the boundary must not go astray";
    Q_ApiFreeValue(&numbers);
}

}  // namespace
}  // namespace ventrix::test
