#include "bench/Samples.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Samples samplesOf(const std::vector<double>& us) {
    Samples samples;
    for (const double each : us) samples.add(each);
    return samples;
}

}  // namespace

TEST(Samples, EachRoundHasItsMedianInTheOrderOfMeasuring) {
    EXPECT_THAT(samplesOf({3, 9, 1, 70, 50, 60, 8, 2, 4}).medians(3), ElementsAre(3, 60, 4));
}

TEST(Samples, PartsThatDoNotDivideTheSamplesStillTakeEachOnce) {
    EXPECT_THAT(samplesOf({1, 2, 3, 4, 5, 6, 7}).medians(3), ElementsAre(2, 4, 6));
}

TEST(Samples, FewerSamplesThanPartsStandForThemselves) {
    EXPECT_THAT(samplesOf({7, 5}).medians(20), ElementsAre(7, 5));
}

TEST(Samples, WithoutSamplesThereIsNoMedian) {
    EXPECT_THAT(Samples().medians(20), IsEmpty());
}
