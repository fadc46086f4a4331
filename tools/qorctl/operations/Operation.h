#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "CallNotes.h"
#include "Session.h"

namespace CLI {
class App;
}

namespace qorctl {

/// What an operation gave: how it ended, and what it brought, for people and for programs.
// NOLINTNEXTLINE(bugprone-exception-escape): what it makes of the checks inside of a json's move
struct Reply {
    Outcome outcome;
    std::vector<std::string> lines;  ///< for standard output
    nlohmann::json result;           ///< the same for --json

    static Reply success(std::string text = {}) { return of(Outcome::success(std::move(text))); }
    /// Of what no call of the library made fail.
    static Reply failure(std::string reason) { return of(Outcome::failure(std::move(reason))); }
    static Reply of(Outcome outcome) { return {std::move(outcome), {}, nullptr}; }
    /// Of the call that has just returned `worked`, the last of an operation.
    static Reply ofCall(bool worked, std::string success, std::string failure,
                        CallNotes calls = {}) {
        return of(calls.note(worked) ? calls.success(std::move(success))
                                     : calls.failure(std::move(failure)));
    }
};

/// What an operation does once its command line is understood.
using OperationWork = std::function<Reply(Session&)>;

/// One operation of the facade as a command: a row of the table in Operations.cpp. It serves as a
/// command of its own and as a line of a batch.
struct Operation {
    const char* name;
    const char* summary;
    const char* footer;  ///< an example, and what surprises
    bool needsEcu;
    OperationWork (*declare)(CLI::App& command);
};

const std::vector<Operation>& operations();

/// The declarations, by subject.
OperationWork declareConnect(CLI::App& command);
OperationWork declarePing(CLI::App& command);
OperationWork declareStatus(CLI::App& command);
OperationWork declarePath(CLI::App& command);
OperationWork declareSegment(CLI::App& command);
OperationWork declareOpenModel(CLI::App& command);

OperationWork declareList(CLI::App& command);
OperationWork declareDescribe(CLI::App& command);
OperationWork declareGet(CLI::App& command);
OperationWork declareGetString(CLI::App& command);
OperationWork declareGetAtOnce(CLI::App& command);

OperationWork declareSet(CLI::App& command);
OperationWork declareSetDynamic(CLI::App& command);
OperationWork declareStartControl(CLI::App& command);
OperationWork declareStopControl(CLI::App& command);

OperationWork declareReadDtc(CLI::App& command);
OperationWork declareClearDtc(CLI::App& command);
OperationWork declareKwp(CLI::App& command);

OperationWork declareConnectCan(CLI::App& command);
OperationWork declareReadCan(CLI::App& command);
OperationWork declareSendCan(CLI::App& command);

}  // namespace qorctl
