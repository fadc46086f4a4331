#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "common/Moment.h"

/// One value that QOR sent by itself.
struct ArrivedValue {
    double value = 0;
    common::Moment tick;
    std::uint64_t number = 0;  ///< counts from 1 what arrived for its parameter
};

/// What arrived for one streamed parameter: all of it is counted, the latest are kept, so that a
/// reader who was held up for a moment loses nothing, and one who was held up longer knows how
/// much.
class Arrivals {
public:
    static constexpr std::size_t keptCount = 256;

    void note(double value, common::Moment tick) {
        recent_.push_back({value, tick, count_ + 1});
        ++count_;
        if (recent_.size() > keptCount) recent_.pop_front();
    }

    std::uint64_t count() const { return count_; }

    /// Adds what arrived after the one of that number, as far as it is kept.
    void collect(std::uint64_t after, std::vector<ArrivedValue>& values) const {
        for (const ArrivedValue& each : recent_)
            if (each.number > after) values.push_back(each);
    }

private:
    std::deque<ArrivedValue> recent_;
    std::uint64_t count_ = 0;
};
