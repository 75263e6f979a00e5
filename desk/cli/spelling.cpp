#include "desk/cli/spelling.h"

#include <algorithm>

namespace ventrix::desk {
namespace {

/// The optimal string alignment distance, by dynamic programming: `rows[i][j]` is the distance between the
/// first i bytes of `a` and the first j bytes of `b`.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> rows(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                rows[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
            }
        }
    }
    return rows[a.size()][b.size()];
}

}  // namespace

std::string MeantWord(std::string_view word, const std::vector<std::string>& known) {
    std::size_t nearest = (word.size() > 5 ? 2 : 1) + 1;
    std::string meant;
    for (const std::string& candidate : known) {
        const bool closeInLength =
            std::max(word.size(), candidate.size()) - std::min(word.size(), candidate.size()) < nearest;
        const std::size_t distance = closeInLength ? Distance(word, candidate) : nearest;
        if (distance < nearest) {
            nearest = distance;
            meant = candidate;
        }
    }
    return meant;
}

}  // namespace ventrix::desk
