// The walk through one encoded copy. It keeps the elements that are open, with what was asked for on each and
// is not yet known to be carried.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "desk/report/preservation.h"
#include "desk/report/trace.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

class SourceWalk {
  public:
    /// Everything must outlive the walk, which adds to the trace and the table. The file is the last one of
    /// the trace. Without known lines, all lines are 0.
    SourceWalk(const Preservation& preservation, const PreservedItems& items, bool linesKnown,
               SourceTrace& trace, StringTable& strings);

    void Run(const xmlNode& root);

  private:
    /// An attribute that was asked for, on an open element.
    struct Wanted {
        int item = kNoItem;
        std::string_view name;
        std::string value;
        const ScopedNames* scoped = nullptr;  ///< For a scoped attribute.
        bool counted = false;    ///< A text that it applies to was counted, whether carried or not.
        bool inElement = false;  ///< The scoped group is in a preserved element.
    };
    struct Open {
        const xmlNode* node = nullptr;
        std::size_t pathLength = 0;
        int line = 0;
        bool skipped = false;        ///< In a part that is not encoded.
        bool hasMarkedText = false;  ///< In it or below.
        bool hasPlainText = false;   ///< A filled text node without a group.
        std::vector<Wanted> wanted;
        std::map<std::string, int, std::less<>> childCounts;
    };
    /// The first element with text of its own, or else the first one.
    struct SourcePathElement {
        SourcePlace place;
        bool hasText = false;
    };
    struct Selected {
        std::string xpath;
        int line = 0;
    };

    void Enter(const xmlNode& element);
    void Leave();
    void CollectWanted(const xmlNode& element, Open& open) const;
    void NoteStandingAlone(const xmlNode& element, const Open& open, const std::string& name);
    void NoteSourcePathElement(const xmlNode& element, const std::string& name);
    void ReportUncarried(const Open& open);
    static NotCarried ReasonFor(const Wanted& wanted, const Open& open);

    void Read(const xmlNode& node);
    void AddUnencodedText(const SourcePlace& place);
    void ReadPieces(const std::vector<MarkerPiece>& pieces);
    void AddAttributeGroup(std::string_view group, const std::string& context, int line);
    void AddScopedGroup(std::string_view group, const std::string& context, int line);
    void AddElementGroup(std::string_view group, const std::string& context, int line);
    void AddNestedItems(const xmlNode& element, const SourcePlace& place, std::vector<CarriedItem>& items);
    std::vector<CarriedItem> ItemsOf(const std::vector<MarkerEntry>& entries);
    int ItemOf(const MarkerEntry& entry, bool isLastXPath);
    void MarkAttribute(std::string_view name);
    Wanted* FindScoped(const ScopedFields& fields);
    void AddCarrier(PieceKind kind, std::string_view group, const std::string& context,
                    const SourcePlace& place, std::vector<CarriedItem> items);

    void ReportSelectedWithoutText(const xmlNode& root);
    void ReportSourcePathsWithoutText();
    void AddUncarried(int item, NotCarried reason, const SourcePlace& place, const std::string& value = {});
    SourcePlace PlaceOf(const xmlNode& element, int line) const;
    SourcePlace PlaceHere(int line, const std::string& text) const;
    std::string StepOf(std::string_view name);

    const Preservation& preservation_;
    const PreservedItems& items_;
    bool linesKnown_;
    SourceTrace& trace_;
    StringTable& strings_;
    std::vector<Open> open_;
    std::string path_;
    int line_ = 1;
    std::unordered_map<const xmlNode*, Selected> elements_;  ///< All, if there are queries.
    std::map<int, SourcePathElement> sourcePathElements_;    ///< By item.
    std::vector<bool> sourcePathCarried_;                    ///< By item.
};

}  // namespace ventrix::desk
