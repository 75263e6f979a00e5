#include "desk/cli/file_findings.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

#include "desk/xml/reference_path.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

constexpr char kMissing[] = "missing";

std::string ReferenceTo(const DocumentFile& file) {
    return file.referrer.Empty()
               ? std::string()
               : "; " + file.referrer.utf8 +
                     (file.line > 0 ? ":" + std::to_string(file.line) : std::string()) + " refers to it";
}

/// The file that the reference in a finding names; empty if it has none.
NativePath ReferredFile(const DitaFinding& finding) {
    const std::size_t begin = finding.text.find('"') + 1;
    const std::size_t end = begin == 0 ? std::string::npos : finding.text.find('"', begin);
    return end == std::string::npos
               ? NativePath{}
               : TargetOf(std::string_view(finding.text).substr(begin, end - begin), FolderOf(finding.file))
                     .path;
}

}  // namespace

std::vector<NativePath> MissingFiles(const DocumentFiles& files) {
    std::vector<NativePath> missing = LocalFiles(files);
    std::erase_if(missing, [](const NativePath& file) { return platform::OpensForReading(file.utf8); });
    return missing;
}

void AddMissingFiles(const DocumentFiles& files, const std::vector<NativePath>& missing,
                     std::vector<Finding>& findings) {
    const std::set<NativePath> unread(missing.begin(), missing.end());
    for (const DocumentFile& file : files.files) {
        if (unread.contains(file.path)) {
            findings.push_back({file.path, 0, kMissing,
                                "is missing or unreadable and is not in the result" + ReferenceTo(file)});
        }
    }
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

bool NamesFileOf(const std::string& line, const std::vector<Finding>& findings) {
    return std::ranges::any_of(findings, [&line](const Finding& finding) {
        const std::string name = FromFilesystem(ToFilesystem(finding.file).filename()).utf8;
        return !name.empty() && line.find("/" + name) != std::string::npos;
    });
}

std::set<NativePath> UnusableIn(const std::vector<Finding>& findings) {
    std::set<NativePath> files;
    for (const Finding& finding : findings) {
        if (finding.code == kMissing || finding.code == kNotReadable) {
            files.insert(finding.file);
        }
    }
    return files;
}

void AddTransformationFindings(const std::vector<DitaFinding>& found, const std::set<NativePath>& unusable,
                               std::vector<Finding>& findings) {
    for (const DitaFinding& one : found) {
        if (one.rule == kUnknownKey || !unusable.contains(ReferredFile(one))) {
            findings.push_back({one.file, one.line, one.rule, one.text});
        }
    }
}

}  // namespace ventrix::desk
