#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "watch/Sampler.h"

namespace qorctl {

/// What a page of curves is drawn from: the values of a whole watch, each at its time, and where a
/// curve stalled a gap. Its memory is bounded: when it is full, every second value of each curve
/// goes and from then on only every second, fourth ... is kept. A gap never goes that way.
class PlotSeries {
public:
    struct Curve {
        std::string name;
        std::string unit;
        std::string meaning;
        bool isDrawn = true;  ///< false of a text
    };

    static constexpr std::size_t usualMaxNumbers = 2'000'000;

    explicit PlotSeries(std::size_t maxNumbers = usualMaxNumbers) : maxNumbers_(maxNumbers) {}

    /// All curves come before the first sample.
    void add(Curve curve);
    void take(const Sample& sample);

    bool isEmpty() const { return points_ == 0; }
    /// Of all curves, with their gaps.
    std::size_t points() const { return points_; }
    /// Of all that were taken, whatever is kept of them.
    std::size_t values() const { return values_; }
    /// One for all values, 2 if every second one is kept ...
    std::size_t stride() const { return stride_; }

    /// {"curves": [{name, unit, meaning, times, values}]}; null where there is a gap.
    nlohmann::json asJson() const;

private:
    struct Points {
        std::vector<double> times;
        std::vector<double> values;  // not a number where there is none
        std::size_t taken = 0;
    };

    void addPoint(Points& points, double timeS, double value);
    void thinOut();

    const std::size_t maxNumbers_;
    std::vector<Curve> curves_;
    std::vector<Points> all_;  // per curve
    std::size_t points_ = 0;
    std::size_t values_ = 0;
    std::size_t stride_ = 1;
};

}  // namespace qorctl
