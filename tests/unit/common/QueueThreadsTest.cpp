// The queue between several producers and consumers.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

#include "qorcontrol/ThreadSafeQueue.h"
#include "TestThread.h"

using testing_support::TestThread;

namespace {

constexpr int producers = 4;
constexpr int itemsEach = 5000;
constexpr int allItems = producers * itemsEach;

// Item number i of producer p is p * itemsEach + i.
std::vector<std::unique_ptr<TestThread>> startProducers(ThreadSafeQueue<int>& queue,
                                                        std::atomic<int>* unread) {
    std::vector<std::unique_ptr<TestThread>> threads;
    for (int p = 0; p < producers; ++p) {
        threads.push_back(std::make_unique<TestThread>([&queue, unread, p] {
            for (int i = 0; i < itemsEach; ++i) {
                // Reserve a slot first, so that the ring is never full.
                while (unread != nullptr && ++*unread > 8) {
                    --*unread;
                    common::sleepMs(0);
                }
                queue.push(p * itemsEach + i);
            }
        }));
    }
    return threads;
}

}  // namespace

TEST(QueueThreads, NothingIsLostOrDoubledWhileTheQueueIsNotFull) {
    ThreadSafeQueue<int> queue(allItems);
    std::vector<std::atomic<int>> seen(allItems);
    std::atomic<int> taken{0};
    {
        const auto threads = startProducers(queue, nullptr);
        const auto consume = [&] {
            int item = 0;
            while (taken < allItems) {
                if (!queue.pop(item, 5)) continue;
                ++seen[static_cast<std::size_t>(item)];
                ++taken;
            }
        };
        TestThread consumers[] = {TestThread(consume), TestThread(consume), TestThread(consume)};
    }
    EXPECT_EQ(taken, allItems);
    for (const auto& count : seen) ASSERT_EQ(count, 1);
    EXPECT_FALSE(queue.overflowed());
}

TEST(QueueThreads, OneConsumerSeesEachProducersItemsInOrderThroughASmallRing) {
    ThreadSafeQueue<int> queue(8);
    std::atomic<int> unread{0};
    const auto threads = startProducers(queue, &unread);
    std::vector<int> next(producers, 0);
    for (int taken = 0; taken < allItems;) {
        int item = 0;
        if (!queue.pop(item, 1000)) continue;
        --unread;
        ++taken;
        ASSERT_EQ(item % itemsEach, next[static_cast<std::size_t>(item / itemsEach)]++);
    }
    EXPECT_FALSE(queue.overflowed());
}

TEST(QueueThreads, AProducerIsNeverStoppedByAConsumerThatDoesNotCome) {
    ThreadSafeQueue<int> queue(2);
    TestThread producer([&] {
        for (int i = 0; i < 100; ++i) queue.push(i);
    });
    EXPECT_TRUE(producer.endsWithin(10000));
}

TEST(QueueThreads, OverflowUnderContentionKeepsTheQueueUsable) {
    ThreadSafeQueue<int> queue(2);
    {
        TestThread first([&] {
            for (int i = 0; i < 300; ++i) queue.push(i);
        });
        TestThread second([&] {
            for (int i = 0; i < 300; ++i) queue.push(i);
        });
        int item = 0;
        for (int i = 0; i < 100; ++i) queue.pop(item, 1);
    }
    queue.clear();
    queue.push(1);
    int item = 0;
    EXPECT_TRUE(queue.pop(item, 0));
    EXPECT_EQ(item, 1);
    EXPECT_FALSE(queue.pop(item, 0));
}
