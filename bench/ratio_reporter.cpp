#include "bench/ratio_reporter.h"

#include <cstdio>

#include "bench/quartile.h"

namespace ventrix::bench {

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred) {
            continue;
        }
        const double seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
        seconds_[run.run_name.function_name].push_back(seconds);
    }
    ConsoleReporter::ReportRuns(runs);
}

bool RatioReporter::PrintRatios(const std::vector<Ratio>& ratios) const {
    bool held = true;
    for (const Ratio& ratio : ratios) {
        const auto measured = seconds_.find(ratio.measured);
        const auto base = seconds_.find(ratio.base);
        if (measured == seconds_.end() || base == seconds_.end()) {
            continue;
        }
        const double value = LowerQuartile(measured->second) / LowerQuartile(base->second);
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
