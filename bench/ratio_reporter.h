// Shows the times of a run as usual, keeps them, and at the end sets pairs of them against each other.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ventrix::bench {

/// The time of one benchmark over that of another, both of the same run, and what it may be at most.
struct Ratio {
    std::string name;
    std::string measured;
    std::string base;
    std::optional<double> limit;  ///< Nothing for a ratio that is only shown.
};

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override;

    /// Prints the ratios whose two benchmarks ran. False if one of them is above its limit.
    bool PrintRatios(const std::vector<Ratio>& ratios) const;

  private:
    std::map<std::string, double> shortest_;  ///< Seconds by benchmark: the shortest of its repetitions.
};

}  // namespace ventrix::bench
