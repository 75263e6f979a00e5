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

/// The client's answer if it is exactly one text; otherwise empty.
std::string AskDispatcher(const std::string& question) {
    Q_ValueList answer = Q_ApiInvokeClientForValues(kDispatcherClient, question.c_str());
    std::string text;
    if (answer.items && answer.count == 1 && answer.items[0].tag == kTextTag && answer.items[0].text) {
        text = answer.items[0].text;
    }
    Q_ApiFreeValueList(&answer);
    return text;
}

// A DTD that does not exist has no long form, and one that is too long for a path buffer gets none. Its name
// as the host gave it is then the best there is: the next load fails with a reason that tells what is
// missing.
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
    // A file that an interrupted run left behind must not pass for the output of this one.
    DeleteFileAt(temp);
    RunXsltScenario(path, RepairStylesheet(), temp);
    // Without output the document stays what it is: a document with an undefined entity is worth more than
    // none.
    if (HasContent(temp)) {
        ReplaceInFile(temp, "$qldtdpath$", dtdPath);
        MoveFileInto(temp, path);
    }
    // Where the move failed halfway, the temporary file is the only one left.
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
