#pragma once

#include <cstdint>
#include <map>

#include "transport/CmdResult.h"

/// The requests that have left and whose senders still wait. Used by the worker thread alone.
class PendingRequests {
public:
    /// A time-out of -1 puts the deadline just behind the present tick, so the next sweep ends
    /// the request.
    void add(std::uint32_t requestId, unsigned int timeoutMs, CmdResultQueue* results);

    /// Ends the request with this id, if there is one.
    void complete(std::uint32_t requestId, std::uint32_t status);

    /// Fails every request whose deadline lies before the present tick.
    void failExpired();

    bool isEmpty() const { return requests_.empty(); }

private:
    struct Request {
        std::uint32_t deadline;
        CmdResultQueue* results;
    };

    std::map<std::uint32_t, Request> requests_;
};
