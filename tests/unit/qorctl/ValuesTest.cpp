#include "operations/Values.h"

#include <gtest/gtest.h>

#include <limits>

using namespace qorctl;

TEST(Values, AreTextsThatMakeUpTheSameNumberAgain) {
    EXPECT_EQ("1 -0.1 1e+300", textOf({1, -0.1, 1e300}));
    EXPECT_EQ("", textOf({}));
    const double third = 1.0 / 3;
    EXPECT_EQ(third, std::stod(textOf({third})));
}

TEST(Values, AreNumbersInJsonUnlessJsonHasNone) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(R"([1.5,-2.0,"inf","-inf","nan"])",
              jsonOf({1.5, -2, infinity, -infinity, nan}).dump());
    EXPECT_EQ("[]", jsonOf({}).dump());
}
