#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qorctl::serve {

/// How long something has taken, counted by upper bounds that go from the shortest call over a
/// local connection to the longest connect. A plain record: whoever shares it guards it.
class Histogram {
public:
    /// Upper bounds in seconds, each included; what is longer is counted in a bucket of its own.
    static constexpr std::array<double, 15> bounds = {
        0.0005, 0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 30};

    void add(double seconds) {
        std::size_t place = 0;
        while (place < bounds.size() && seconds > bounds[place]) ++place;
        ++buckets_[place];
        ++count_;
        sum_ += seconds;
    }

    std::uint64_t count() const { return count_; }
    double sum() const { return sum_; }
    /// Of what has taken longer than the bound before, and no longer than this one; the last one
    /// has no bound.
    const std::array<std::uint64_t, bounds.size() + 1>& buckets() const { return buckets_; }

private:
    std::array<std::uint64_t, bounds.size() + 1> buckets_{};
    std::uint64_t count_ = 0;
    double sum_ = 0;
};

}  // namespace qorctl::serve
