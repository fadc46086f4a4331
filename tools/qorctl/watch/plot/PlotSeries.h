#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "watch/Sampler.h"

namespace qorctl {

/// What a page of curves is drawn from: the samples of a whole watch. Its memory is bounded: when
/// it is full, every second sample goes and from then on only every second, fourth ... is kept. A
/// gap never goes that way.
class PlotSeries {
public:
    struct Curve {
        std::string name;
        std::string unit;
        std::string meaning;
    };

    static constexpr std::size_t usualMaxNumbers = 2'000'000;

    explicit PlotSeries(std::size_t maxNumbers = usualMaxNumbers) : maxNumbers_(maxNumbers) {}

    /// All curves come before the first sample.
    void add(Curve curve);
    void take(const Sample& sample);

    bool isEmpty() const { return times_.empty(); }
    std::size_t rows() const { return times_.size(); }
    std::size_t curves() const { return curves_.size(); }
    /// One for all samples, 2 if every second one is kept ...
    std::size_t stride() const { return stride_; }

    /// {"times": [...], "curves": [{name, unit, meaning, values}]}; null where there is no value.
    nlohmann::json asJson() const;

private:
    void thinOut();
    void mergeGaps(std::size_t row, const Sample& sample);

    const std::size_t maxNumbers_;
    std::vector<Curve> curves_;
    std::vector<double> times_;
    std::vector<std::vector<double>> values_;  // per curve; not a number where there is none
    std::size_t stride_ = 1;
    std::size_t taken_ = 0;
};

}  // namespace qorctl
