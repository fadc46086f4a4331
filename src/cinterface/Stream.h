#pragma once

#include <memory>
#include <utility>

#include "facade/ValueRing.h"
#include "qorcontrol/Outcome.h"

namespace cinterface {

using sinkstreams::ValueRing;

class Session;

/// What a stream's number stands for.
class Stream {
public:
    Stream(std::weak_ptr<Session> session, std::shared_ptr<ValueRing> ring)
        : session_(std::move(session)), ring_(std::move(ring)) {}

    ValueRing& ring() const { return *ring_; }
    /// Null once its handle is closed.
    std::shared_ptr<Session> session() const { return session_.lock(); }

    /// Takes the ring away from the agent and sends away who waits. By who has taken the stream of
    /// that number out of the table. `waits`: until the agent has let QOR know.
    qorcontrol::Outcome end(std::uint32_t number, bool waits);

private:
    const std::weak_ptr<Session> session_;
    const std::shared_ptr<ValueRing> ring_;
};

}  // namespace cinterface
