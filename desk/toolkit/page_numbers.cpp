#include "desk/toolkit/page_numbers.h"

#include <vector>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_document.h"

namespace ventrix::desk {
namespace {

struct Counter {
    const char* type;
    bool needsTitle;
    int count = 0;
};

bool IsNumberedItem(const xmlNode* node) {
    return HasType(node, "topic/li") && !HasType(node, "task/stepsection") &&
           HasType(node->parent, "topic/ol");
}

/// 1 for the first item of its list.
int PlaceInList(const xmlNode* item) {
    int place = 1;
    for (const xmlNode* node = item->prev; node != nullptr; node = node->prev) {
        place += IsNumberedItem(node) ? 1 : 0;
    }
    return place;
}

/// a to z, then aa, as browsers count.
std::string Letters(int number) {
    std::string letters;
    for (; number > 0; number = (number - 1) / 26) {
        letters.insert(letters.begin(), static_cast<char>('a' + (number - 1) % 26));
    }
    return letters;
}

std::string RomanNumeral(int number) {
    constexpr struct {
        int value;
        const char* numeral;
    } kNumerals[] = {{1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"}, {50, "l"},
                     {40, "xl"},  {10, "x"},   {9, "ix"},  {5, "v"},    {4, "iv"},  {1, "i"}};
    std::string text;
    for (const auto& row : kNumerals) {
        for (; number >= row.value; number -= row.value) {
            text += row.numeral;
        }
    }
    return text;
}

/// As the page shows it at this depth of ordered lists, from 0.
std::string Formatted(int number, std::size_t depth) {
    return depth % 3 == 0 ? std::to_string(number) : depth % 3 == 1 ? Letters(number) : RomanNumeral(number);
}

}  // namespace

void AddPageNumbers(xmlDoc* document) {
    Counter counters[] = {{"topic/fig", true}, {"topic/table", true}, {"topic/fn", false}};
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        for (Counter& counter : counters) {
            if (HasType(node, counter.type) &&
                (!counter.needsTitle || ChildOfType(node, "topic/title") != nullptr)) {
                xmlSetProp(node, Xml("page-number"), Xml(std::to_string(++counter.count).c_str()));
            }
        }
    }
}

std::string ItemNumber(const xmlNode* item) {
    std::vector<int> places;  // From the inside out.
    for (const xmlNode* node = item; node->type == XML_ELEMENT_NODE; node = node->parent) {
        if (IsNumberedItem(node)) {
            places.push_back(PlaceInList(node));
        }
    }
    std::string number;
    for (std::size_t depth = 0; depth < places.size(); ++depth) {
        number += (depth == 0 ? "" : ".") + Formatted(places[places.size() - 1 - depth], depth);
    }
    return number;
}

}  // namespace ventrix::desk
