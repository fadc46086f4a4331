#include "model/LiveValue.h"

#include <cmath>

#include "TestSupport.h"

namespace simulator::test {
namespace {

TEST(LiveValue, ASineIsAtItsMeanAtTheStartAndAtItsTopAfterAQuarterPeriod) {
    const SineTerm sine{10.0, 2.0, 4.0, 0.0};
    EXPECT_NEAR(valueAt(sine, 0.0), 10.0, 1e-9);
    EXPECT_NEAR(valueAt(sine, 1.0), 12.0, 1e-9);
    EXPECT_NEAR(valueAt(sine, 3.0), 8.0, 1e-9);
}

TEST(LiveValue, ARampStartsAgainOrStaysAtItsEnd) {
    EXPECT_NEAR(valueAt(RampTerm{0.0, 10.0, 5.0, false}, 6.0), 2.0, 1e-9);
    EXPECT_NEAR(valueAt(RampTerm{0.0, 10.0, 5.0, true}, 6.0), 10.0, 1e-9);
    EXPECT_NEAR(valueAt(RampTerm{10.0, 0.0, 5.0, true}, 1.0), 8.0, 1e-9);
}

TEST(LiveValue, NoiseDependsOnTheSeedAndTheStepOnly) {
    const NoiseTerm noise{3.0, 5, 100};
    EXPECT_DOUBLE_EQ(valueAt(noise, 0.31), valueAt(noise, 0.39));
    EXPECT_NE(valueAt(noise, 0.31), valueAt(noise, 0.41));
    EXPECT_NE(valueAt(noise, 0.31), valueAt(NoiseTerm{3.0, 6, 100}, 0.31));
}

TEST(LiveValue, NoiseFillsItsBandAndStaysWithinIt) {
    const NoiseTerm noise{3.0, 5, 1};
    double lowest = 0.0;
    double highest = 0.0;
    for (int ms = 0; ms < 5000; ++ms) {
        const double value = valueAt(noise, ms / 1000.0);
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
    EXPECT_THAT(lowest, testing::AllOf(testing::Ge(-3.0), testing::Le(-2.9)));
    EXPECT_THAT(highest, testing::AllOf(testing::Le(3.0), testing::Ge(2.9)));
}

TEST(LiveValue, ALagGetsToTheSameValueInOneStepOrInMany) {
    double many = 0.0;
    for (int i = 0; i < 100; ++i) many = lagTowards(many, 10.0, 10.0, 0.02, 1.5);
    EXPECT_NEAR(many, lagTowards(0.0, 10.0, 10.0, 2.0, 1.5), 1e-9);
    EXPECT_NEAR(lagTowards(0.0, 10.0, 10.0, 1.5, 1.5), 6.3212, 1e-4);
}

// x' = (4 t - x) / 1.5 from x = 0: x = 4 t - 6 + 6 exp(-t / 1.5).
TEST(LiveValue, ALagBehindATargetThatRisesEvenlyIsExact) {
    const double exact = 4.0 * 2.0 - 6.0 + 6.0 * std::exp(-2.0 / 1.5);
    EXPECT_NEAR(lagTowards(0.0, 0.0, 8.0, 2.0, 1.5), exact, 1e-9);
    const double half = lagTowards(0.0, 0.0, 4.0, 1.0, 1.5);
    EXPECT_NEAR(lagTowards(half, 4.0, 8.0, 1.0, 1.5), exact, 1e-9);
}

}  // namespace
}  // namespace simulator::test
