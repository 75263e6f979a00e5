// The findings of validations as data for other programs. docs/findings.md describes the formats and the
// rules.
#pragma once

#include <string>
#include <vector>

#include "desk/cli/run_report.h"

namespace ventrix::desk {

/// The findings of the runs as one document that ends with a line break. `format` is "json", "sarif", "junit"
/// or "codequality". Bytes that are not UTF-8 become U+FFFD.
std::string FormatFindings(const std::string& format, const std::vector<RunReport>& reports);

}  // namespace ventrix::desk
