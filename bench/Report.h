#pragma once

#include <string>
#include <vector>

#include "Samples.h"

/// Collects what was measured, prints it as a table and writes it as JSON.
class Report {
public:
    /// `rounds`: into so many parts the samples of each figure are cut for the medians in the JSON.
    explicit Report(int rounds) : rounds_(rounds) {}

    /// `p50Bound` and `p99Bound` are what the figure is held against, in microseconds, 0: nothing.
    void add(const std::string& name, const Samples& samples, double p50Bound = 0,
             double p99Bound = 0);

    /// A rate per second; `leastBound` is what it should reach, 0: nothing.
    void addRate(const std::string& name, double perSecond, double leastBound = 0);

    /// An amount of something; `mostBound` is what it should not exceed, 0: nothing.
    void addAmount(const std::string& name, const std::string& unit, double amount,
                   double mostBound = 0);

    void print() const;
    /// Throws std::runtime_error if the file cannot be written.
    void writeJson(const std::string& path) const;

private:
    struct Row {
        std::string name;
        Samples samples;
        double p50Bound;
        double p99Bound;
    };

    struct Rate {
        std::string name;
        double perSecond;
        double leastBound;
    };

    struct Amount {
        std::string name;
        std::string unit;
        double amount;
        double mostBound;
    };

    void printAmounts() const;

    int rounds_;
    std::vector<Row> rows_;
    std::vector<Rate> rates_;
    std::vector<Amount> amounts_;
};
