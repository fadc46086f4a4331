#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "common/Awaited.h"
#include "facade/channel/StreamSinks.h"
#include "qorcontrol/Arrivals.h"

namespace sinkstreams {

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

    /// Hands at most so many of the oldest to `put(number, arrival)`, which must be quick, when
    /// there are any or the time has passed; how many. Nothing once it is closed and empty.
    template <class Put>
    std::optional<unsigned int> read(unsigned int capacity, unsigned int timeoutMs, Put&& put) {
        unsigned int got = 0;
        bool isOver = false;
        content_.await(timeoutMs, [&](Content& content) {
            isOver = content.closed && content.count == 0;
            got = static_cast<unsigned int>(std::min<std::size_t>(capacity, content.count));
            for (unsigned int i = 0; i < got; ++i) put(i, content.remove());
            return isOver || got != 0;
        });
        if (isOver) return std::nullopt;
        return got;
    }

    /// It takes nothing more; sends away who waits.
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
        qorcontrol::Arrival remove();
    };

    common::Awaited<Content> content_;
};

}  // namespace sinkstreams
