#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace simulator {

/// What a live measurement is made of. Its value is the sum of its terms at the moment of reading,
/// kept within the parameter's limits. Times are in seconds since the simulator started.
struct SineTerm {
    double mean = 0.0;
    double amplitude = 0.0;
    double periodS = 1.0;
    double phaseS = 0.0;
};

/// Rises (or falls) evenly from `from` to `to`, then starts again; with `once` it stays at `to`.
struct RampTerm {
    double from = 0.0;
    double to = 0.0;
    double periodS = 1.0;
    bool once = false;
};

/// A new pseudo-random value within +-amplitude every stepMs; the same seed gives the same values.
struct NoiseTerm {
    double amplitude = 0.0;
    std::uint32_t seed = 0;
    std::uint32_t stepMs = 100;
};

/// Approaches gain x (value of a scalar, an actuator or another measurement) + offset with a
/// first-order lag.
struct FollowTerm {
    std::string source;
    double gain = 1.0;
    double offset = 0.0;
    double timeConstantS = 1.0;
};

using LiveTerm = std::variant<SineTerm, RampTerm, NoiseTerm, FollowTerm>;

double valueAt(const SineTerm& term, double timeS);
double valueAt(const RampTerm& term, double timeS);
double valueAt(const NoiseTerm& term, double timeS);

/// Where a lag that stands at `current` gets to while its target goes evenly from `before` to
/// `target` in elapsedS. Exact, so for a target that stands still the number of steps in which time
/// is advanced makes no difference.
double lagTowards(double current, double before, double target, double elapsedS,
                  double timeConstantS);

}  // namespace simulator
