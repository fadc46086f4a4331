#include "cinterface/OutBuffer.h"

#include <gmock/gmock.h>

using cinterface::Cause;
using cinterface::OutBuffer;
using cinterface::OutText;
using cinterface::Refusal;
using testing::ElementsAre;

namespace {

const std::vector<double> three = {1, 2, 3};

TEST(OutBuffer, TakesWhatFitsAndTellsHowMuchThatIs) {
    double to[4] = {9, 9, 9, 9};
    unsigned needed = 0;
    EXPECT_EQ(Cause::none, OutBuffer<double>(to, 3, &needed, "values").put(three).cause);
    EXPECT_EQ(3u, needed);
    EXPECT_THAT(to, ElementsAre(1, 2, 3, 9));
}

TEST(OutBuffer, StaysAsItWasWhenItIsTooSmall) {
    double to[2] = {9, 9};
    unsigned needed = 0;
    EXPECT_EQ(Cause::resultTooLarge, OutBuffer<double>(to, 2, &needed, "values").put(three).cause);
    EXPECT_EQ(3u, needed);
    EXPECT_THAT(to, ElementsAre(9, 9));
}

TEST(OutBuffer, NeedsNoPlaceForTheSizeAndNoneForTheElements) {
    double to[3] = {};
    EXPECT_EQ(Cause::none, OutBuffer<double>(to, 0xFFFFFFFFu, nullptr, "values").put(three).cause);
    EXPECT_THAT(to, ElementsAre(1, 2, 3));
    unsigned needed = 0;
    EXPECT_EQ(Cause::none, OutBuffer<double>(nullptr, 0, &needed, "values").put(three).cause);
    EXPECT_EQ(3u, needed);
}

TEST(OutBuffer, ANullBufferHasNoCapacity) {
    EXPECT_THROW(OutBuffer<double>(nullptr, 1, nullptr, "values"), Refusal);
    EXPECT_THROW(OutBuffer<double>(nullptr, 0xFFFFFFFFu, nullptr, "values"), Refusal);
}

TEST(OutBuffer, ATextNeedsRoomForItsZero) {
    char to[4] = "xyz";
    unsigned needed = 0;
    EXPECT_EQ(Cause::resultTooLarge, OutText(to, 3, &needed, "text").put(std::string("abc")).cause);
    EXPECT_STREQ("xyz", to);
    EXPECT_EQ(Cause::none, OutText(to, 4, &needed, "text").put(std::string("abc")).cause);
    EXPECT_STREQ("abc", to);
    EXPECT_EQ(4u, needed);
}

}  // namespace
