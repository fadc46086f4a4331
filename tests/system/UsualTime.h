#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <vector>

/// Less than any system waits before it confirms a piece of a TCP stream, and more than a request
/// takes.
constexpr double delayMs = 30;

/// The usual time of a request, in ms. The first pieces of a connection are confirmed at once: they
/// do not count.
template <class Request>
double usualMs(Request request) {
    using Clock = std::chrono::steady_clock;
    constexpr int forgotten = 30;
    constexpr int counted = 15;
    std::vector<double> times;
    for (int i = 0; i < forgotten + counted; ++i) {
        const auto start = Clock::now();
        EXPECT_TRUE(request());
        const std::chrono::duration<double, std::milli> took = Clock::now() - start;
        if (i >= forgotten) times.push_back(took.count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}
