#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <vector>

#include "serve/rpc/Failure.h"

namespace qorctl::serve {

/// Gets the answer to one message: a response, an array of them, or null where nothing is to be
/// said. Called once, on any thread; must not block.
using Reply = std::function<void(const nlohmann::json& whole)>;

/// The responses of one message on their way back: those of a batch go together.
class Answers {
public:
    /// @param open  so many requests the message has.
    Answers(bool isBatch, std::size_t open, Reply reply);
    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;

    /// Of one request; null: none, of a notification. Any thread may call.
    void add(nlohmann::json response);

private:
    const bool isBatch_;
    std::mutex mutex_;
    std::vector<nlohmann::json> responses_;  // guarded by mutex_
    std::size_t open_;                       // guarded by mutex_
    Reply reply_;                            // of whoever has added the last one
};

/// A request that waits to be answered. If nobody does, it is told at its end that the server, or
/// what it was asked by, has gone.
class Pending {
public:
    Pending(std::shared_ptr<Answers> answers, nlohmann::json id, bool isNotification);
    ~Pending();
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;

    void answer(nlohmann::json result);
    void answer(const Failure& failure);

private:
    void add(nlohmann::json response);

    std::shared_ptr<Answers> answers_;  // null once it is answered
    const nlohmann::json id_;
    const bool isNotification_;
};

}  // namespace qorctl::serve
