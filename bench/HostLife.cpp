#include "HostLife.h"

#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace {

constexpr Holdings HostLife::*times[] = {&HostLife::begin, &HostLife::connected, &HostLife::used,
                                         &HostLife::bare,  &HostLife::bareEnded, &HostLife::calling,
                                         &HostLife::ended};

struct Kind {
    const char* name;
    const char* unit;
    double Holdings::*amount;
};

constexpr Kind kinds[] = {{"memory", "KiB", &Holdings::memoryKb},
                          {"handles", "handles", &Holdings::handles},
                          {"threads", "threads", &Holdings::threads}};

}  // namespace

std::string lineOf(const HostLife& life) {
    auto line = nlohmann::json::array();
    for (const auto time : times)
        for (const Kind& kind : kinds) line.push_back(life.*time.*kind.amount);
    return line.dump();
}

HostLife lifeIn(const std::string& line) {
    const auto numbers = nlohmann::json::parse(line);
    HostLife life;
    std::size_t next = 0;
    for (const auto time : times)
        for (const Kind& kind : kinds) life.*time.*kind.amount = numbers.at(next++).get<double>();
    return life;
}

void addLife(const HostLife& life, int requests, const std::string& over, Report& report) {
    for (const Kind& kind : kinds) {
        const auto add = [&](const std::string& when, double amount) {
            report.addAmount(fmt::format("{}, {}, {}", kind.name, when, over), kind.unit, amount);
        };
        const auto perThread = [&](const Holdings& with, const Holdings& without) {
            const double more = with.*kind.amount - without.*kind.amount;
            return std::max(more / HostLife::moreThreads, 0.0);
        };
        add("no facade", life.begin.*kind.amount);
        add("connected", life.connected.*kind.amount);
        add(fmt::format("after {} requests", requests), life.used.*kind.amount);
        add("more for each thread that never calls", perThread(life.bare, life.used));
        add("when these have ended", life.bareEnded.*kind.amount);
        add("more for each thread that has called", perThread(life.calling, life.bareEnded));
        add("when these have ended, too", life.ended.*kind.amount);
    }
}
