// Which groups of the sources the groups in the result are. Groups that are equal are told apart by the file
// that a page was made from and by the words after them; where that is not enough, they stay together.
#pragma once

#include <vector>

#include "desk/report/trace.h"

namespace ventrix::desk {

struct Match {
    std::vector<int> carriers;  ///< Equal groups of the sources; one if the place is known exactly.
    std::vector<int> arrivals;  ///< Those of the result that are one of them.
    bool repeatsOnly = false;   ///< Each carrier is in another match too; these arrivals are more than those.
};

/// Every carrier is in exactly one match that has not only repeats, in the order of the sources; every
/// arrival is in one match. `sourceOfPage` has an index of SourceTrace::files for each page, or -1. Takes
/// linear time.
std::vector<Match> MatchGroups(const SourceTrace& sources, const ResultTrace& result,
                               const std::vector<int>& sourceOfPage);

}  // namespace ventrix::desk
