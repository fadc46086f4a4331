#pragma once

#include "Action.h"
#include "operations/Operation.h"

namespace CLI {
class App;
}

namespace qorctl {

class Conversation;

/// Does `work` as a step of the conversation. What it brought goes to standard output, unless that
/// belongs to a JSON object. A step that was not run because of Ctrl-C has failed and brought
/// nothing.
Reply carryOut(Conversation& conversation, const std::string& title, const OperationWork& work,
               bool json);

/// The operation as a command of its own: QOR is started, the ECU connected if it needs one, the
/// operation done, everything shut down.
Action declareOperation(const Operation& operation, CLI::App& command);

}  // namespace qorctl
