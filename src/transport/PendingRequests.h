#pragma once

#include <cstdint>
#include <map>

#include "common/Deadline.h"
#include "transport/CmdResult.h"

/// The requests that have left and whose senders still wait. Used by the worker thread alone.
class PendingRequests {
public:
    /// No limit is not meant here: it puts the deadline just before the present moment, so the
    /// next sweep ends the request.
    void add(std::uint32_t requestId, unsigned int timeoutMs, CmdResultQueue* results);

    /// Ends the request with this id, if there is one.
    void complete(std::uint32_t requestId, std::uint32_t status);

    /// Fails every request whose deadline lies before the present moment.
    void failExpired();

    bool isEmpty() const { return requests_.empty(); }

private:
    struct Request {
        common::Deadline deadline;
        CmdResultQueue* results;
    };

    std::map<std::uint32_t, Request> requests_;
};
