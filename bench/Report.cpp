#include "Report.h"

#include <fmt/core.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

std::string ratio(double value, double bound) {
    return bound > 0 ? fmt::format("{:.2f}", value / bound) : "-";
}

/// Where a curve of all samples is looked at.
constexpr double shares[] = {0,   0.01, 0.05, 0.1, 0.2,  0.3,  0.4,  0.5,
                             0.6, 0.7,  0.8,  0.9, 0.95, 0.98, 0.99, 1};

/// Pairs: the share of the samples, and the microseconds below which it lies.
nlohmann::ordered_json quantilesOf(const Samples& samples) {
    auto quantiles = nlohmann::ordered_json::array();
    for (const double share : shares) quantiles.push_back({share, samples.percentile(share)});
    return quantiles;
}

}  // namespace

void Report::add(const std::string& name, const Samples& samples, double p50Bound,
                 double p99Bound) {
    rows_.push_back({name, samples, p50Bound, p99Bound});
}

void Report::addRate(const std::string& name, double perSecond, double leastBound) {
    rates_.push_back({name, perSecond, leastBound});
}

void Report::addAmount(const std::string& name, const std::string& unit, double amount,
                       double mostBound) {
    amounts_.push_back({name, unit, amount, mostBound});
}

void Report::print() const {
    fmt::print("{:<44}{:>7}{:>9}{:>10}{:>10}{:>10}{:>8}{:>8}\n", "microseconds", "count", "min",
               "p50", "p95", "p99", "p50/b", "p99/b");
    for (const Row& row : rows_)
        fmt::print("{:<44}{:>7}{:>9.2f}{:>10.2f}{:>10.2f}{:>10.2f}{:>8}{:>8}\n", row.name,
                   row.samples.count(), row.samples.min(), row.samples.p50(), row.samples.p95(),
                   row.samples.p99(), ratio(row.samples.p50(), row.p50Bound),
                   ratio(row.samples.p99(), row.p99Bound));
    fmt::print("p50/b and p99/b: against the bound that the figure is held to (aim: at most 1)\n");
    printAmounts();
    if (rates_.empty()) return;
    fmt::print("{:<44}{:>12}{:>8}\n", "per second", "rate", "rate/b");
    for (const Rate& rate : rates_)
        fmt::print("{:<44}{:>12.0f}{:>8}\n", rate.name, rate.perSecond,
                   ratio(rate.perSecond, rate.leastBound));
    fmt::print("rate/b: against the least that is aimed at (aim: at least 1)\n");
}

void Report::printAmounts() const {
    for (const Amount& each : amounts_)
        fmt::print("{:<52}{:>12.1f} {:<12}{:>8}\n", each.name, each.amount, each.unit,
                   ratio(each.amount, each.mostBound));
}

void Report::writeJson(const std::string& path) const {
    nlohmann::ordered_json figures = nlohmann::ordered_json::array();
    for (const Row& row : rows_)
        figures.push_back({{"name", row.name},
                           {"count", row.samples.count()},
                           {"minUs", row.samples.min()},
                           {"p50Us", row.samples.p50()},
                           {"p95Us", row.samples.p95()},
                           {"p99Us", row.samples.p99()},
                           {"p50BoundUs", row.p50Bound},
                           {"p99BoundUs", row.p99Bound},
                           {"partP50Us", row.samples.medians(static_cast<std::size_t>(rounds_))},
                           {"quantilesUs", quantilesOf(row.samples)}});
    for (const Rate& rate : rates_)
        figures.push_back({{"name", rate.name},
                           {"perSecond", rate.perSecond},
                           {"leastPerSecond", rate.leastBound}});
    for (const Amount& each : amounts_)
        figures.push_back({{"name", each.name},
                           {"unit", each.unit},
                           {"amount", each.amount},
                           {"mostBound", each.mostBound}});
    std::ofstream file(path);
    file << nlohmann::ordered_json{{"rounds", rounds_}, {"figures", figures}}.dump(1) << '\n';
    if (!file) throw std::runtime_error("cannot write " + path);
}
