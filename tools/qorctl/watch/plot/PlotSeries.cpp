#include "watch/plot/PlotSeries.h"

#include <cmath>
#include <limits>
#include <utility>

#include "JsonText.h"

namespace qorctl {
namespace {

constexpr double noValue = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t leastRows = 4;

}  // namespace

void PlotSeries::add(Curve curve) {
    curves_.push_back(std::move(curve));
    values_.emplace_back();
}

void PlotSeries::take(const Sample& sample) {
    if (taken_++ % stride_ != 0) {
        mergeGaps(times_.size() - 1, sample);
        return;
    }
    times_.push_back(std::round(sample.timeS * 1000) / 1000);
    for (std::size_t i = 0; i < curves_.size(); ++i)
        values_[i].push_back(sample.values[i].value_or(noValue));
    if (times_.size() >= leastRows && times_.size() * (curves_.size() + 1) >= maxNumbers_)
        thinOut();
}

void PlotSeries::mergeGaps(std::size_t row, const Sample& sample) {
    for (std::size_t i = 0; i < curves_.size(); ++i)
        if (!sample.values[i]) values_[i][row] = noValue;
}

/// Leaves the first of each two rows, with the gap of the second.
void PlotSeries::thinOut() {
    const std::size_t rows = times_.size();
    const std::size_t kept = (rows + 1) / 2;
    for (std::size_t row = 0; row < kept; ++row) times_[row] = times_[2 * row];
    times_.resize(kept);
    for (std::vector<double>& values : values_) {
        for (std::size_t row = 0; row < kept; ++row) {
            const std::size_t dropped = 2 * row + 1;
            const bool hasGap = dropped < rows && std::isnan(values[dropped]);
            values[row] = hasGap ? noValue : values[2 * row];
        }
        values.resize(kept);
    }
    stride_ *= 2;
}

nlohmann::json PlotSeries::asJson() const {
    nlohmann::json curves = nlohmann::json::array();
    for (std::size_t i = 0; i < curves_.size(); ++i)
        curves.push_back({{"name", utf8Of(curves_[i].name)},
                          {"unit", utf8Of(curves_[i].unit)},
                          {"meaning", utf8Of(curves_[i].meaning)},
                          {"values", values_[i]}});  // what is no number becomes null
    return {{"times", times_}, {"curves", std::move(curves)}};
}

}  // namespace qorctl
