// The queue in the hands of one thread, as long as it does not overflow.
#include "qorcontrol/ThreadSafeQueue.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <stdexcept>

#include "support/FakeClock.h"
#include "TestThread.h"

using testing_support::TestThread;

namespace {

constexpr int nothing = -1;

// The next item, or `nothing`.
int popped(ThreadSafeQueue<int>& queue, unsigned int timeoutMs = 0) {
    int item = nothing;
    const bool taken = queue.pop(item, timeoutMs);
    EXPECT_EQ(taken, item != nothing) << "an item is left alone exactly when none is taken";
    return item;
}

}  // namespace

TEST(ThreadSafeQueue, PopWithTimeOut0OnAnEmptyQueueReturnsFalseAtOnce) {
    ThreadSafeQueue<int> queue(10);
    const DWORD before = GetTickCount();
    EXPECT_EQ(popped(queue, 0), nothing);
    EXPECT_LE(GetTickCount() - before, 200u);
}

TEST(ThreadSafeQueue, ItemsComeOutInTheOrderTheyWentIn) {
    ThreadSafeQueue<int> queue(10);
    for (int i = 0; i < 10; ++i) queue.push(i);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(popped(queue), i);
    EXPECT_EQ(popped(queue), nothing);
    EXPECT_FALSE(queue.overflowed());
}

TEST(ThreadSafeQueue, TheRingWrapsManyTimes) {
    ThreadSafeQueue<int> queue(3);
    for (int i = 0; i < 100; i += 2) {
        queue.push(i);
        queue.push(i + 1);
        EXPECT_EQ(popped(queue), i);
        EXPECT_EQ(popped(queue), i + 1);
    }
    EXPECT_FALSE(queue.overflowed());
}

TEST(ThreadSafeQueue, ACapacityOf0IsTakenAs1) {
    ThreadSafeQueue<int> queue(0);
    queue.push(1);
    EXPECT_FALSE(queue.overflowed());
    EXPECT_EQ(popped(queue), 1);
    EXPECT_EQ(popped(queue), nothing);
    queue.push(2);
    queue.push(3);
    EXPECT_TRUE(queue.overflowed());
    EXPECT_EQ(popped(queue), 3);
}

TEST(ThreadSafeQueue, AnEmptyQueueIsWaitedForAsLongAsTheTimeOutSays) {
    ThreadSafeQueue<int> queue(1);
    const DWORD before = GetTickCount();
    EXPECT_EQ(popped(queue, 80), nothing);
    EXPECT_GE(GetTickCount() - before, 60u) << "ticks move in steps of up to 20 ms";
}

TEST(ThreadSafeQueue, AWaitWithoutEndEndsWithThePushOfAnotherThread) {
    ThreadSafeQueue<int> queue(1);
    TestThread producer([&] {
        Sleep(20);
        queue.push(5);
    });
    EXPECT_EQ(popped(queue, 0xFFFFFFFF), 5);
}

TEST(ThreadSafeQueue, ASignalLeftOverFromAPopWithoutWaitEndsTheNextWaitAtOnce) {
    ThreadSafeQueue<int> queue(2);
    queue.push(1);
    EXPECT_EQ(popped(queue), 1);
    const DWORD before = GetTickCount();
    EXPECT_EQ(popped(queue, 5000), nothing);
    EXPECT_LE(GetTickCount() - before, 2500u);
    EXPECT_EQ(popped(queue, 0), nothing) << "the signal served once";
}

TEST(ThreadSafeQueue, WhatIsThereIsTakenWithoutItsSignal) {
    ThreadSafeQueue<int> queue(2);
    int item = 0;
    EXPECT_FALSE(queue.takeIfThere(item));
    queue.push(1);
    queue.push(2);
    EXPECT_TRUE(queue.takeIfThere(item));
    EXPECT_EQ(item, 1);
    EXPECT_TRUE(queue.takeIfThere(item));
    EXPECT_EQ(item, 2);
    EXPECT_FALSE(queue.takeIfThere(item));
    EXPECT_EQ(WaitForSingleObject(queue.pushed().handle(), 0), WAIT_OBJECT_0);
}

TEST(ThreadSafeQueue, IsEmptyFromTheLastItemToTheNextOne) {
    ThreadSafeQueue<int> queue(2);
    EXPECT_TRUE(queue.isEmpty());
    queue.push(1);
    EXPECT_FALSE(queue.isEmpty());
    EXPECT_EQ(popped(queue), 1);
    EXPECT_TRUE(queue.isEmpty());
    queue.push(2);
    EXPECT_FALSE(queue.isEmpty());
    queue.clear();
    EXPECT_TRUE(queue.isEmpty());
}

TEST(ThreadSafeQueue, ClearDropsAllItemsAndTheLeftOverSignal) {
    ThreadSafeQueue<int> queue(2);
    queue.push(1);
    queue.push(2);
    queue.clear();
    const DWORD before = GetTickCount();
    EXPECT_EQ(popped(queue, 80), nothing);
    EXPECT_GE(GetTickCount() - before, 60u) << "ticks move in steps of up to 20 ms";
}

TEST(ThreadSafeQueue, AClearedQueueTakesItsFullCapacityAgain) {
    ThreadSafeQueue<int> queue(3);
    queue.push(1);
    queue.push(2);
    queue.clear();
    for (int i = 10; i < 13; ++i) queue.push(i);
    for (int i = 10; i < 13; ++i) EXPECT_EQ(popped(queue), i);
    EXPECT_FALSE(queue.overflowed());
}

TEST(ThreadSafeQueue, EachPushSignalsThePublishedEvent) {
    ThreadSafeQueue<int> queue(2);
    EXPECT_EQ(WaitForSingleObject(queue.pushed().handle(), 0), WAIT_TIMEOUT);
    queue.push(1);
    EXPECT_EQ(WaitForSingleObject(queue.pushed().handle(), 0), WAIT_OBJECT_0);
}

TEST(ThreadSafeQueue, ASlotKeepsItsCopyUntilItIsWrittenAgain) {
    ThreadSafeQueue<std::shared_ptr<int>> queue(2);
    const auto payload = std::make_shared<int>(1);
    queue.push(payload);
    std::shared_ptr<int> taken;
    ASSERT_TRUE(queue.pop(taken, 0));
    taken.reset();
    EXPECT_EQ(payload.use_count(), 2) << "after pop";
    queue.clear();
    EXPECT_EQ(payload.use_count(), 2) << "after clear";
    queue.push(nullptr);
    EXPECT_EQ(payload.use_count(), 1);
}

TEST(ThreadSafeQueue, APushWithRoomNeverSleeps) {
    FakeClock clock;
    int sleeps = 0;
    clock.onSleep = [&](unsigned int) { ++sleeps; };
    ThreadSafeQueue<int> queue(3);
    for (int i = 0; i < 3; ++i) queue.push(i);
    EXPECT_EQ(sleeps, 0);
}

namespace {

struct Explosive {
    Explosive() = default;
    Explosive(const Explosive&) = default;
    Explosive& operator=(const Explosive& other) {
        if (armed) throw std::runtime_error("copy failed on purpose");
        number = other.number;
        return *this;
    }

    static bool armed;
    int number = 0;
};
bool Explosive::armed = false;

}  // namespace

TEST(ThreadSafeQueue, ACopyThatThrowsLeavesTheLockFreeAndTheItemsInPlace) {
    ThreadSafeQueue<Explosive> queue(2);
    Explosive item;
    item.number = 7;
    queue.push(item);

    Explosive::armed = true;
    EXPECT_THROW(queue.push(item), std::runtime_error);
    Explosive out;
    EXPECT_THROW(queue.pop(out, 0), std::runtime_error);
    Explosive::armed = false;

    bool taken = false;
    TestThread other([&] { taken = queue.pop(out, 0); });
    ASSERT_TRUE(other.endsWithin(5000)) << "the lock is still held";
    EXPECT_TRUE(taken);
    EXPECT_EQ(out.number, 7);
}

TEST(ThreadSafeQueue, ADerivedQueueIsDestroyedThroughItsBase) {
    class Derived : public ThreadSafeQueue<int> {
    public:
        explicit Derived(bool& destroyed) : ThreadSafeQueue<int>(1), destroyed_(destroyed) {}
        ~Derived() override { destroyed_ = true; }

    private:
        bool& destroyed_;
    };
    bool destroyed = false;
    std::unique_ptr<ThreadSafeQueue<int>>(std::make_unique<Derived>(destroyed)).reset();
    EXPECT_TRUE(destroyed);
}
