#include "watch/LiveTable.h"

#include <fmt/format.h>

#include "TextTable.h"

namespace qorctl {
namespace {

using Align = TextTable::Align;

std::string ageOf(const ParamHistory& history, double nowS) {
    return history.isSeen ? fmt::format("{:.1f} s", nowS - history.seenS) : "never";
}

}  // namespace

std::vector<std::string> liveTable(const Sampler& sampler, const std::vector<std::string>& units,
                                   double nowS) {
    TextTable table({{"parameter"},
                     {"value", Align::right},
                     {"unit"},
                     {"lowest", Align::right},
                     {"highest", Align::right},
                     {"last seen", Align::right}});
    const auto& histories = sampler.histories();
    for (std::size_t i = 0; i < histories.size(); ++i) {
        const ParamHistory& history = histories[i];
        const std::string value = history.isText ? history.text : shown(history.last);
        table.add({history.name, sampler.isFresh(history, nowS) ? value : "-", units[i],
                   history.hasRange ? shown(history.lowest) : "",
                   history.hasRange ? shown(history.highest) : "", ageOf(history, nowS)});
    }
    std::vector<std::string> lines = table.lines();
    lines.push_back(fmt::format("{:.1f} s, {} samples", nowS, sampler.samples()));
    return lines;
}

}  // namespace qorctl
