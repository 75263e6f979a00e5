#include "markers/path_stamps.h"

#include <algorithm>

#include "kit/paths/file_path.h"
#include "markers/dom_helpers.h"

namespace ventrix {
namespace {

constexpr char kXpathName[] = "data-qlxpath";
constexpr char kSourceName[] = "data-qlsource";
constexpr std::string_view kTitleName = "title";

/// The elements from the root to this one; empty for a node that is not an element.
void CollectChain(xml::Node element, std::vector<xml::Node>& chain) {
    chain.clear();
    for (; IsElement(element); element = element.get_parentNode()) {
        chain.push_back(element);
    }
    std::ranges::reverse(chain);
}

std::size_t& CountOf(StampState::Counts& counts, std::string_view name) {
    constexpr std::size_t kFewNames = 8;
    const auto known = std::ranges::find(counts.few, name, &std::pair<std::string_view, std::size_t>::first);
    if (known != counts.few.end()) {
        return known->second;
    }
    return counts.few.size() < kFewNames ? counts.few.emplace_back(name, 0).second : counts.many[name];
}

void Clear(StampState::Counts& counts) {
    counts.few.clear();
    if (!counts.many.empty()) {
        counts.many = {};
    }
}

/// The position of the child among its sibling elements of the same name, from 1. Calls in document order
/// visit each sibling once. If the child comes before the last one counted, the siblings run out and counting
/// starts again from the first.
std::size_t PositionOf(StampState::Level& level, xml::Node child) {
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

/// Adds a level for a child of the last level's element.
void EnterLevel(StampState& state, xml::Node element) {
    const std::size_t count = state.levelCount;
    const std::size_t position = count == 0 ? 1 : PositionOf(state.levels[count - 1], element);
    state.path.append("/").append(NodeName(element));
    if (position > 1) {
        state.path.append("[").append(std::to_string(position)).append("]");
    }
    if (count == state.levels.size()) {
        state.levels.emplace_back();
    }
    StampState::Level& level = state.levels[state.levelCount++];
    level.element = element;
    level.pathLength = state.path.size();
    level.lastCounted = {};
    Clear(level.counts);
}

void LeaveLevels(StampState& state, std::size_t kept) {
    state.levelCount = kept;
    state.path.resize(kept == 0 ? 0 : state.levels[kept - 1].pathLength);
}

/// The short way from one path to the next, for the usual steps of a walk: to the same element, a child, a
/// sibling or the parent of the last one. False, with the levels unchanged, for any other element.
bool StepTo(StampState& state, xml::Node element) {
    const xml::Node parent = element.get_parentNode();
    const std::size_t count = state.levelCount;
    for (std::size_t kept = count; kept > 0 && kept + 2 > count; --kept) {
        const xml::Node last = state.levels[kept - 1].element;
        if (last == element || last == parent) {
            LeaveLevels(state, kept);
            if (last == parent) {
                EnterLevel(state, element);
            }
            return true;
        }
    }
    return false;
}

}  // namespace

bool HasPathEntries(xml::Node parent, const PublishParams& params, const StampState& state) {
    if (params.addXpath) {
        return true;
    }
    const std::string_view name = NodeName(parent);
    return name == kTitleName || IsListed(name, state.sourceNames);
}

void AddPathEntries(xml::Node parent, std::string& group, const PublishParams& params, StampState& state) {
    if (params.addXpath) {
        AddXPathEntry(parent, group, params.xpathAttr, state);
    }
    const std::string_view name = NodeName(parent);
    const auto wanted = std::ranges::find(state.sourceNames, name);
    if (wanted != state.sourceNames.end()) {
        AddSourcePathEntry(group, params, state);
        state.sourceNames.erase(wanted);
    } else if (name == kTitleName) {
        AddSourcePathEntry(group, params, state);
    }
}

const std::string& BuildXPath(xml::Node element, StampState& state) {
    if (IsElement(element) && StepTo(state, element)) {
        return state.path;
    }
    CollectChain(element, state.chain);
    const std::vector<xml::Node>& chain = state.chain;
    std::size_t known = 0;
    while (known < chain.size() && known < state.levelCount && state.levels[known].element == chain[known]) {
        ++known;
    }
    LeaveLevels(state, known);
    for (; known < chain.size(); ++known) {
        EnterLevel(state, chain[known]);
    }
    return state.path;
}

void AddXPathEntry(xml::Node element, std::string& group, const std::string& xpathAttr, StampState& state) {
    const std::string& path = BuildXPath(element, state);
    if (!path.empty()) {
        AppendEntry(group, kXpathName, path, xpathAttr);
    }
}

void AddSourcePathEntry(std::string& group, const PublishParams& params, StampState& state) {
    if (!state.sourcePath) {
        state.sourcePath = RelativeTo(params.currentFile, params.packageBase);
    }
    if (!state.sourcePath->empty()) {
        AppendEntry(group, kSourceName, *state.sourcePath, params.sourcePathAttr);
    }
}

void StampPreservedXPaths(xml::Document& document, const std::list<std::string>& queries,
                          const std::string& attribute) {
    document.setProperty("SelectionLanguage", "XPath");
    for (const std::string& query : queries) {
        std::string group;
        PrependAttributeGroup(group, {kXpathName, query, attribute});
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
