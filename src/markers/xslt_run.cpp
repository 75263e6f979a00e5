#include "markers/xslt_run.h"

#include "bridge/contract/request.h"
#include "bridge/host/operations.h"

namespace ventrix {

void RunXsltScenario(Path file, Path stylesheet, Path outputPath) {
    if (outputPath.empty()) {
        outputPath = file;
        ReplaceExtension(outputPath, ".html");
    }
    const std::string command = "XSLTRunTrScenario -dontuseqlconsole -file \"" + file + "\" -xslfilepath \"" +
                                stylesheet + "\" -outputfilepath \"" + outputPath + "\"";
    Q_ApiInvokeClient(kXsltClient, command.c_str());
}

}  // namespace ventrix
