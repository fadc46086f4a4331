#pragma once

#include <cstdlib>
#include <string>

namespace fuzz {

/// The seed of all random tests: always the same, so that a failure comes again.
constexpr unsigned int seed = 20120917;

/// How many cases to run. The native build, which has the sanitizers, does the bulk of the work;
/// under Wine, where a test has to be quick, a tenth of it is run. QOR_FUZZ_CASES overrides.
inline unsigned int caseCount(unsigned int native) {
    if (const char* const wanted = std::getenv("QOR_FUZZ_CASES"))
        return static_cast<unsigned int>(std::strtoul(wanted, nullptr, 10));
#ifdef _WIN32
    return native / 10;
#else
    return native;
#endif
}

}  // namespace fuzz
