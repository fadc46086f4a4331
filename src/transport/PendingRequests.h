#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "common/Deadline.h"
#include "transport/CmdResult.h"
#include "transport/Departure.h"

/// The requests that have left and whose senders still wait. Used by the worker thread alone.
class PendingRequests {
public:
    /// No limit is not meant here: it puts the deadline just before the present moment, so the
    /// next sweep ends the request.
    /// `departure` is told what a failure will have been; it may be null.
    void add(std::uint32_t requestId, unsigned int timeoutMs, CmdResultQueue* results,
             std::shared_ptr<Departure> departure = nullptr);

    /// Ends the request with this id, if there is one; a failure is a refusal.
    void complete(std::uint32_t requestId, std::uint32_t status);

    /// Nothing will come any more for those that wait; they fail at their deadlines all the same.
    void noteConnectionLost();

    /// Fails every request whose deadline lies before the present moment.
    void failExpired();

    bool isEmpty() const { return requests_.empty(); }

private:
    struct Request {
        common::Deadline deadline;
        CmdResultQueue* results;
        std::shared_ptr<Departure> departure;
    };

    std::map<std::uint32_t, Request> requests_;
};
