#include "start/PlaceClaim.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <optional>

using qorctl::start::PlaceClaim;

namespace {

TEST(PlaceClaim, IsTheFirstOnesUntilItGoesAndTellsItsProcess) {
    std::optional<PlaceClaim> first(std::in_place, "port 1 of Nowhere\\");
    const PlaceClaim second("port 1 of nowhere\\");
    EXPECT_TRUE(first->isOurs());
    EXPECT_FALSE(second.isOurs());
    EXPECT_EQ(GetCurrentProcessId(), second.process());
    EXPECT_TRUE(PlaceClaim("port 2 of Nowhere\\").isOurs());

    first.reset();
    EXPECT_TRUE(PlaceClaim("port 1 of Nowhere\\").isOurs());
}

}  // namespace
