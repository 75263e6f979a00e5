// The walk through one page that will be decoded. It applies the groups of each text node to the elements
// around it by the rules of docs/marker-format.md, without changing the page, and then compares each group
// with what its element has.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "desk/report/marker_pieces.h"
#include "desk/report/trace.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

/// Whether the element of a group is well-formed XML, by group, so that each is parsed once.
using WellFormedElements = std::unordered_map<int, bool>;

class PageWalk {
  public:
    /// Everything must outlive the walk, which adds to the trace. The page is the last one of the trace.
    PageWalk(const std::string& tagsAttribute, const StringTable& strings, WellFormedElements& wellFormed,
             ResultTrace& trace);

    void Run(const xmlNode& root);

  private:
    using Pair = std::pair<std::string, std::string>;
    struct Applied {
        std::vector<Pair> tags;        ///< Of the tags attribute, by name.
        std::vector<Pair> attributes;  ///< Values of further attributes; each may have several.
    };
    /// An attribute group, to be compared with its element at the end of the page.
    struct Pending {
        std::size_t arrival;
        const xmlNode* element;
        std::vector<MarkerEntry> entries;
    };

    void ReadText(const xmlNode& text);
    void ReadValues(const xmlNode& element);
    void ReadOther(const xmlNode& node, const std::string& where);
    void Apply(const xmlNode& element, const std::vector<MarkerEntry>& entries);
    NotApplied ApplyScoped(const xmlNode& element, const ScopedFields& fields);
    bool IsRestored(const Arrival* arrival, std::string_view content);
    Applied& AppliedTo(const xmlNode& element);
    bool Has(const xmlNode& element, const MarkerEntry& entry);
    void ComparePending();

    /// Adds the group as an arrival; nothing if it is not one of the sources.
    Arrival* AddArrival(const MarkerPiece& piece, std::string_view words, const xmlNode& element);
    void AddChanged(std::string_view words, const xmlNode& element);
    void AddCut(std::string_view words, const xmlNode& element);
    void AddDropped(std::string_view content, const xmlNode& element);
    void AddCopy(const MarkerPiece& piece, const std::string& where, const xmlNode* element);
    void AddCopies(std::string_view text, const std::string& where, const xmlNode* element);

    const std::string& tagsAttribute_;
    const StringTable& strings_;
    WellFormedElements& wellFormed_;
    ResultTrace& trace_;
    int page_;
    std::unordered_map<const xmlNode*, Applied> applied_;
    std::vector<Pending> pending_;
};

}  // namespace ventrix::desk
