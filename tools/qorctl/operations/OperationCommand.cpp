#include "operations/OperationCommand.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "Conversation.h"

namespace qorctl {
namespace {

struct OperationOptions {
    SessionOptions session;
    ConnectOptions connection;
    bool withoutEcu = false;
    bool json = false;
};

int runOperation(const Operation& operation, const OperationOptions& options,
                 const OperationWork& work) {
    Conversation conversation(operation.name, options.session, {stderr, options.json});
    conversation.results()["result"] = nullptr;
    const bool connects = operation.needsEcu && !options.withoutEcu;
    return conversation.run(connects ? &options.connection : nullptr, [&] {
        conversation.results()["result"] =
            carryOut(conversation, operation.name, work, options.json).result;
    });
}

}  // namespace

Reply carryOut(Conversation& conversation, const std::string& title, const OperationWork& work,
               bool json) {
    Reply reply;
    conversation.step(title, [&] {
        reply = work(conversation.session());
        return reply.outcome;
    });
    if (json) return reply;
    for (const std::string& line : reply.lines) std::printf("%s\n", line.c_str());
    std::fflush(stdout);
    return reply;
}

Action declareOperation(const Operation& operation, CLI::App& command) {
    const auto options = std::make_shared<OperationOptions>();
    options->session.declare(command);
    const OperationWork work = operation.declare(command);
    command.add_flag("--json", options->json,
                     "Print one JSON object (result, steps, log) instead of plain text");
    if (operation.needsEcu) {
        command.add_flag("--no-connect", options->withoutEcu,
                         "Leave the ECU as it is: do not connect it first");
        options->connection.declare(command, false);
    }
    command.footer(
        std::string(operation.footer) +
        (operation.needsEcu ? "\n\nThe options of 'qorctl connect' are taken too." : ""));
    return [&operation, options, work] { return runOperation(operation, *options, work); };
}

}  // namespace qorctl
