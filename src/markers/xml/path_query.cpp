#include "markers/xml/path_query.h"

#include <algorithm>
#include <cstdint>

#include "markers/xml/characters.h"

namespace ventrix::xml {
namespace {

using StepSet = std::uint32_t;  ///< A bit for each step, the first one lowest.
constexpr std::size_t kMostSteps = 32;

bool Consume(std::string_view& text, std::string_view prefix) {
    const bool found = text.starts_with(prefix);
    text.remove_prefix(found ? prefix.size() : 0);
    return found;
}

/// Removes a name without a colon from the front; empty if there is none.
std::string_view ConsumeName(std::string_view& text) {
    const auto end =
        std::ranges::find_if(text, [](char c) { return (ClassOf(c) & kNameByte) == 0 || c == ':'; });
    const std::string_view name(text.begin(), end);
    if (!IsPlainName(name)) {
        return {};
    }
    text.remove_prefix(name.size());
    return name;
}

/// Removes a literal of plain ASCII with its quotes from the front; nothing if there is none.
std::optional<std::string_view> ConsumeLiteral(std::string_view& text) {
    if (!text.starts_with('"') && !text.starts_with('\'')) {
        return std::nullopt;
    }
    const std::string_view literal = text.substr(1, text.find(text[0], 1) - 1);
    const bool isPlain = std::ranges::all_of(literal, [](char c) { return c >= ' ' && c <= '~'; });
    if (!isPlain || literal.size() + 2 > text.size()) {
        return std::nullopt;
    }
    text.remove_prefix(literal.size() + 2);
    return literal;
}

/// Removes a predicate, from past its "[", and adds it to the step. False if it is not for an attribute.
bool ConsumePredicate(std::string_view& text, PathStep& step) {
    if (!Consume(text, "@")) {
        return false;
    }
    step.attribute = ConsumeName(text);
    if (Consume(text, "=")) {
        step.value = ConsumeLiteral(text);
        if (!step.value) {
            return false;
        }
    }
    return !step.attribute.empty() && Consume(text, "]");
}

/// Matches a document top down: whether an element is selected by the first steps depends only on the element
/// and on what its ancestors are selected by.
class PathMatcher {
  public:
    PathMatcher(DocumentStore& store, const std::vector<PathStep>& steps) : store_(store), steps_(steps) {}

    /// Visits the tree by the links of its nodes, without recursion.
    std::vector<NodeIndex> Select(NodeIndex document) {
        NodeIndex index = store_.FirstChild(document);
        Visit(index, {}, true);
        while (true) {
            if (const NodeIndex child = store_.FirstChild(index); child != 0) {
                open_.push_back(last_);
                index = child;
            } else {
                while (!open_.empty() && store_.At(index).next == 0) {
                    index = store_.At(index).parent;
                    open_.pop_back();
                }
                if (open_.empty()) {
                    return std::move(selected_);
                }
                index = store_.At(index).next;
            }
            if (store_.At(index).Type() == NODE_ELEMENT) {
                Visit(index, open_.back(), false);
            }
        }
    }

  private:
    struct Level {
        StepSet here = 0;   ///< The steps that the element ends.
        StepSet above = 0;  ///< Those that it or one of its ancestors ends.
    };

    void Visit(NodeIndex element, const Level& parent, bool isRoot) {
        StepSet here = 0;
        for (std::size_t i = 0; i < steps_.size(); ++i) {
            const StepSet before = steps_[i].atAnyDepth ? parent.above : parent.here;
            const bool isReached = i == 0 ? isRoot || steps_[0].atAnyDepth : (before >> (i - 1) & 1) != 0;
            if (isReached && Matches(element, steps_[i])) {
                here |= StepSet{1} << i;
            }
        }
        last_ = {here, here | parent.above};
        if ((here >> (steps_.size() - 1) & 1) != 0) {
            selected_.push_back(element);
        }
    }

    bool Matches(NodeIndex element, const PathStep& step) {
        const bool hasName = step.name == "*" || (store_.At(element).nameLength == step.name.size() &&
                                                  store_.NameOf(element) == step.name);
        return hasName && (step.attribute.empty() || HasAttribute(element, step));
    }

    bool HasAttribute(NodeIndex element, const PathStep& step) {
        store_.ReadAttributes(element);
        NodeIndex attribute = store_.FirstAttribute(element);
        while (attribute != 0 && store_.NameOf(attribute) != step.attribute) {
            attribute = store_.At(attribute).next;
        }
        return attribute != 0 && (!step.value || store_.ContentOf(attribute, buffer_) == *step.value);
    }

    DocumentStore& store_;
    const std::vector<PathStep>& steps_;
    std::vector<NodeIndex> selected_;
    std::vector<Level> open_;  ///< Of the elements that the walk is in.
    Level last_;               ///< Of the element visited last.
    std::string buffer_;
};

}  // namespace

std::optional<std::vector<PathStep>> ParsePath(std::string_view query) {
    std::vector<PathStep> steps;
    while (!query.empty()) {
        PathStep& step = steps.emplace_back();
        step.atAnyDepth = Consume(query, "//");
        if (steps.size() > kMostSteps || (!step.atAnyDepth && !Consume(query, "/"))) {
            return std::nullopt;
        }
        step.name = Consume(query, "*") ? "*" : ConsumeName(query);
        if (step.name.empty() || (Consume(query, "[") && !ConsumePredicate(query, step))) {
            return std::nullopt;
        }
    }
    return steps.empty() ? std::nullopt : std::optional(std::move(steps));
}

std::vector<NodeIndex> SelectByPath(DocumentStore& store, NodeIndex document,
                                    const std::vector<PathStep>& steps) {
    return PathMatcher(store, steps).Select(document);
}

}  // namespace ventrix::xml
