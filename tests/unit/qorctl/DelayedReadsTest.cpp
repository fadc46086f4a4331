#include "DelayedReads.h"

#include <gtest/gtest.h>

using qorctl::DelayedReads;

namespace {

DelayedReads readsOf(std::initializer_list<double> times) {
    DelayedReads reads;
    for (const double ms : times) reads.note(ms);
    return reads;
}

TEST(DelayedReads, ThatTakeAConfirmationsTimeAreSeen) {
    EXPECT_EQ(44, readsOf({43, 44, 45, 44, 47}).usualMs());
    EXPECT_EQ(204, readsOf({203, 204, 210, 206, 201}).usualMs()) << "on Windows";
}

TEST(DelayedReads, ThatLookTheirNameUpFirstTakeTwo) {
    EXPECT_EQ(88, readsOf({87, 88, 92, 44, 88}).usualMs());
}

TEST(DelayedReads, OneThatIsOtherwiseIsNoProofOfTheOpposite) {
    EXPECT_EQ(44, readsOf({44, 1, 44, 44, 45}).usualMs());
    EXPECT_FALSE(readsOf({44, 1, 44, 1, 45}).usualMs());
}

TEST(DelayedReads, QuickAndSlowReadsAreNone) {
    EXPECT_FALSE(readsOf({1, 2, 1, 1, 1}).usualMs());
    EXPECT_FALSE(readsOf({500, 510, 505, 500, 500}).usualMs());
    EXPECT_FALSE(readsOf({44, 204, 44, 204, 44}).usualMs()) << "of two systems at once";
}

TEST(DelayedReads, FewReadsProveNothing) {
    EXPECT_FALSE(readsOf({44, 44, 44, 44}).usualMs());
}

TEST(DelayedReads, TheLastHundredCount) {
    DelayedReads reads;
    for (int i = 0; i < 1000; ++i) reads.note(1);
    for (int i = 0; i < 100; ++i) reads.note(44);
    EXPECT_EQ(44, reads.usualMs());
    for (int i = 0; i < 100; ++i) reads.note(1);
    EXPECT_FALSE(reads.usualMs());
}

}  // namespace
