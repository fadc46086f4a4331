#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "HexText.h"
#include "JsonText.h"
#include "Numbers.h"
#include "operations/Operation.h"
#include "TroubleCodes.h"

namespace qorctl {
namespace {

struct KwpRequest {
    unsigned int service = 0;
    std::vector<std::string> words;
};

Reply readDtc(Session& session) {
    std::vector<QorControlFacade::DtcDescription> codes;
    CallNotes calls;
    if (!calls.note(session.facade().getDtcByStatus(codes, session.options().timeoutMs)))
        return Reply::of(calls.failure("the trouble codes were not read"));
    Reply reply = Reply::of(calls.success(fmt::format("{} trouble codes", codes.size())));
    if (!codes.empty()) reply.lines = tableOf(codes).lines();
    reply.result = jsonOf(codes);
    return reply;
}

Reply clearDtc(Session& session) {
    return Reply::ofCall(session.facade().clearDtc(session.options().timeoutMs), "",
                         "the trouble codes were not cleared");
}

Reply sendKwp(Session& session, const KwpRequest& request) {
    const std::string bytes = bytesOf(request.words);
    QorControlFacade::KwpCommand command = {request.service, bytes, 0};
    CallNotes calls;
    if (!calls.note(session.facade().sendKwpCommand(command, session.options().timeoutMs)))
        return Reply::of(
            calls.failure(fmt::format("service 0x{:02X} was not exchanged", request.service)));
    const std::string answer = hexOf(command.data);
    Reply reply =
        Reply::of(command.failed == 0 ? calls.success(fmt::format("0x{:02X}", request.service))
                                      : calls.failure("the ECU reports a failure: " + answer));
    reply.lines = {answer};
    reply.result = {{"service", request.service},
                    {"request", hexOf(bytes)},
                    {"answer", answer},
                    {"failed", command.failed}};
    return reply;
}

}  // namespace

OperationWork declareReadDtc(CLI::App&) {
    return readDtc;
}

OperationWork declareClearDtc(CLI::App&) {
    return clearDtc;
}

OperationWork declareKwp(CLI::App& command) {
    const auto request = std::make_shared<KwpRequest>();
    whole(command.add_option("SERVICE", request->service, "Service identifier, 0x21 for instance"))
        ->required()
        ->check(CLI::Range(0u, 0xFFu));
    command.add_option("BYTES", request->words, "Bytes behind it, in hexadecimal digits")
        ->check(whyNoBytes);
    return [request](Session& session) { return sendKwp(session, *request); };
}

}  // namespace qorctl
