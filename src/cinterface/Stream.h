#pragma once

#include <memory>
#include <utility>

#include "cinterface/ValueRing.h"

namespace cinterface {

class Session;

/// What a stream's number stands for.
class Stream {
public:
    Stream(std::weak_ptr<Session> session, std::shared_ptr<ValueRing> ring)
        : session_(std::move(session)), ring_(std::move(ring)) {}

    ValueRing& ring() const { return *ring_; }

    /// Takes the ring away from the agent and sends away who waits. By who has taken the stream of
    /// that number out of the table.
    void end(std::uint32_t number);

private:
    const std::weak_ptr<Session> session_;
    const std::shared_ptr<ValueRing> ring_;
};

}  // namespace cinterface
