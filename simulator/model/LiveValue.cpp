#include "model/LiveValue.h"

#include <cmath>

namespace simulator {

namespace {

constexpr double twoPi = 6.283185307179586;

/// A well mixed word for each (seed, step); neighbouring steps are unrelated.
std::uint64_t mix(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15ULL;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBULL;
    return value ^ (value >> 31U);
}

}  // namespace

double valueAt(const SineTerm& term, double timeS) {
    return term.mean + term.amplitude * std::sin(twoPi * (timeS + term.phaseS) / term.periodS);
}

double valueAt(const RampTerm& term, double timeS) {
    const double turns = timeS / term.periodS;
    if (term.once && turns >= 1.0) return term.to;
    return term.from + (term.to - term.from) * (turns - std::floor(turns));
}

double valueAt(const NoiseTerm& term, double timeS) {
    const auto step = static_cast<std::uint64_t>(timeS * 1000.0 / term.stepMs);
    const std::uint64_t word = mix((static_cast<std::uint64_t>(term.seed) << 32U) ^ step);
    const double fraction = static_cast<double>(word >> 11U) / 9007199254740992.0;  // 2^53
    return term.amplitude * (2.0 * fraction - 1.0);
}

double lagTowards(double current, double before, double target, double elapsedS,
                  double timeConstantS) {
    // Behind a target that moves evenly a lag ends up by its speed times the time constant.
    const double behind = (target - before) / elapsedS * timeConstantS;
    return target - behind + (current - before + behind) * std::exp(-elapsedS / timeConstantS);
}

}  // namespace simulator
