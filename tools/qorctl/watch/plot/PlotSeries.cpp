#include "watch/plot/PlotSeries.h"

#include <cmath>
#include <limits>
#include <utility>

#include "JsonText.h"

namespace qorctl {
namespace {

constexpr double noValue = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t leastPoints = 4;  // of one curve

/// Leaves the first of each two points, with the gap of the second.
void halve(std::vector<double>& times, std::vector<double>& values) {
    const std::size_t points = times.size();
    const std::size_t kept = (points + 1) / 2;
    for (std::size_t i = 0; i < kept; ++i) {
        const std::size_t dropped = 2 * i + 1;
        const bool hasGap = dropped < points && std::isnan(values[dropped]);
        times[i] = times[2 * i];
        values[i] = hasGap ? noValue : values[2 * i];
    }
    times.resize(kept);
    values.resize(kept);
}

}  // namespace

void PlotSeries::add(Curve curve) {
    curves_.push_back(std::move(curve));
    all_.emplace_back();
}

void PlotSeries::take(const Sample& sample) {
    for (std::size_t i = 0; i < curves_.size(); ++i) {
        if (!sample.values[i]) continue;
        addPoint(all_[i], sample.timeS, *sample.values[i]);
        ++values_;
    }
    for (const std::size_t i : sample.stalled) addPoint(all_[i], sample.timeS, noValue);
}

void PlotSeries::addPoint(Points& points, double timeS, double value) {
    if (points.taken++ % stride_ != 0) {
        if (std::isnan(value)) points.values.back() = noValue;
        return;
    }
    points.times.push_back(std::round(timeS * 1000) / 1000);
    points.values.push_back(value);
    ++points_;
    if (points.times.size() >= leastPoints && 2 * points_ >= maxNumbers_) thinOut();
}

void PlotSeries::thinOut() {
    stride_ *= 2;
    points_ = 0;
    for (Points& points : all_) {
        halve(points.times, points.values);
        points_ += points.times.size();
    }
}

nlohmann::json PlotSeries::asJson() const {
    nlohmann::json curves = nlohmann::json::array();
    for (std::size_t i = 0; i < curves_.size(); ++i) {
        if (!curves_[i].isDrawn) continue;
        curves.push_back({{"name", utf8Of(curves_[i].name)},
                          {"unit", utf8Of(curves_[i].unit)},
                          {"meaning", utf8Of(curves_[i].meaning)},
                          {"times", all_[i].times},
                          {"values", all_[i].values}});  // what is no number becomes null
    }
    return {{"curves", std::move(curves)}};
}

}  // namespace qorctl
