#include "markers/dtd_recovery.h"

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/request.h"
#include "bridge/host/operations.h"
#include "bridge/host/values.h"
#include "fileset/file_operations.h"
#include "kit/memory.h"
#include "markers/xslt_run.h"
#include "platform/files.h"
#include "platform/wide_text.h"

namespace ventrix {
namespace {

constexpr std::int32_t kInstallationFolderProperty = 89;

/// The client's answer if it is exactly one string, otherwise empty.
std::string AskDispatcher(const std::string& question) {
    Q_ValueList answer = Q_ApiInvokeClientForValues(kDispatcherClient, question.c_str());
    std::string text;
    if (answer.items && answer.count == 1 && answer.items[0].tag == kTextTag && answer.items[0].text) {
        text = answer.items[0].text;
    }
    Q_ApiFreeValueList(&answer);
    return text;
}

// A DTD that does not exist has no long form, and a form that no path buffer can hold is useless. The path is
// then used as the host gave it, so that the next load fails with a reason that names the missing file.
std::string LongFormOf(const std::string& dtdPath) {
    const std::string longPath = platform::LongPath(dtdPath);
    return longPath.empty() || platform::WideFromUtf8(longPath).size() >= platform::kPathLimit ? dtdPath
                                                                                               : longPath;
}

Path RepairStylesheet() {
    char* const folder = Q_ApiReadStringPropNum(0, 0, kInstallationFolderProperty);
    Path stylesheet = Path(folder ? folder : "") + "\\Ventrix.xsl";
    Q_Free(folder);
    return stylesheet;
}

bool HasContent(const Path& path) {
    std::string content;
    return platform::ReadWholeFile(path, content) == platform::kErrorNone && !content.empty();
}

}  // namespace

bool RepairDoctype(const Path& path) {
    const std::string answer = LookupDtdPath(path);
    if (answer.empty()) {
        return false;
    }
    const std::string dtdPath = LongFormOf(answer);
    const Path temp = path + ".ql.temp";
    // The file of an interrupted run must not be mistaken for the output of this one.
    DeleteFileAt(temp);
    RunXsltScenario(path, RepairStylesheet(), temp);
    // Without output the document stays: one with an undefined entity is better than none.
    if (HasContent(temp)) {
        ReplaceInFile(temp, "$qldtdpath$", dtdPath);
        MoveFileInto(temp, path);
    }
    // If the move failed halfway, the temporary file is the only copy left.
    if (FileReadable(path)) {
        DeleteFileAt(temp);
    }
    return true;
}

std::string LookupDtdPath(const Path& path) {
    const std::string application = AskDispatcher("ChooseAppForFile " + path);
    return AskDispatcher("StructAppInfo -appName " + application + " -info DTDPath");
}

void ReplaceInFile(const Path& path, std::string_view oldText, std::string_view newText) {
    std::string content;
    if (platform::ReadWholeFile(path, content) != platform::kErrorNone) {
        return;
    }
    ReplaceFirst(content, oldText, newText);
    platform::WriteWholeFile(path, content);
}

}  // namespace ventrix
