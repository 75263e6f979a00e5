#include "bridge/host/properties.h"

#include <iterator>

#include "bridge/bridge_test.h"
#include "bridge/open_script.h"
#include "kit/memory.h"

namespace ventrix::test {
namespace {

class PropertiesTest : public BridgeTest {};

void SetNumber(Q_PropList* list, std::int32_t number, std::int32_t to) {
    const Q_Value value = InKit(Number(to));
    Q_ApiSetProp(list, number, &value);
}

TEST_F(PropertiesTest, FirstRowWithANumberIsFound) {
    EXPECT_EQ(Q_ApiFindProp(nullptr, 1), -4);
    Q_PropList list = {};
    EXPECT_EQ(Q_ApiFindProp(&list, 1), -4);
    SetNumber(&list, 5, 50);
    SetNumber(&list, 7, 70);
    SetNumber(&list, 9, 90);
    list.items[2].ident.number = 7;
    EXPECT_EQ(Q_ApiFindProp(&list, 7), 1);
    EXPECT_EQ(Q_ApiFindProp(&list, 9), -4);
    list.items[2].ident = {0, Q_CopyTextOrEmpty("name")};
    EXPECT_EQ(Q_ApiFindProp(&list, 0), 2);
    Q_ApiFreePropList(&list);
}

TEST_F(PropertiesTest, SettingReplacesInPlaceAndFreesTheFormerValue) {
    Q_PropList list = {};
    Q_ApiSetPropString(&list, 2, "old");
    SetNumber(&list, 3, 30);
    Q_ApiSetPropString(&list, 2, "new");
    EXPECT_EQ(list.count, 2U);
    EXPECT_STREQ(list.items[0].value.text, "new");
    Q_ApiSetPropString(&list, 2, nullptr);
    EXPECT_STREQ(list.items[0].value.text, "");

    // A value of the list itself.
    Q_ApiSetPropString(&list, 2, "again");
    Q_ApiSetProp(&list, 2, &list.items[0].value);
    EXPECT_STREQ(list.items[0].value.text, "again");

    // A named row is found as number 0 and loses its name.
    list.items[1].ident = {0, Q_CopyTextOrEmpty("name")};
    SetNumber(&list, 0, 1);
    EXPECT_EQ(list.items[1].ident.name, nullptr);
    EXPECT_EQ(list.items[1].value.number, 1);
    Q_ApiFreePropList(&list);
    EXPECT_EQ(list.count, 0U);
    EXPECT_EQ(list.items, nullptr);
    Q_ApiFreePropList(nullptr);
}

TEST_F(PropertiesTest, GrowingListKeepsItsOrder) {
    Q_PropList list = {};
    for (std::int32_t number = 1; number <= 40; ++number) {
        SetNumber(&list, number, -number);
    }
    ASSERT_EQ(list.count, 40U);
    for (std::int32_t number = 1; number <= 40; ++number) {
        EXPECT_EQ(Q_ApiFindProp(&list, number), number - 1);
        EXPECT_EQ(list.items[number - 1].value.number, -number);
    }
    FailKitAllocation(1);
    SetNumber(&list, 41, 0);
    EXPECT_EQ(list.count, 40U) << "unchanged if memory runs out";
    Q_ApiFreePropList(&list);
}

TEST_F(PropertiesTest, OnlyNamesOfRowsWithoutNumberAreCopied) {
    char name[] = "name";
    Q_Prop rows[] = {{{0, name}, InKit(Number(1))}, {{5, name}, InKit(Text("five"))}};
    const Q_PropList list = {2, rows};
    Q_PropList copy = {};
    Q_CopyPropListWith(&copy, &list, CoTaskMemAlloc);
    EXPECT_STREQ(copy.items[0].ident.name, "name");
    EXPECT_EQ(copy.items[1].ident.name, nullptr);
    EXPECT_STREQ(copy.items[1].value.text, "five");
    Q_ReleasePropListWith(&copy, CoTaskMemFree);
    EXPECT_EQ(copy.count, 0U);
    Q_ApiFreeValue(&rows[1].value);
}

TEST_F(PropertiesTest, DefaultOpenScriptHasTheRowsOfTheContract) {
    Q_PropList script = Q_ApiDefaultOpenScript();
    EXPECT_EQ(script.count, 54U);
    std::string rows;
    for (const std::string& row : Print(script)) {
        rows += row + " ";
    }
    EXPECT_EQ(
        rows,
        "1=0 5=1 7=0 8=0 33=0 43=0 9=0 10=0 11=0 13=0 2=0 14=0 15=0 16=12 17=5 18=0 19=0 20=0 21=5 22=0 "
        "23=0 28=0 24=0 25=0 32=0 26=1 27=0 29=0 6=0 30=0 42=0 4=0 3=0 12=0 31=null 36=12 35=12 52=12 "
        "34=null 37=0 38=null 39=null 40=0 41=0 44=0 45=0 46=0 47=0 48=0 49=0 50=0 51=0 53=-1 54=0 ");
    Q_ApiFreePropList(&script);
    EXPECT_EQ(script.count, 0U);
    FailKitAllocation(1);
    script = Q_ApiDefaultOpenScript();
    EXPECT_EQ(script.count, 0U);
    EXPECT_EQ(Q_ApiFindProp(&script, 5), -4);
}

}  // namespace
}  // namespace ventrix::test
