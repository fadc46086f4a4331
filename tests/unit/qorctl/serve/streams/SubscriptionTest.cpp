#include "serve/streams/Subscription.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

using nlohmann::json;
using qorctl::serve::Subscription;

namespace {

json samplesOf(Subscription& stream) {
    return json::parse(stream.takeOut(7))["samples"];
}

TEST(Subscription, TellsEachValueOnceInTheOrderOfArrival) {
    Subscription stream({"A", "B"}, 10);
    EXPECT_EQ(0u, stream.add("B", 1.5, 100, 0));
    EXPECT_EQ(0u, stream.add("A", -2, 110, 0));
    EXPECT_EQ(R"({"stream":7,"samples":[[1,1.5,100,0],[0,-2,110,0]]})", stream.takeOut(7));
    EXPECT_TRUE(stream.isEmpty());
}

TEST(Subscription, WantsNoOtherNames) {
    Subscription stream({"A"}, 10);
    EXPECT_EQ(0u, stream.add("B", 1, 100, 0));
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_TRUE(stream.wants("A"));
    EXPECT_FALSE(stream.wants("B"));
}

TEST(Subscription, TellsANameThatStandsTwiceTwice) {
    Subscription stream({"A", "A"}, 10);
    stream.add("A", 1, 100, 0);
    EXPECT_EQ(json::parse("[[0,1,100,0],[1,1,100,0]]"), samplesOf(stream));
}

TEST(Subscription, ThatIsFullLosesItsOldestValuesAndTellsHowManyOfEachName) {
    Subscription stream({"A", "B"}, 2);
    EXPECT_EQ(0u, stream.add("A", 1, 100, 0));
    EXPECT_EQ(0u, stream.add("A", 2, 101, 0));
    EXPECT_EQ(1u, stream.add("B", 3, 102, 0));
    EXPECT_EQ(1u, stream.add("A", 4, 103, 0));
    EXPECT_EQ(json::parse("[[1,3,102,0],[0,4,103,2]]"), samplesOf(stream));
    stream.add("A", 5, 104, 0);
    EXPECT_EQ(json::parse("[[0,5,104,2]]"), samplesOf(stream));
}

TEST(Subscription, AddsWhatWasMissedBeforeItCame) {
    Subscription stream({"A"}, 1);
    stream.add("A", 1, 100, 3);
    stream.add("A", 2, 101, 1);
    EXPECT_EQ(json::parse("[[0,2,101,5]]"), samplesOf(stream));
}

TEST(Subscription, HasTextsForWhatJsonHasNoNumbersFor) {
    Subscription stream({"A"}, 10);
    const double infinity = std::numeric_limits<double>::infinity();
    stream.add("A", infinity, 1, 0);
    stream.add("A", -infinity, 1, 0);
    stream.add("A", std::numeric_limits<double>::quiet_NaN(), 1, 0);
    stream.add("A", 1e300, 1, 0);
    stream.add("A", 0.1, 1, 0);
    const json samples = samplesOf(stream);
    EXPECT_EQ("Infinity", samples[0][1]);
    EXPECT_EQ("-Infinity", samples[1][1]);
    EXPECT_EQ("NaN", samples[2][1]);
    EXPECT_EQ(1e300, samples[3][1].get<double>());
    EXPECT_EQ(0.1, samples[4][1].get<double>());
}

TEST(Subscription, HasRoomForOneValueAtLeast) {
    Subscription stream({"A"}, 0);
    stream.add("A", 1, 100, 0);
    EXPECT_EQ(1u, stream.size());
}

}  // namespace
