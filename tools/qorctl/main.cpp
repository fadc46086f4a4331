// qorctl: remote control of QOR from a command line, through the QorControlFacade library.

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "Interrupt.h"
#include "Numbers.h"
#include "Spelling.h"
#include "Subcommands.h"
#include "VersionText.h"

namespace {

using namespace qorctl;

const char* const footer =
    "Exit codes: 0 everything succeeded, 1 something failed, 2 the command line is wrong; of the\n"
    "doctor 3: a host would not work; 4: an actuator could not be given back and may still be "
    "under\n"
    "direct control, whatever else happened; 5: another program talks to that QOR, so nothing\n"
    "was begun.\n"
    "\n"
    "Paths may be relative to the current directory or Unix-style. The library's trace goes to\n"
    "qorctl.log beside the program unless --trace names another file, and to qorctl-PROCESS.log\n"
    "while another program writes that one. Of a failed step the cause\n"
    "is printed and what to check, where the library tells them; with --json they are the step's\n"
    "\"cause\". Ctrl-C ends the work in order and shuts QOR down; a second Ctrl-C ends the "
    "program\n"
    "at once.\n";

/// Declares all commands; parsing sets `action` to the chosen one's.
void declareAll(CLI::App& app, Action& action) {
    app.allow_windows_style_options(false);  // else "/home/..." would be an option
    app.footer(numbersHelp + ("\n" + std::string(footer)));
    app.require_subcommand(0, 1);  // none at all is found out later, after unknown words
    for (const Subcommand& row : subcommands()) {
        CLI::App* const command = app.add_subcommand(row.name, row.summary)->group(row.group);
        const Action run = row.declare(*command);
        command->footer(command->get_footer() + "\n");
        command->callback([&action, run] { action = run; });
    }
}

/// Whether the first word is a command, or an option. The parser would only say that it did not
/// expect a word that is none.
bool isCommand(const std::string& word) {
    std::vector<std::string> names;
    for (const Subcommand& row : subcommands()) names.emplace_back(row.name);
    if (word.empty() || word.front() == '-') return true;
    if (std::find(names.begin(), names.end(), word) != names.end()) return true;
    const std::string nearest = nearestOf(word, names);
    std::fprintf(stderr, "qorctl: there is no command \"%s\"", word.c_str());
    if (!nearest.empty()) std::fprintf(stderr, "; did you mean \"%s\"?", nearest.c_str());
    std::fprintf(stderr, "\nRun with --help for more information.\n");
    return false;
}

/// The exit code of `qorctl` with this command line.
int run(int argc, char** argv) {
    CLI::App app("Remote control of QOR, the ECU calibration application.", "qorctl");
    Action action;
    app.set_version_flag("--version", versionText, "Print the versions of qorctl and the library");
    declareAll(app, action);
    if (argc > 1 && !isCommand(argv[1])) return exitUsage;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exitSuccess : exitUsage;
    }
    if (!action) {
        std::fprintf(stderr, "%s", app.help().c_str());
        return exitUsage;
    }
    interrupt::install();
    return action();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qorctl: %s\n", error.what());
    } catch (...) {
        std::fprintf(stderr, "qorctl: an unknown exception\n");
    }
    return exitFailure;
}
