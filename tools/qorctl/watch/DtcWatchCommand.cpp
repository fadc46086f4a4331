#include "watch/DtcWatchCommand.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "Numbers.h"
#include "watch/DtcWatch.h"

namespace qorctl {
namespace {

struct DtcWatchOptions {
    SessionOptions session;
    ConnectOptions connection;
    DtcWatch::Options watch;
};

const char* const footer =
    "The list is printed when it has changed; a line tells when reading has failed four times in\n"
    "a row. --json prints one object per line, {\"t\":1.2,\"codes\":[...]} or\n"
    "{\"t\":1.2,\"failed\":true}; the last line is an object of its own: codes, steps, log.\n"
    "Ctrl-C ends the watch in order and counts as success. It ends, and has failed, when the ECU\n"
    "or QOR is lost, unless --keep-going is given.\n"
    "\n"
    "Example:  qorctl watch-dtc settings.ini --period 500\n"
    "\n"
    "The options of 'qorctl connect' are taken too.";

int runWatchDtc(const DtcWatchOptions& options) {
    const bool onTerminal = !options.watch.json && Console(stdout).isTerminal();
    Conversation conversation("watch-dtc", options.session,
                              {onTerminal ? stdout : stderr, options.watch.json, true});
    conversation.results().update(
        {{"lists", 0}, {"failures", 0}, {"codes", nlohmann::json::array()}});
    return conversation.run(&options.connection,
                            [&] { DtcWatch(conversation, options.watch).run(); });
}

}  // namespace

Action declareWatchDtc(CLI::App& command) {
    const auto options = std::make_shared<DtcWatchOptions>();
    options->session.declare(command);
    whole(command.add_option("--period", options->watch.periodMs, "Time between two readings"))
        ->type_name("MS")
        ->check(CLI::Range(10u, 3600000u))
        ->capture_default_str();
    finite(command.add_option("--for", options->watch.forS,
                              "End after that long; without it, at Ctrl-C"))
        ->type_name("SECONDS")
        ->check(CLI::Range(0.1, 1e7));
    command.add_flag("--json", options->watch.json, "Print one JSON object per line");
    command.add_flag("--keep-going", options->session.keepsGoing,
                     "Go on when the ECU or QOR is lost, which then is no failure");
    options->connection.declare(command, false);
    command.footer(footer);
    return [options] { return runWatchDtc(*options); };
}

}  // namespace qorctl
