#include "desk/cli/file_findings.h"

#include <algorithm>
#include <set>
#include <string>

#include "platform/files.h"

namespace ventrix::desk {
namespace {

std::string ReferenceTo(const DocumentFile& file) {
    return file.referrer.Empty()
               ? std::string()
               : "; " + file.referrer.utf8 +
                     (file.line > 0 ? ":" + std::to_string(file.line) : std::string()) + " refers to it";
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
            findings.push_back({file.path, 0, "missing",
                                "is missing or unreadable and is not in the result" + ReferenceTo(file)});
        }
    }
}

void AddFailedFiles(const RunLog& log, std::vector<Finding>& findings) {
    for (const FailedFile& failed : log.failed) {
        findings.push_back({failed.file, 0, kNotReadable, "could not be read: " + failed.reason});
    }
}

bool NamesFileOf(const std::string& line, const std::vector<Finding>& findings) {
    return std::ranges::any_of(findings, [&line](const Finding& finding) {
        const std::string name = FromFilesystem(ToFilesystem(finding.file).filename()).utf8;
        return !name.empty() && line.find("/" + name) != std::string::npos;
    });
}

}  // namespace ventrix::desk
