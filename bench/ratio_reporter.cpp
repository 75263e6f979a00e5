#include "bench/ratio_reporter.h"

#include <algorithm>
#include <cstdio>

namespace ventrix::bench {

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred) {
            continue;
        }
        const double seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
        const auto [known, isNew] = shortest_.emplace(run.run_name.function_name, seconds);
        known->second = std::min(known->second, seconds);
    }
    ConsoleReporter::ReportRuns(runs);
}

bool RatioReporter::PrintRatios(const std::vector<Ratio>& ratios) const {
    bool held = true;
    for (const Ratio& ratio : ratios) {
        const auto measured = shortest_.find(ratio.measured);
        const auto base = shortest_.find(ratio.base);
        if (measured == shortest_.end() || base == shortest_.end()) {
            continue;
        }
        const double value = measured->second / base->second;
        std::printf("%-64s %6.2f", ratio.name.c_str(), value);
        if (ratio.limit) {
            const bool holds = value <= *ratio.limit;
            held = held && holds;
            std::printf("  at most %5.2f: %s", *ratio.limit, holds ? "held" : "MISSED");
        }
        std::printf("\n");
    }
    return held;
}

}  // namespace ventrix::bench
