#include "markers/path_stamps.h"

#include <algorithm>

#include "kit/paths/file_path.h"
#include "markers/dom_helpers.h"

namespace ventrix {
namespace {

constexpr char kXpathName[] = "data-qlxpath";
constexpr std::string_view kTitleName = "title";

/// From the root down to the element; empty for a node that is no element.
void CollectChain(xml::Node element, std::vector<xml::Node>& chain) {
    chain.clear();
    for (; IsElement(element); element = element.get_parentNode()) {
        chain.push_back(element);
    }
    std::ranges::reverse(chain);
}

std::size_t& CountOf(StampMemo::Counts& counts, std::string_view name) {
    constexpr std::size_t kFewNames = 8;
    const auto known = std::ranges::find(counts.few, name, &std::pair<std::string_view, std::size_t>::first);
    if (known != counts.few.end()) {
        return known->second;
    }
    return counts.few.size() < kFewNames ? counts.few.emplace_back(name, 0).second : counts.many[name];
}

void Clear(StampMemo::Counts& counts) {
    counts.few.clear();
    if (!counts.many.empty()) {
        counts.many = {};
    }
}

/// How many child elements up to the child, itself included, have its name. Questions that come in document
/// order look at each child once; an earlier child has its level counted from the start again.
std::size_t CountUpTo(StampMemo::Level& level, xml::Node child) {
    while (level.lastCounted != child) {
        level.lastCounted =
            level.lastCounted ? level.lastCounted.get_nextSibling() : level.element.get_firstChild();
        if (!level.lastCounted) {
            Clear(level.counts);
        } else if (IsElement(level.lastCounted)) {
            ++CountOf(level.counts, NodeName(level.lastCounted));
        }
    }
    return CountOf(level.counts, NodeName(child));
}

void StampFirstText(xml::Node element, std::string_view group) {
    if (const xml::Node textNode = FirstFilledTextNode(element)) {
        PrependGroup(textNode, group);
    }
}

/// Puts the element under the memo's last level.
void EnterLevel(StampMemo& memo, xml::Node element) {
    const std::size_t count = memo.levelCount;
    const std::size_t position = count == 0 ? 1 : CountUpTo(memo.levels[count - 1], element);
    memo.path.append("/").append(NodeName(element));
    if (position > 1) {
        memo.path.append("[").append(std::to_string(position)).append("]");
    }
    if (count == memo.levels.size()) {
        memo.levels.emplace_back();
    }
    StampMemo::Level& level = memo.levels[memo.levelCount++];
    level.element = element;
    level.pathLength = memo.path.size();
    level.lastCounted = {};
    Clear(level.counts);
}

void LeaveLevels(StampMemo& memo, std::size_t kept) {
    memo.levelCount = kept;
    memo.path.resize(kept == 0 ? 0 : memo.levels[kept - 1].pathLength);
}

/// Brings the levels to the element if they end near it: at it, at its parent, or one level below either.
/// False if they do not.
bool StepTo(StampMemo& memo, xml::Node element) {
    const xml::Node parent = element.get_parentNode();
    const std::size_t count = memo.levelCount;
    for (std::size_t kept = count; kept > 0 && kept + 2 > count; --kept) {
        const xml::Node last = memo.levels[kept - 1].element;
        if (last == element || last == parent) {
            LeaveLevels(memo, kept);
            if (last == parent) {
                EnterLevel(memo, element);
            }
            return true;
        }
    }
    return false;
}

}  // namespace

bool HasPathEntries(xml::Node parent, const PublishParams& record) {
    return record.addXpath || NodeName(parent) == kTitleName || IsListedElement(parent, record.addSourcePath);
}

void AddPathEntries(xml::Node parent, std::string& composed, PublishParams& record, StampMemo& memo) {
    if (record.addXpath) {
        AddXPathEntry(parent, composed, record.xpathAttr, memo);
    }
    const std::string_view name = NodeName(parent);
    const auto wanted = std::ranges::find(record.addSourcePath, name);
    if (wanted != record.addSourcePath.end()) {
        AddSourcePathEntry(composed, record, memo);
        record.addSourcePath.erase(wanted);
    } else if (name == kTitleName) {
        AddSourcePathEntry(composed, record, memo);
    }
}

const std::string& BuildXPath(xml::Node element, StampMemo& memo) {
    if (IsElement(element) && StepTo(memo, element)) {
        return memo.path;
    }
    CollectChain(element, memo.chain);
    const std::vector<xml::Node>& chain = memo.chain;
    std::size_t known = 0;
    while (known < chain.size() && known < memo.levelCount && memo.levels[known].element == chain[known]) {
        ++known;
    }
    LeaveLevels(memo, known);
    for (; known < chain.size(); ++known) {
        EnterLevel(memo, chain[known]);
    }
    return memo.path;
}

void AddXPathEntry(xml::Node element, std::string& composed, const std::string& xpathAttr, StampMemo& memo) {
    const std::string& path = BuildXPath(element, memo);
    if (!path.empty()) {
        AppendEntry(composed, kXpathName, path, xpathAttr);
    }
}

void AddSourcePathEntry(std::string& composed, const PublishParams& record, StampMemo& memo) {
    if (!memo.sourcePath) {
        memo.sourcePath = RelativeTo(record.currentFile, record.packageBase);
    }
    if (!memo.sourcePath->empty()) {
        AppendEntry(composed, "data-qlsource", *memo.sourcePath, record.sourcePathAttr);
    }
}

void StampPreservedXPaths(xml::Document& document, const std::list<std::string>& queries,
                          const std::string& attribute) {
    document.setProperty("SelectionLanguage", "XPath");
    for (const std::string& query : queries) {
        std::string group(QL_START);
        AppendEntry(group, kXpathName, query, attribute);
        group.append(QL_END);
        const auto selected = document.selectNodes(query);
        if (!selected) {
            continue;
        }
        for (std::size_t i = 0; i < selected->get_length(); ++i) {
            const xml::Node node = selected->get_item(i);
            if (IsElement(node)) {
                StampFirstText(node, group);
            }
        }
    }
}

}  // namespace ventrix
