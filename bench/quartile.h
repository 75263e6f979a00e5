// The time that stands for several repetitions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ventrix::bench {

/// At least one value. The shortest time of a benchmark varies by a third from run to run, its lower quartile
/// less.
inline double LowerQuartile(std::vector<double> values) {
    const auto quartile = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 4);
    std::ranges::nth_element(values, quartile);
    return *quartile;
}

}  // namespace ventrix::bench
