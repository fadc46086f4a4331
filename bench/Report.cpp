#include "Report.h"

#include <fmt/core.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

std::string ratio(double value, double bound) {
    return bound > 0 ? fmt::format("{:.2f}", value / bound) : "-";
}

}  // namespace

void Report::add(const std::string& name, const Samples& samples, double p50Bound,
                 double p99Bound) {
    rows_.push_back({name, samples, p50Bound, p99Bound});
}

void Report::print() const {
    fmt::print("{:<44}{:>7}{:>9}{:>9}{:>9}{:>9}{:>8}{:>8}\n", "microseconds", "count", "min", "p50",
               "p95", "p99", "p50/b", "p99/b");
    for (const Row& row : rows_)
        fmt::print("{:<44}{:>7}{:>9.2f}{:>9.2f}{:>9.2f}{:>9.2f}{:>8}{:>8}\n", row.name,
                   row.samples.count(), row.samples.min(), row.samples.p50(), row.samples.p95(),
                   row.samples.p99(), ratio(row.samples.p50(), row.p50Bound),
                   ratio(row.samples.p99(), row.p99Bound));
    fmt::print("p50/b and p99/b: against the bound that the figure is held to (aim: at most 1)\n");
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
                           {"p99BoundUs", row.p99Bound}});
    std::ofstream file(path);
    file << figures.dump(2) << '\n';
    if (!file) throw std::runtime_error("cannot write " + path);
}
