#pragma once

#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace soak {

/// Names and values of the model that the station's QOR has: every value tells which parameter it
/// is of, and a stamp also when QOR made it.

inline std::string numbered(const char* stem, unsigned number) {
    return stem + std::string(1, static_cast<char>('0' + number / 10 % 10)) +
           static_cast<char>('0' + number % 10);
}

/// What is read: a stem, so many of them, and the stamp number of the first.
struct Family {
    const char* stem;
    unsigned count;
    unsigned firstStamp;
};
constexpr Family meters{"Meter", 16, 1};
constexpr Family rows{"Row", 8, 101};
constexpr Family curves{"Curve", 4, 201};
constexpr Family maps{"Map", 2, 301};
constexpr Family flows{"Flow", 4, 401};

/// Each worker has one of these for itself, and writes its number and a count to it.
constexpr const char* ownStem = "Own";
constexpr const char* textStem = "Text";
constexpr const char* actuatorStem = "Actuator";
constexpr double ownUnit = 1048576;  // 2^20: more than one worker ever counts

constexpr int timeBits = 42;
constexpr std::uint64_t timeMask = (std::uint64_t{1} << timeBits) - 1;

/// On the clock of the stamps, which all programs of the machine share.
inline std::uint64_t nowUs() {
    using namespace std::chrono;
    const auto sinceStart = steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(duration_cast<microseconds>(sinceStart).count());
}

struct Stamp {
    unsigned number = 0;
    std::uint64_t timeUs = 0;  ///< the low bits of the clock

    static Stamp in(double value) {
        const double unit = std::ldexp(1.0, timeBits);
        if (!(value >= 0 && value < 1024 * unit)) return {1024, 0};
        const auto bits = static_cast<std::uint64_t>(value);
        return {static_cast<unsigned>(bits >> timeBits), bits & timeMask};
    }
    std::uint64_t ageUs(std::uint64_t now) const { return (now - timeUs) & timeMask; }
};

}  // namespace soak
