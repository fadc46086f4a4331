#include "Subcommands.h"

#include "demo/DemoCommand.h"

namespace qorctl {

// To add a command, write its `declare` in a file of its own and add a row here.
const std::vector<Subcommand>& subcommands() {
    static const std::vector<Subcommand> table = {
        {"demo", "Tour: start QOR, connect the ECU, read and write parameters, shut down",
         &declareDemo},
    };
    return table;
}

}  // namespace qorctl
