#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "cinterface/Awaited.h"
#include "cinterface/QorControl.h"
#include "facade/channel/StreamSinks.h"

namespace cinterface {

/// What QOR has sent of a stream and the reader has not got yet: as many values as the reader
/// wanted, then the oldest go. It takes all its memory at the beginning, so the agent never fails
/// for want of any.
class ValueRing final : public channel::ValueSink {
public:
    ValueRing(unsigned int slots, std::size_t nameCount);

    void take(const channel::Sample& sample) override;
    void notePreparation(const common::Verdict& verdict) override;

    /// How the last preparation ended; `notReady` before the first one.
    common::Verdict preparation();

    /// At most so many of the oldest, when there are any or the time has passed. Nothing if it is
    /// closed.
    std::optional<unsigned int> read(QorSample* samples, unsigned int capacity,
                                     unsigned int timeoutMs);

    /// Sends away who waits.
    void close();

private:
    struct Slot {
        double value = 0;
        std::uint64_t arrivalMs = 0;
        std::uint32_t name = 0;
        std::uint32_t missed = 0;  // before it arrived here, see Name
    };
    struct Name {
        std::uint32_t missed = 0;   // so many did not arrive here
        std::uint32_t dropped = 0;  // so many had to go from here
    };
    struct Content {
        std::vector<Slot> slots;
        std::vector<Name> names;
        std::size_t first = 0;
        std::size_t count = 0;
        bool closed = false;
        common::Verdict preparation{qorcontrol::Cause::notReady, "", false};

        void drop();
        void add(const channel::Sample& sample);
        QorSample remove();
    };

    Awaited<Content> content_;
};

}  // namespace cinterface
