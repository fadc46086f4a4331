#include "watch/Sampler.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace qorctl;
using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;
using testing::Optional;

namespace {

constexpr double periodS = 0.25;

class SamplerAtWork : public testing::Test {
protected:
    Sampler sampler{{"Speed", "Pressure"}, periodS};

    const ParamHistory& speed() const { return sampler.histories()[0]; }
    const ParamHistory& pressure() const { return sampler.histories()[1]; }
};

TEST_F(SamplerAtWork, BeforeTheFirstBatchThereIsNoSample) {
    EXPECT_EQ(std::nullopt, sampler.sampleAt(100));
    EXPECT_THAT(sampler.unseen(), ElementsAre("Speed", "Pressure"));
}

TEST_F(SamplerAtWork, AnEmptyBatchBeginsNothing) {
    sampler.take({}, 1);
    EXPECT_EQ(std::nullopt, sampler.sampleAt(100));
}

TEST_F(SamplerAtWork, TheFirstSampleComesAPeriodAfterTheFirstBatch) {
    sampler.take({{"Speed", {800}}}, 1);
    EXPECT_EQ(std::nullopt, sampler.sampleAt(1.24));
    sampler.take({{"Speed", {810}}, {"Pressure", {2}}}, 1.24);
    const auto sample = sampler.sampleAt(1.25);
    ASSERT_TRUE(sample);
    EXPECT_EQ(1.25, sample->timeS);
    EXPECT_THAT(sample->values, ElementsAre(Optional(810.0), Optional(2.0)));
}

TEST_F(SamplerAtWork, ManyBatchesOfOnePeriodMakeOneSample) {
    for (int i = 0; i < 20; ++i) sampler.take({{"Speed", {800.0 + i}}}, 1 + i * 0.0125);
    EXPECT_TRUE(sampler.sampleAt(1.25));
    EXPECT_FALSE(sampler.sampleAt(1.26));
    EXPECT_EQ(1u, sampler.samples());
    EXPECT_EQ(800, speed().lowest);
    EXPECT_EQ(819, speed().highest);
}

TEST_F(SamplerAtWork, AValueThatIsLeftOutForAPeriodIsStale) {
    sampler.take({{"Speed", {800}}, {"Pressure", {2}}}, 1);
    sampler.take({{"Pressure", {3}}}, 1.2);
    EXPECT_TRUE(sampler.isFresh(speed(), 1.24));
    EXPECT_FALSE(sampler.isFresh(speed(), 1.25));
    EXPECT_THAT(sampler.sampleAt(1.25)->values, ElementsAre(Eq(std::nullopt), Optional(3.0)));
}

TEST_F(SamplerAtWork, WhenAllStallTheSamplesGoOnWithoutValues) {
    sampler.take({{"Speed", {800}}}, 1);
    sampler.take({{"Speed", {800}}}, 1.2);
    EXPECT_THAT(sampler.sampleAt(1.25)->values, ElementsAre(Optional(800.0), Eq(std::nullopt)));
    EXPECT_THAT(sampler.sampleAt(1.5)->values, ElementsAre(Eq(std::nullopt), Eq(std::nullopt)));
    EXPECT_TRUE(sampler.sampleAt(1.75));
}

TEST_F(SamplerAtWork, AnInterruptionCountsOnceAndOnlyAfterAValue) {
    sampler.take({{"Speed", {800}}}, 1);
    sampler.take({{"Speed", {800}}}, 1.2);
    for (double nowS = 1.25; nowS < 2.5; nowS += periodS) sampler.sampleAt(nowS);
    sampler.take({{"Speed", {900}}}, 2.45);
    EXPECT_THAT(sampler.sampleAt(2.5)->values, ElementsAre(Optional(900.0), Eq(std::nullopt)));
    EXPECT_EQ(1u, speed().interruptions);
    EXPECT_EQ(2u, speed().samples);
    EXPECT_EQ(0u, pressure().interruptions);
}

TEST_F(SamplerAtWork, PeriodsThatWereSleptThroughGetNoSample) {
    sampler.take({{"Speed", {800}}}, 1);
    EXPECT_TRUE(sampler.sampleAt(3));
    EXPECT_FALSE(sampler.sampleAt(3.2));
    EXPECT_TRUE(sampler.sampleAt(3.25));
}

TEST_F(SamplerAtWork, ALateSampleDoesNotShiftTheNextOnes) {
    sampler.take({{"Speed", {800}}}, 1);
    EXPECT_TRUE(sampler.sampleAt(1.35));
    EXPECT_TRUE(sampler.sampleAt(1.5));
}

TEST_F(SamplerAtWork, WhatIsNoNumberDoesNotSpoilTheRange) {
    sampler.take({{"Speed", {NAN}}}, 1);
    EXPECT_FALSE(speed().hasRange);
    sampler.take({{"Speed", {5}}}, 1.1);
    sampler.take({{"Speed", {INFINITY}}}, 1.2);
    EXPECT_EQ(5, speed().lowest);
    EXPECT_EQ(5, speed().highest);
    EXPECT_TRUE(std::isinf(speed().last));
}

TEST_F(SamplerAtWork, NamesThatNobodyAskedForAndValuesThatAreMissingDoNotCount) {
    sampler.take({{"Other", {1}}, {"Speed", {}}}, 1);
    EXPECT_THAT(sampler.unseen(), ElementsAre("Speed", "Pressure"));
    sampler.take({{"Speed", {1}}, {"Pressure", {1}}}, 1.1);
    EXPECT_THAT(sampler.unseen(), IsEmpty());
}

}  // namespace
