#include "desk/cli/file_findings.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>

#include "desk/cli/finding_columns.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

constexpr char kMissing[] = "missing";

/// The file that could not be used: that of the finding, or the one to which it refers.
const NativePath& UnusableFile(const Finding& finding) {
    return finding.subject.target.Empty() ? finding.file : finding.subject.target;
}

}  // namespace

std::vector<NativePath> MissingFiles(const DocumentFiles& files) {
    std::vector<NativePath> missing = LocalFiles(files);
    std::erase_if(missing, [](const NativePath& file) { return platform::OpensForReading(file.utf8); });
    return missing;
}

std::vector<Finding> MissingReferences(const DocumentFiles& files, const std::vector<NativePath>& missing) {
    const std::set<NativePath> unread(missing.begin(), missing.end());
    std::vector<Finding> findings;
    for (const DocumentFile& file : files.files) {
        if (unread.contains(file.path) && !file.referrer.Empty()) {
            findings.push_back({.file = file.referrer,
                                .line = file.line,
                                .code = kMissing,
                                .text = "refers to " + file.path.utf8 + ", which is missing or unreadable",
                                .subject = {.target = file.path}});
        } else if (unread.contains(file.path)) {
            findings.push_back({file.path, 0, kMissing, "is missing or unreadable"});
        }
    }
    AddColumns(findings);
    return findings;
}

FailureReason SplitReason(const std::string& reason) {
    constexpr std::string_view kLine = " (line ";
    constexpr std::string_view kColumn = ", column ";
    const std::size_t line = reason.rfind(kLine);
    const std::size_t column = line == std::string::npos ? line : reason.find(kColumn, line);
    if (column == std::string::npos) {
        return {reason};
    }
    return {reason.substr(0, line), std::atoi(reason.c_str() + line + kLine.size()),
            std::atoi(reason.c_str() + column + kColumn.size())};
}

void AddFailedFiles(const std::vector<FailedFile>& files, std::vector<Finding>& findings) {
    for (const FailedFile& failed : files) {
        const auto [reason, line, column] = SplitReason(failed.reason);
        findings.push_back({failed.file, line, kNotReadable, "could not be read: " + reason, column});
    }
}

Finding NotTransformed(const std::string& line, const NativePath& document) {
    const std::string name = document.utf8 + ": ";
    return {document, 0, "not-transformed", line.substr(line.starts_with(name) ? name.size() : 0)};
}

bool NamesFileOf(const std::string& line, const std::vector<Finding>& findings) {
    return std::ranges::any_of(findings, [&line](const Finding& finding) {
        const std::string name = FromFilesystem(ToFilesystem(UnusableFile(finding)).filename()).utf8;
        return !name.empty() && line.find("/" + name) != std::string::npos;
    });
}

std::set<NativePath> UnusableIn(const std::vector<Finding>& findings) {
    std::set<NativePath> files;
    for (const Finding& finding : findings) {
        if (finding.code == kMissing || finding.code == kNotReadable) {
            files.insert(UnusableFile(finding));
        }
    }
    return files;
}

void AddTransformationFindings(const std::vector<DitaFinding>& found, const std::set<NativePath>& unusable,
                               std::vector<Finding>& findings) {
    for (const DitaFinding& one : found) {
        if (!unusable.contains(one.subject.target)) {
            findings.push_back({one.file, one.line, one.rule, one.text, 0, one.subject});
        }
    }
}

}  // namespace ventrix::desk
