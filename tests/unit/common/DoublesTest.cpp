#include "common/Doubles.h"

#include <gmock/gmock.h>

using common::Doubles;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(Doubles, CopiesShareTheNumbers) {
    const Doubles one{1, 2, 3};
    const Doubles other = one;
    EXPECT_EQ(one.all().data(), other.all().data());
    EXPECT_THAT(other, ElementsAre(1, 2, 3));
}

TEST(Doubles, WhatIsHandedOverIsNotCopied) {
    std::vector<double> numbers{1, 2};
    const double* const place = numbers.data();
    EXPECT_EQ(place, Doubles(std::move(numbers)).all().data());
}

TEST(Doubles, WithoutNumbersThereIsNothing) {
    for (const Doubles& none : {Doubles(), Doubles(std::vector<double>()), Doubles({})}) {
        EXPECT_TRUE(none.empty());
        EXPECT_EQ(0u, none.size());
        EXPECT_THAT(none.all(), IsEmpty());
    }
}

TEST(Doubles, WhatWasMovedFromHasNone) {
    Doubles from{1, 2};
    const Doubles to = std::move(from);
    EXPECT_TRUE(from.empty());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(2u, to.size());
}

TEST(Doubles, TheSameNumbersAreEqualWhereverTheyAre) {
    EXPECT_TRUE(Doubles({1, 2}) == Doubles({1, 2}));
    EXPECT_FALSE(Doubles({1, 2}) == Doubles({1}));
    EXPECT_FALSE(Doubles({1}) == Doubles());
    EXPECT_EQ(1, Doubles({1, 2}).front());
}

}  // namespace
