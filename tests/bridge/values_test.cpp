#include "bridge/host/values.h"

#include <algorithm>
#include <cstring>

#include "bridge/bridge_test.h"
#include "kit/memory.h"

namespace ventrix::test {
namespace {

class ValuesTest : public BridgeTest {};

constexpr std::uint32_t kStringsTag = 6, kRecordTag = 19;

// The fields of an element by tag of the array: t is a string, s a string list, a digit that many bytes.
const std::map<std::uint32_t, std::string> kElementFields = {
    {5, "4"},  {7, "8"},        {8, "8t8"},  {12, "8"},    {13, "4"}, {14, "1"},
    {15, "4"}, {17, "t88sstt"}, {18, "ts8"}, {21, "tss8"}, {22, "8s"}};

constexpr std::uint32_t kAllTags[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,        12,
                                      13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 0xFFFFFFFF};

template <class Element>
Element* NewArray(std::uint32_t count) {
    return static_cast<Element*>(Q_Calloc(count, sizeof(Element), kMustSucceed));
}

// Strings and bytes that all differ; every third string is null.
int filled = 0;

char* NextText() {
    return ++filled % 3 == 0 ? nullptr : Q_CopyTextOrEmpty(("text " + std::to_string(filled)).c_str());
}

Q_StringList NextStrings() {
    Q_StringList list = {2, NewArray<char*>(2)};
    list.items[0] = NextText();
    list.items[1] = NextText();
    return list;
}

template <class Field>
void Put(unsigned char*& at, Field field) {
    std::memcpy(at, &field, sizeof field);
    at += sizeof field;
}

template <class Field>
Field Get(const unsigned char*& at) {
    Field field;
    std::memcpy(&field, at, sizeof field);
    at += sizeof field;
    return field;
}

void PutFields(const std::string& fields, unsigned char*& at) {
    for (const char field : fields) {
        if (field == 't') {
            Put(at, NextText());
        } else if (field == 's') {
            Put(at, NextStrings());
        } else {
            at = std::fill_n(at, field - '0', static_cast<unsigned char>(++filled));
        }
    }
}

// A value with this tag in kit memory. Its payload has all parts that the tag allows; arrays have two
// elements.
Q_Value Rich(std::uint32_t tag) {
    Q_Value value = {};
    std::memset(value.bytes, 0x5A, sizeof value.bytes);
    value.tag = tag;
    if (tag == kTextTag) {
        value.text = Q_CopyTextOrEmpty("text");
    } else if (tag == kStringsTag) {
        value.strings = NextStrings();
    } else if (tag == kRecordTag) {
        value.record = std::memset(NewArray<char>(kRecordSize), 7, kRecordSize);
    } else if (tag == kListTag) {
        value = InKit(Fields({Fields({Number(0), Text("deep"), Number(1)}), Number(0), Number(0)}));
        value.list->items[0].list->items[0] = Rich(17);
        value.list->items[1] = Rich(kStringsTag);
        value.list->items[2] = Rich(kRecordTag);
    } else if (kElementFields.contains(tag)) {
        value.array = {2, NewArray<unsigned char>(2 * 72)};
        auto* at = static_cast<unsigned char*>(value.array.items);
        PutFields(kElementFields.at(tag) + kElementFields.at(tag), at);
    }
    return value;
}

std::string DumpBytes(const void* bytes, std::size_t size) {
    std::string line;
    for (std::size_t i = 0; i < size; ++i) {
        line += std::to_string(static_cast<const unsigned char*>(bytes)[i]) + ",";
    }
    return line;
}

std::string DumpText(const char* text) {
    return text == nullptr ? "null" : text;
}

std::string DumpStrings(const Q_StringList& list) {
    std::string line = "(";
    for (std::uint32_t i = 0; i < list.count; ++i) {
        line += DumpText(list.items[i]) + " ";
    }
    return line + ")";
}

std::string DumpFields(const std::string& fields, const unsigned char*& at) {
    std::string line;
    for (const char field : fields) {
        if (field == 't') {
            line += DumpText(Get<char*>(at));
        } else if (field == 's') {
            line += DumpStrings(Get<Q_StringList>(at));
        } else {
            line += DumpBytes(at, static_cast<std::size_t>(field - '0'));
            at += field - '0';
        }
    }
    return line;
}

// Everything that a value holds, pointers followed.
std::string Dump(const Q_Value& value) {
    std::string line = std::to_string(value.tag) + ":";
    if (value.tag == kTextTag) {
        return line + DumpText(value.text);
    } else if (value.tag == kStringsTag) {
        return line + DumpStrings(value.strings);
    } else if (value.tag == kRecordTag) {
        return line + DumpBytes(value.record, kRecordSize);
    } else if (value.tag == kListTag) {
        for (std::uint32_t i = 0; i < value.list->count; ++i) {
            line += "[" + Dump(value.list->items[i]) + "]";
        }
        return line;
    } else if (kElementFields.contains(value.tag)) {
        const auto* at = static_cast<const unsigned char*>(value.array.items);
        for (std::uint32_t i = 0; i < value.array.count; ++i) {
            line += DumpFields(kElementFields.at(value.tag), at) + "|";
        }
        return line;
    }
    const bool isNumber = value.tag == kIntegerTag || value.tag == 2 || value.tag == 4;
    return line + DumpBytes(value.bytes, isNumber ? sizeof value.number : sizeof value.bytes);
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

TEST_F(ValuesTest, KitCopyEqualsItsSourceExceptForNullStrings) {
    for (const std::uint32_t tag : kAllTags) {
        Q_Value value = Rich(tag);
        Q_Value copy = Q_ApiCopyValue(&value);
        Q_Value bare = {};
        bare.tag = tag;
        EXPECT_EQ(Dump(copy), IsUndefined(tag) ? Dump(bare) : WithEmptyForNull(Dump(value))) << tag;
        Q_ApiFreeValue(&copy);
        Q_ApiFreeValue(&value);
    }
}

TEST_F(ValuesTest, BoundaryCopyIsExactAndUsesTheGivenAllocator) {
    for (const std::uint32_t tag : kAllTags) {
        SCOPED_TRACE(tag);
        const std::size_t before = LiveBlocks().kit;
        Q_Value value = Rich(tag);
        const std::size_t blocks = LiveBlocks().kit - before;
        Q_Value copy = {};
        Q_CopyValueWith(&copy, &value, CoTaskMemAlloc);
        EXPECT_EQ(Dump(copy), Dump(value));
        EXPECT_EQ(LiveBlocks().task, blocks);
        EXPECT_EQ(LiveBlocks().kit, before + blocks);
        Q_ReleaseValueWith(&copy, CoTaskMemFree);
        EXPECT_EQ(LiveBlocks().task, 0U);
        Q_ApiFreeValue(&value);
    }
}

TEST_F(ValuesTest, FreeingClearsOnlyWhatTheValueOwns) {
    for (const std::uint32_t tag : kAllTags) {
        SCOPED_TRACE(tag);
        const std::size_t before = LiveBlocks().kit;
        Q_Value value = Rich(tag);
        const bool ownsBlocks = LiveBlocks().kit != before;
        const Q_Value whole = value;
        Q_ApiFreeValue(&value);
        EXPECT_EQ(value.tag, tag);
        EXPECT_EQ(LiveBlocks().kit, before);
        if (ownsBlocks) {
            EXPECT_TRUE(value.text == nullptr || value.array.items == nullptr);
            Q_ApiFreeValue(&value);
        } else {
            EXPECT_EQ(std::memcmp(&value, &whole, sizeof whole), 0);
        }
    }
}

TEST_F(ValuesTest, NullStringIsEmptyWithinTheKitOnly) {
    Q_Value text = {};
    text.tag = kTextTag;
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

// Within the kit it means zeroed elements.
TEST_F(ValuesTest, CountWithoutArrayIsAnEmptyListAtTheBoundary) {
    Q_Value value = {};
    value.tag = 18;
    value.array = {2, nullptr};
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
    EXPECT_NE(list.items, nullptr) << "an empty list is a block too";
    Q_ReleaseValueListWith(&list, CoTaskMemFree);
}

TEST_F(ValuesTest, FreedListsHaveNoArray) {
    Q_ValueList list = MakeList({Text("a"), Fields({Text("b")})}, Q_KitAlloc);
    Q_ApiFreeValueList(&list);
    EXPECT_EQ(list.items, nullptr);
    EXPECT_EQ(list.count, 2U) << "the count stays";
    Q_ApiFreeValueList(&list);

    Q_StringList strings = NextStrings();
    Q_StringList copy = {};
    Q_CopyStringListWith(&copy, &strings, CoTaskMemAlloc);
    EXPECT_EQ(DumpStrings(copy), DumpStrings(strings));
    Q_ReleaseStringListWith(&copy, CoTaskMemFree);
    Q_ApiFreeStringList(&strings);
    EXPECT_EQ(strings.items, nullptr);
    EXPECT_EQ(strings.count, 0U);
}

// Makes each allocation of a deep copy fail in turn. The partial copy must still be one that can be freed.
TEST_F(ValuesTest, CopyThatRunsOutOfMemoryCanBeFreed) {
    Q_Value value = Rich(kListTag);
    for (int n = 1; n <= 40; ++n) {
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
    Q_Value numbers = Rich(5);
    FailKitAllocation(1);
    const Q_Value failed = Q_ApiCopyValue(&numbers);
    EXPECT_EQ(failed.array.items, nullptr);
    EXPECT_EQ(failed.array.count, 2U);
    FailKitAllocation(1);
    Q_Value unread = {};
    Q_CopyValueWith(&unread, &numbers, Q_KitAlloc);
    EXPECT_EQ(unread.array.count, 0U) << "the other side must not read past it";
    Q_ApiFreeValue(&numbers);
}

TEST_F(ValuesTest, ListsMayBeNestedDeeperThanTheStack) {
    Q_Value value = {};
    for (int level = 0; level < 100000; ++level) {
        auto* list = NewArray<Q_ValueList>(1);
        *list = {1, NewArray<Q_Value>(1)};
        list->items[0] = value;
        value.tag = kListTag;
        value.list = list;
    }
    Q_Value copy = Q_ApiCopyValue(&value);
    int levels = 0;
    for (const Q_Value* at = &copy; at->tag == kListTag; at = at->list->items) {
        ++levels;
    }
    EXPECT_EQ(levels, 100000);
    Q_ApiFreeValue(&value);
    Q_ApiFreeValue(&copy);
    EXPECT_EQ(copy.list, nullptr);
}

}  // namespace
}  // namespace ventrix::test
