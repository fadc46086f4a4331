#include "demo/DemoCommand.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "demo/Tour.h"

namespace qorctl {
namespace {

struct DemoOptions {
    SessionOptions session;
    bool json = false;
};

const char* const footer =
    "The tour wants the parameters of the simulated engine controller; QOR is started by the\n"
    "library if the settings name an executable and it does not run yet. What is written is\n"
    "restored at once.\n"
    "\n"
    "Example:  qorctl demo bin/qor-settings.ini --json > results.json";

int runDemo(const DemoOptions& options) {
    Conversation conversation("demo", options.session,
                              {options.json ? stderr : stdout, options.json});
    const ConnectOptions asUsual;
    return conversation.run(&asUsual, [&] { Tour(conversation).run(); });
}

}  // namespace

Action declareDemo(CLI::App& command) {
    const auto options = std::make_shared<DemoOptions>();
    options->session.declare(command);
    command.add_flag(
        "--json", options->json,
        "Print the results as one JSON object; the tour's text goes to standard error");
    command.footer(footer);
    return [options] { return runDemo(*options); };
}

}  // namespace qorctl
