// Prints the times of a run as usual, and at its end the ratios of pairs of them.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ventrix::bench {

/// The time of one benchmark divided by that of another in the same run. The time of a benchmark is the lower
/// quartile of its repetitions.
struct Ratio {
    std::string name;
    std::string measured;
    std::string base;
    std::optional<double>
        limit;  ///< The highest value that passes; nothing for a ratio that is only printed.
};

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override;

    /// Prints the ratios of which both benchmarks ran. False if one exceeds its limit.
    bool PrintRatios(const std::vector<Ratio>& ratios) const;

  private:
    std::map<std::string, std::vector<double>> seconds_;  ///< The repetitions of each benchmark.
};

}  // namespace ventrix::bench
