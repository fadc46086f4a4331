#include "common/PerThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using Table = common::PerThread<int>;

TEST(PerThread, AThreadKeepsItsPlaceAndWhatIsInIt) {
    Table table;
    EXPECT_EQ(table.get(), 0);
    EXPECT_EQ(table.exchange(7), 0);
    EXPECT_EQ(table.get(), 7);
    EXPECT_EQ(table.exchange(8), 7);
    EXPECT_EQ(table.get(), 8);
}

TEST(PerThread, APlaceIsNewWhenNobodyHasLeftOne) {
    Table table;
    table.exchange(7);
    std::thread([&] { EXPECT_EQ(table.get(), 0); }).join();
    EXPECT_EQ(table.get(), 7);
}

/// Twenty threads at once, each with a number of its own in its place; how many found another one.
int besideEachOther(Table& table) {
    constexpr int count = 20;
    std::atomic<int> ready{0};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int number = 1; number <= count; ++number)
        threads.emplace_back([&, number] {
            table.exchange(number);
            ++ready;
            while (ready < count) std::this_thread::yield();
            if (table.get() != number) ++wrong;
        });
    for (std::thread& thread : threads) thread.join();
    return wrong;
}

TEST(PerThread, ThreadsThatLiveSideBySideHavePlacesOfTheirOwn) {
    Table table;
    EXPECT_EQ(besideEachOther(table), 0);
}

TEST(PerThread, ThePlacesOfEndedThreadsPassOnToNewOnes) {
    Table table;
    table.exchange(1000);
    int made = 0;
    for (int i = 0; i < 200; ++i)
        std::thread([&] {
            if (table.get() == 0) table.exchange(++made);
        }).join();
    EXPECT_LE(made, 3);
    EXPECT_EQ(table.get(), 1000);
}

TEST(PerThread, PlacesOfManyThreadsAtOnceAreUsedAgainAfterThem) {
    Table table;
    besideEachOther(table);
    int used = 0;
    // Far more than it takes, for the system tells of a thread's end only later.
    for (int i = 0; i < 2000 && used < 20; ++i)
        std::thread([&] { used += table.exchange(0) != 0 ? 1 : 0; }).join();
    EXPECT_EQ(used, 20);
}

}  // namespace
