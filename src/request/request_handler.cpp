#include "request/request_handler.h"

#include "bridge/contract/request.h"
#include "pipeline/publish_driver.h"
#include "pipeline/validate_driver.h"
#include "request/reply.h"
#include "request/request_grammar.h"

namespace ventrix {

namespace {

std::string TextOrEmpty(const Q_String& text) {
    return text ? text.get() : "";
}

bool HasWayToTransform(const PublishRequest& request) {
    return request.useDitaOt || request.stylesheet || request.preScript || request.postScript;
}

std::int32_t RunPublish(PublishRequest& request, PublishReply& reply) {
    if (!request.outputFolder || !HasWayToTransform(request)) {
        return kRequestRefused;
    }
    PublishDocument(static_cast<std::uint32_t>(request.documentId), request.outputFolder.get(),
                    request.stylesheet.get(), request.preScript.get(), request.postScript.get(),
                    request.useDitaOt, request.showProgressBar, TextOrEmpty(request.ditaval), request.params,
                    TextOrEmpty(request.logFile), reply);
    return 0;
}

std::int32_t RunRequest(PublishRequest& request, PublishReply& reply) {
    if (request.command == RequestCommand::kNone || request.documentId == 0) {
        return kRequestRefused;
    }
    if (request.command == RequestCommand::kValidate) {
        return ValidateDocument(static_cast<std::uint32_t>(request.documentId), TextOrEmpty(request.logFile));
    }
    return RunPublish(request, reply);
}

}  // namespace

void HandleRequest(const char* text) {
    PublishRequest request = ParseRequest(text != nullptr ? text : "");
    PublishReply reply;
    const std::int32_t status = RunRequest(request, reply);
    SendReply(status, reply.resultFolder.c_str(), reply.buildLog.c_str());
}

}  // namespace ventrix
