#include "watch/Sampler.h"

#include <gmock/gmock.h>

#include <cmath>
#include <sstream>

using namespace qorctl;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr double staleS = 0.75;
constexpr std::size_t speedName = 0;
constexpr std::size_t pressureName = 1;

class SamplerAtWork : public testing::Test {
protected:
    Sampler sampler{{"Speed", "Pressure"}, staleS};

    const ParamHistory& speed() const { return sampler.histories()[speedName]; }
    const ParamHistory& pressure() const { return sampler.histories()[pressureName]; }
    void takeSpeed(double value, double timeS) { sampler.take(speedName, value, 0, timeS); }
    void takePressure(double value, double timeS) { sampler.take(pressureName, value, 0, timeS); }

    /// All that are complete, each as "time: values" with "." for none, or "time: -name".
    std::vector<std::string> samples() {
        std::vector<std::string> texts;
        while (const auto sample = sampler.next()) {
            std::ostringstream text;
            text << sample->timeS << ":";
            for (const auto& value : sample->values)
                if (sample->hasValues()) text << " " << (value ? std::to_string(int(*value)) : ".");
            for (const std::size_t name : sample->stalled) text << " -" << name;
            texts.push_back(text.str());
        }
        return texts;
    }
};

TEST_F(SamplerAtWork, BeforeTheFirstValueThereIsNoSample) {
    sampler.settle(100);
    EXPECT_EQ(std::nullopt, sampler.next());
    EXPECT_THAT(sampler.unseen(), ElementsAre("Speed", "Pressure"));
}

TEST_F(SamplerAtWork, WhatArrivedAtOneTimeIsOneSample) {
    takeSpeed(800, 1);
    takePressure(2, 1);
    takePressure(3, 1.02);
    takeSpeed(810, 1.2);
    sampler.finish();
    EXPECT_THAT(samples(), ElementsAre("1: 800 2", "1.02: . 3", "1.2: 810 ."));
    EXPECT_EQ(3u, sampler.samples());
}

TEST_F(SamplerAtWork, TwoValuesOfOneParameterAtOneTimeAreTwoSamples) {
    takeSpeed(800, 1);
    takeSpeed(801, 1);
    takePressure(2, 1);
    sampler.finish();
    EXPECT_THAT(samples(), ElementsAre("1: 800 .", "1: 801 2"));
    EXPECT_EQ(2u, speed().samples);
}

TEST_F(SamplerAtWork, ASampleIsCompleteOnceNothingOfItsTimeCanCome) {
    takeSpeed(800, 1);
    sampler.settle(1.04);
    EXPECT_THAT(samples(), IsEmpty());
    takePressure(2, 1);
    sampler.settle(1.06);
    EXPECT_THAT(samples(), ElementsAre("1: 800 2"));
}

TEST_F(SamplerAtWork, AValueIsGivenOutOnceHoweverLongNoOtherComes) {
    takeSpeed(800, 1);
    for (double nowS = 1; nowS < 10; nowS += 0.1) sampler.settle(nowS);
    sampler.finish();
    EXPECT_THAT(samples(), ElementsAre("1: 800 .", "1.75: -0"));
    EXPECT_EQ(1u, sampler.samples());
    EXPECT_EQ(1u, speed().samples);
}

TEST_F(SamplerAtWork, AStallIsToldInItsPlaceAmongTheOthers) {
    takeSpeed(800, 1);
    for (int i = 0; i <= 4; ++i) takePressure(i, 1.1 + 0.2 * i);
    takeSpeed(900, 2);
    sampler.finish();
    EXPECT_THAT(samples(), ElementsAre("1: 800 .", "1.1: . 0", "1.3: . 1", "1.5: . 2", "1.7: . 3",
                                       "1.75: -0", "1.9: . 4", "2: 900 ."));
}

TEST_F(SamplerAtWork, StallsComeInTheOrderInWhichTheyAreDue) {
    takePressure(2, 1);
    takeSpeed(800, 1.1);
    sampler.settle(3);
    EXPECT_THAT(samples(), ElementsAre("1: . 2", "1.1: 800 .", "1.75: -1", "1.85: -0"));
}

TEST_F(SamplerAtWork, AnInterruptionCountsOnceAndOnlyAfterAValue) {
    takeSpeed(800, 1);
    sampler.settle(1.5);
    EXPECT_EQ(0u, speed().interruptions);
    for (double nowS = 1.7; nowS < 4; nowS += 0.1) sampler.settle(nowS);
    EXPECT_EQ(1u, speed().interruptions);
    takeSpeed(900, 4);
    EXPECT_FALSE(speed().isStalled);
    takeSpeed(900, 5);  // which nobody had looked for meanwhile
    EXPECT_EQ(2u, speed().interruptions);
    EXPECT_EQ(0u, pressure().interruptions);
}

TEST_F(SamplerAtWork, AValueIsFreshUntilItHasStalled) {
    EXPECT_FALSE(sampler.isFresh(speed(), 1));
    takeSpeed(800, 1);
    EXPECT_TRUE(sampler.isFresh(speed(), 1.74));
    EXPECT_FALSE(sampler.isFresh(speed(), 1.75));
}

TEST_F(SamplerAtWork, WhatWasMissedIsKept) {
    sampler.take(speedName, 800, 3, 1);
    sampler.take(speedName, 800, 5, 1.1);
    EXPECT_EQ(5u, speed().missed);
    EXPECT_EQ(0u, pressure().missed);
}

TEST_F(SamplerAtWork, WhatIsNoNumberDoesNotSpoilTheRange) {
    takeSpeed(NAN, 1);
    EXPECT_FALSE(speed().hasRange);
    takeSpeed(5, 1.1);
    takeSpeed(INFINITY, 1.2);
    EXPECT_EQ(5, speed().lowest);
    EXPECT_EQ(5, speed().highest);
    EXPECT_TRUE(std::isinf(speed().last));
}

class SamplerOfATextAndANumber : public testing::Test {
protected:
    Sampler sampler{{"Version", "Speed"}, staleS};

    std::vector<std::string> samples() {
        std::vector<std::string> texts;
        while (const auto sample = sampler.next()) {
            std::ostringstream text;
            text << sample->timeS << ":";
            if (sample->values[1]) text << " " << *sample->values[1];
            for (const auto& [name, words] : sample->texts) text << " " << name << "=" << words;
            texts.push_back(text.str());
        }
        return texts;
    }
};

TEST_F(SamplerOfATextAndANumber, ATextIsASampleWhenItHasChanged) {
    sampler.takeText(0, "4.1", 1);
    sampler.takeText(0, "4.1", 2);
    sampler.takeText(0, "4.2", 3);
    sampler.finish();
    EXPECT_THAT(samples(), ElementsAre("1: 0=4.1", "3: 0=4.2"));
    EXPECT_EQ(2u, sampler.samples());
    EXPECT_EQ(2u, sampler.histories()[0].samples);
    EXPECT_EQ("4.2", sampler.histories()[0].text);
    EXPECT_FALSE(sampler.histories()[0].hasRange);
}

TEST_F(SamplerOfATextAndANumber, ATextStandsBehindValuesThatAreHandedOnLater) {
    sampler.takeText(0, "4.1", 1.02);
    sampler.settle(1.03);
    sampler.take(1, 800, 0, 1.01);
    sampler.take(1, 801, 0, 1.04);
    sampler.settle(1.5);
    EXPECT_THAT(samples(), ElementsAre("1.01: 800", "1.02: 0=4.1", "1.04: 801"));
}

TEST_F(SamplerOfATextAndANumber, ATextDoesNotStallAndIsFreshForThreeReadings) {
    sampler.takeText(0, "4.1", 1);
    sampler.settle(10);
    EXPECT_THAT(samples(), ElementsAre("1: 0=4.1"));
    EXPECT_EQ(0u, sampler.histories()[0].interruptions);
    EXPECT_TRUE(sampler.isFresh(sampler.histories()[0], 3.9));
    EXPECT_FALSE(sampler.isFresh(sampler.histories()[0], 4.1));
}

TEST_F(SamplerAtWork, WhatHasNotComeYetIsNamed) {
    takePressure(1, 1);
    EXPECT_THAT(sampler.unseen(), ElementsAre("Speed"));
    takeSpeed(1, 1.1);
    EXPECT_THAT(sampler.unseen(), IsEmpty());
}

TEST_F(SamplerAtWork, WhatHasComeAndNotSinceIsNamed) {
    EXPECT_THAT(sampler.silentSince(5), IsEmpty());
    takePressure(1, 1);
    takeSpeed(1, 1.1);
    EXPECT_THAT(sampler.silentSince(1), IsEmpty());
    EXPECT_THAT(sampler.silentSince(1.1), ElementsAre("Pressure"));
}

}  // namespace
