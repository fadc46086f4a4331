#include "common/PerThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

namespace {

using Table = common::PerThread<int>;

TEST(PerThread, AThreadKeepsItsPlaceAndWhatIsInIt) {
    Table table;
    int& place = table.ofThisThread();
    place = 7;
    EXPECT_EQ(&table.ofThisThread(), &place);
    EXPECT_EQ(table.ofThisThread(), 7);
}

TEST(PerThread, APlaceIsNewWhenNobodyHasLeftOne) {
    Table table;
    table.ofThisThread() = 7;
    std::thread([&] { EXPECT_EQ(table.ofThisThread(), 0); }).join();
}

TEST(PerThread, ThreadsThatLiveSideBySideHavePlacesOfTheirOwn) {
    Table table;
    std::atomic<int> ready{0};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int number = 1; number <= 20; ++number)
        threads.emplace_back([&, number] {
            table.ofThisThread() = number;
            ++ready;
            while (ready < 20) std::this_thread::yield();
            if (table.ofThisThread() != number) ++wrong;
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(PerThread, ThePlacesOfEndedThreadsPassOnToNewOnes) {
    Table table;
    std::set<int*> places;
    int& own = table.ofThisThread();
    for (int i = 0; i < 200; ++i) std::thread([&] { places.insert(&table.ofThisThread()); }).join();
    EXPECT_LE(places.size(), 3u);
    EXPECT_EQ(places.count(&own), 0u);
    EXPECT_EQ(&table.ofThisThread(), &own);
}

TEST(PerThread, PlacesOfManyThreadsAtOnceAreUsedAgainAfterThem) {
    Table table;
    std::atomic<int> ready{0};
    std::set<int*> places;
    std::vector<std::thread> threads;
    for (int i = 0; i < 20; ++i)
        threads.emplace_back([&] {
            table.ofThisThread() = 1;
            ++ready;
            while (ready < 20) std::this_thread::yield();
        });
    for (std::thread& thread : threads) thread.join();
    int used = 0;
    for (int i = 0; i < 60; ++i)
        std::thread([&] {
            int& place = table.ofThisThread();
            used += place;
            place = 0;
        }).join();
    EXPECT_GE(used, 15);
}

}  // namespace
