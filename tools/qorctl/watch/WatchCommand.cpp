#include "watch/WatchCommand.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>

#include "HostPaths.h"
#include "Numbers.h"
#include "watch/ParamWatch.h"
#include "watch/plot/PlotFile.h"

namespace qorctl {
namespace {

struct WatchOptions {
    SessionOptions session;
    ConnectOptions connection;
    std::vector<std::string> names;
    std::vector<std::string> asNumbers;
    double forS = 0;
    std::string plot;
    bool csv = false;
    bool json = false;
};

const char* const footer =
    "On a terminal the values stand in a table that is redrawn in place. Elsewhere a value is\n"
    "printed as \"time_s NAME value\" when it arrives and has changed, and with \"-\" as its "
    "value\n"
    "when it has ceased to come: nothing for three refresh periods (see --refresh), 0.2 s at "
    "least.\n"
    "--csv prints a row for each moment in which values arrived, with empty cells for those that\n"
    "did not. Each value that QOR has sent stands there once; a stall adds no row.\n"
    "--json prints the same as one object per line, {\"t\":1.2,\"values\":{\"NAME\":3}}; the last\n"
    "line is an object of its own: parameters, steps, log.\n"
    "A parameter that looks like a text (see --numbers) is asked for once a second and stands "
    "there when it has changed; "
    "a\n"
    "page has no curve of it.\n"
    "Times are those of arrival, in seconds from the begin of the watch; the clock moves in steps\n"
    "of up to 20 ms, so values of one step have the same time.\n"
    "\n"
    "The watch ends, and has failed, when the ECU or QOR is lost; it has failed, too, if a\n"
    "parameter that had values brought none in the last 2 s (five refresh periods, if that is\n"
    "longer). With --keep-going neither ends nor fails it, and both are told.\n"
    "\n"
    "Ctrl-C ends the watch in order and counts as success. A name that QOR does not know makes\n"
    "the command fail before anything is watched.\n"
    "\n"
    "Example:  qorctl watch settings.ini EngineSpeed OilPressure --for 20 --plot run.html\n"
    "\n"
    "The options of 'qorctl connect' are taken too.";

std::vector<std::string> eachOnce(const std::vector<std::string>& names) {
    std::vector<std::string> once;
    for (const std::string& name : names)
        if (std::find(once.begin(), once.end(), name) == once.end()) once.push_back(name);
    return once;
}

/// Standard output belongs to the samples, unless a person reads them there.
Conversation::Output outputOf(const WatchOptions& options) {
    const bool isForReading = !options.csv && !options.json;
    const bool onTerminal = isForReading && Console(stdout).isTerminal();
    return {onTerminal ? stdout : stderr, options.json, true};
}

int runWatch(const WatchOptions& options, const PlotFile* plot) {
    Conversation conversation("watch", options.session, outputOf(options));
    const SampleFormat format = options.csv    ? SampleFormat::csv
                                : options.json ? SampleFormat::json
                                               : SampleFormat::readable;
    conversation.results().update(
        {{"seconds", 0.0}, {"samples", 0}, {"parameters", nlohmann::json::array()}});
    return conversation.run(&options.connection, [&] {
        PlotSeries series;
        ParamWatch watch(conversation,
                         {eachOnce(options.names), options.asNumbers, options.forS, format},
                         plot != nullptr ? &series : nullptr);
        watch.run();
        if (plot == nullptr) return;
        conversation.closingStep("write the plot", [&] {
            return series.isEmpty() ? Outcome::failure("there is no value to draw")
                                    : plot->write(series, conversation.session());
        });
    });
}

/// The file that cannot be written is found out before anything is started.
int checkAndRun(const WatchOptions& options) {
    if (options.plot.empty()) return runWatch(options, nullptr);
    std::optional<PlotFile> plot;
    try {
        plot.emplace(paths::absoluteFile(options.plot));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qorctl watch: --plot %s: %s\n", options.plot.c_str(), error.what());
        return exitUsage;
    }
    return runWatch(options, &*plot);
}

}  // namespace

Action declareWatch(CLI::App& command) {
    const auto options = std::make_shared<WatchOptions>();
    options->session.declare(command);
    command.add_option("NAME", options->names, "Parameters")->required();
    finite(command.add_option("--for", options->forS, "End after that long; without it, at Ctrl-C"))
        ->type_name("SECONDS")
        ->check(CLI::Range(0.1, 1e7));
    command
        .add_option("--numbers", options->asNumbers,
                    "Parameters that look like texts and are numbers; NAME,NAME for several")
        ->type_name("NAME")
        ->delimiter(',')
        ->expected(1);
    CLI::Option* const csv =
        command.add_flag("--csv", options->csv, "Print comma-separated values, with a header");
    command.add_flag("--json", options->json, "Print one JSON object per line")->excludes(csv);
    command
        .add_option("--plot", options->plot,
                    "At the end write a page with the curves, which needs nothing else")
        ->type_name("FILE.html");
    command.add_flag("--keep-going", options->session.keepsGoing,
                     "Go on when the ECU, QOR or a stream is lost, which then is no failure");
    options->connection.declare(command, false);
    command.footer(footer);
    return [options] { return checkAndRun(*options); };
}

}  // namespace qorctl
