#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace qorctl::serve {

/// The numbers of JSON-RPC 2.0, and below them those of this server.
enum class RpcCode : int {
    parseError = -32700,
    invalidRequest = -32600,
    methodNotFound = -32601,
    invalidParams = -32602,
    internalError = -32603,
    failed = -32000,    ///< the library or QOR said no; `data` has the cause
    busy = -32001,      ///< too many requests of this client wait already
    readOnly = -32002,  ///< the server carries out nothing that changes something
    ending = -32003,    ///< the server ends
    taken = -32004,     ///< another client has it under direct control
    refused = -32005    ///< this client may not
};

/// Thrown by whatever cannot do what a request asks for; becomes the error of its response.
// NOLINTNEXTLINE(bugprone-exception-escape): what it makes of the checks inside of a json's move
struct Failure {
    RpcCode code = RpcCode::internalError;
    std::string message;            ///< UTF-8
    nlohmann::json data = nullptr;  ///< null: none
};

[[noreturn]] inline void refuseParams(std::string why) {
    throw Failure{RpcCode::invalidParams, std::move(why)};
}

}  // namespace qorctl::serve
