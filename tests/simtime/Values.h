#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Machine.h"

namespace simtime {

/// The parameters that the simulated QOR knows: numbers, maps of three arrays, actuators, a text.
constexpr std::array<const char*, 11> paramNames = {"P0",   "P1",   "P2",   "P3",   "P4",   "P5",
                                                    "Map0", "Map1", "Act0", "Act1", "Text0"};
constexpr unsigned int numberCount = 6;
constexpr unsigned int firstMap = 6;
constexpr unsigned int mapCount = 2;
constexpr unsigned int firstActuator = 8;
constexpr unsigned int actuatorCount = 2;
constexpr unsigned int textParam = 10;
constexpr const char* unknownParam = "Nobody";

constexpr bool isMap(unsigned int param) {
    return param >= firstMap && param < firstMap + mapCount;
}

/// What a value is of. It stands in the value itself, so that one that was not asked for is seen
/// wherever it turns up.
struct ValueOrigin {
    enum Kind : unsigned int { read, streamed, written, group, array };

    Ms made = 0;
    unsigned int param = 0;
    Kind kind = read;

    /// An integer below 2^53, so exact.
    double encode() const { return static_cast<double>(made * 2048 + param * 8 + kind); }

    static ValueOrigin of(double value) {
        const auto whole = static_cast<std::uint64_t>(value);
        return {whole / 2048, static_cast<unsigned int>(whole / 8 % 256),
                static_cast<Kind>(whole % 8)};
    }
};

}  // namespace simtime
