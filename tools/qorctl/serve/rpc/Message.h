#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "serve/rpc/Failure.h"

namespace qorctl::serve {

/// One request of a message, as far as it could be understood.
// NOLINTNEXTLINE(bugprone-exception-escape): what it makes of the checks inside of a json's move
struct Request {
    nlohmann::json id = nullptr;
    bool isNotification = false;  ///< gets no response, not even an error
    std::string method;
    nlohmann::json params = nullptr;  ///< an object, an array or null
    std::optional<Failure> failure;   ///< why it is none
};

/// What a client has sent at once: a request or a batch of them.
struct Message {
    bool isBatch = false;
    std::vector<Request> requests;  ///< never empty
};

/// Never fails: what is not understood is a request with a failure. A text whose parts lie deeper
/// than 64 levels is none, and a batch of more than 1000 requests neither.
Message messageOf(const std::string& text);

nlohmann::json responseOf(const nlohmann::json& id, nlohmann::json result);
nlohmann::json responseOf(const nlohmann::json& id, const Failure& failure);

/// What a server says by itself.
nlohmann::json notificationOf(const char* method, nlohmann::json params);

}  // namespace qorctl::serve
