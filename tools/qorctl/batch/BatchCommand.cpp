#include "batch/BatchCommand.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

#include "batch/BatchScript.h"
#include "CauseJson.h"
#include "Conversation.h"
#include "HostPaths.h"
#include "JsonText.h"
#include "operations/OperationCommand.h"

namespace qorctl {
namespace {

struct BatchOptions {
    SessionOptions session;
    ConnectOptions connection;
    std::string file;
    bool withoutEcu = false;
    bool json = false;
};

const char* const footer =
    "A line is an operation as on the command line, without \"qorctl\" and the settings; there is\n"
    "\"sleep MS\" too. Words with blanks stand between double quotes, # begins a comment. All "
    "lines\n"
    "are checked before QOR is started. The ECU is connected first if an operation needs it and\n"
    "no line says \"connect\" before. Actuators that were not given back are given back in the\n"
    "end, the last one first, also after a failure or Ctrl-C.\n"
    "\n"
    "Example:  start-control ThrottleActuator\n"
    "          set ThrottleActuator 30\n"
    "          sleep 500\n"
    "          get-at-once EngineSpeed EngineLoad\n"
    "          stop-control ThrottleActuator\n"
    "\n"
    "The options of 'qorctl connect' are taken too.";

BatchScript readScript(const std::string& file) {
    if (file.empty() || file == "-") return BatchScript(std::cin);
    std::ifstream lines(paths::absolute(file));
    if (!lines) throw std::invalid_argument("it cannot be read");
    return BatchScript(lines);
}

/// False if the row of operations ends here.
bool runStep(Conversation& conversation, const BatchStep& step, const BatchOptions& options) {
    const Reply reply = carryOut(conversation, step.text, step.work, options.json);
    conversation.results()["operations"].push_back(
        {{"line", utf8Of(step.text)},
         {"command", step.command},
         {"ok", reply.outcome.ok},
         {"cause", jsonOf(reply.outcome.told)},
         {"mayBelongToEarlier", reply.outcome.told.mayBelongToEarlier},
         {"result", reply.result}});
    return options.session.keepsGoing || (reply.outcome.ok && conversation.session().mayGoOn());
}

int runBatch(const BatchOptions& options, const BatchScript& script) {
    Conversation conversation("batch", options.session, {stderr, options.json});
    conversation.results()["operations"] = nlohmann::json::array();
    conversation.session().expectMore();
    const bool connects = script.wantsConnection() && !options.withoutEcu;
    return conversation.run(connects ? &options.connection : nullptr, [&] {
        for (const BatchStep& step : script.steps())
            if (!runStep(conversation, step, options)) break;
    });
}

int checkAndRun(const BatchOptions& options) {
    std::optional<BatchScript> script;
    try {
        script.emplace(readScript(options.file));
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "qorctl batch: %s: %s\n",
                     options.file.empty() ? "standard input" : options.file.c_str(), error.what());
        return exitUsage;
    }
    return runBatch(options, *script);
}

}  // namespace

Action declareBatch(CLI::App& command) {
    const auto options = std::make_shared<BatchOptions>();
    options->session.declare(command);
    command.add_option("FILE", options->file, "File of lines; without it, standard input");
    command.add_flag("--keep-going", options->session.keepsGoing,
                     "Go on behind an operation that failed; that the ECU or QOR is lost then "
                     "is no failure of its own");
    command.add_flag("--no-connect", options->withoutEcu,
                     "Leave the ECU as it is: do not connect it first");
    command.add_flag("--json", options->json,
                     "Print one JSON object (operations, steps, log) instead of plain text");
    options->connection.declare(command, false);
    command.footer(footer);
    return [options] { return checkAndRun(*options); };
}

}  // namespace qorctl
