#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace qorctl::serve {

/// What one client wants to be sent of the values that flow. What it cannot take in time goes, the
/// oldest first, and is counted: each value tells how many of its name were missed before it. Its
/// operations, but for `wants`, are the feeding thread's.
class Subscription {
public:
    Subscription(const std::vector<std::string>& names, std::size_t slots);

    bool wants(const std::string& name) const { return numbers_.count(name) != 0; }

    /// @param missed  so many of this name were lost since the last one.
    /// Returns how many values had to go for it.
    std::size_t add(const std::string& name, double value, std::uint64_t timeMs,
                    unsigned int missed);
    bool isEmpty() const { return waiting_.empty(); }
    std::size_t size() const { return waiting_.size(); }
    /// What is there, as the parameters of the event "values" of the stream of that number.
    std::string takeOut(std::uint64_t number);

private:
    struct Sample {
        unsigned int name;
        double value;
        std::uint64_t timeMs;
        unsigned int missed;  // not by this stream
    };

    const std::size_t slots_;
    std::unordered_map<std::string, std::vector<unsigned int>> numbers_;  // a name may come twice
    std::vector<unsigned int> missed_;   // of each name, before it came here
    std::vector<unsigned int> dropped_;  // of each name, here
    std::deque<Sample> waiting_;
};

}  // namespace qorctl::serve
