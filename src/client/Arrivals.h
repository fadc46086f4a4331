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
    std::uint64_t order = 0;   ///< counts what arrived, whatever its parameter
};

/// How far a reader is with one parameter.
struct ArrivalCursor {
    std::int32_t index = 0;
    std::uint64_t taken = 0;  ///< the number of the last value that it has had
};

/// What arrived for one parameter: all of it is counted, the latest are kept, so that a reader who
/// was held up for a moment loses nothing, and one who was held up longer knows how much.
class Arrivals {
public:
    static constexpr std::size_t keptCount = 256;

    void note(double value, common::Moment tick, std::uint64_t order) {
        recent_.push_back({value, tick, count_ + 1, order});
        ++count_;
        if (recent_.size() > keptCount) recent_.pop_front();
    }

    std::uint64_t count() const { return count_; }

    /// Adds what arrived after the one of that number, as far as it is kept.
    void collect(std::uint64_t after, std::vector<ArrivedValue>& values) const {
        const std::uint64_t behind = count_ > after ? count_ - after : 0;
        const std::size_t wanted =
            behind < recent_.size() ? static_cast<std::size_t>(behind) : recent_.size();
        values.insert(values.end(), recent_.end() - static_cast<std::ptrdiff_t>(wanted),
                      recent_.end());
    }

private:
    std::deque<ArrivedValue> recent_;
    std::uint64_t count_ = 0;
};
