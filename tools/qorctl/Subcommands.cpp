#include "Subcommands.h"

#include "batch/BatchCommand.h"
#include "demo/DemoCommand.h"
#include "doctor/DoctorCommand.h"
#include "operations/OperationCommand.h"
#include "serve/ServeCommand.h"
#include "watch/DtcWatchCommand.h"
#include "watch/WatchCommand.h"

namespace qorctl {
namespace {

std::vector<Subcommand> allCommands() {
    std::vector<Subcommand> table = {
        {"demo", "Tour: start QOR, connect the ECU, read and write parameters, shut down",
         "Whole conversations", &declareDemo},
        {"batch", "Carry out operations line by line in one conversation", "Whole conversations",
         &declareBatch},
        {"watch", "Show values of parameters as they flow, and plot them", "Whole conversations",
         &declareWatch},
        {"watch-dtc", "Show the trouble codes whenever they change", "Whole conversations",
         &declareWatchDtc},
        {"serve", "Let programs of any language use the library, by JSON-RPC",
         "Whole conversations", &declareServe},
        {"doctor", "Check whether a host would work with a settings file, changing nothing",
         "Before anything else", &declareDoctor},
    };
    for (const Operation& row : operations())
        table.push_back({row.name, row.summary, "One operation of the library",
                         [&row](CLI::App& command) { return declareOperation(row, command); }});
    return table;
}

}  // namespace

// To add a command, write its `declare` in a file of its own and add a row here; an operation of
// the library goes into the table in operations/Operations.cpp.
const std::vector<Subcommand>& subcommands() {
    static const std::vector<Subcommand> table = allCommands();
    return table;
}

}  // namespace qorctl
