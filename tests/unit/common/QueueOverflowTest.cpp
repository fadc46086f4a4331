// A full queue never stops its producer: it sleeps once for 1 ms and overwrites.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "qorcontrol/ThreadSafeQueue.h"
#include "support/FakeClock.h"
#include "TestThread.h"

using testing_support::TestThread;

namespace {

class QueueOverflow : public testing::Test {
protected:
    QueueOverflow() {
        clock_.onSleep = [this](unsigned int ms) {
            sleepsMs_.push_back(ms);
            if (whileAsleep_) whileAsleep_();
        };
    }

    void push(int count) {
        for (int i = 0; i < count; ++i) queue_.push(++last_);
    }

    std::vector<int> all() {
        std::vector<int> items;
        for (int item = 0; queue_.pop(item, 0);) items.push_back(item);
        return items;
    }

    std::vector<unsigned int> sleepsMs_;
    std::function<void()> whileAsleep_;
    FakeClock clock_;
    ThreadSafeQueue<int> queue_{10};

private:
    int last_ = 0;
};

using Items = std::vector<int>;

}  // namespace

TEST_F(QueueOverflow, Pushing11IntoThe10SlotsSetsOverflowedAndTheFirstPopReturnsThe11th) {
    push(11);
    EXPECT_TRUE(queue_.overflowed());
    int item = 0;
    ASSERT_TRUE(queue_.pop(item, 0));
    EXPECT_EQ(item, 11);
    EXPECT_FALSE(queue_.pop(item, 0));
}

TEST_F(QueueOverflow, AFullQueueAloneHasNotOverflowed) {
    push(10);
    EXPECT_FALSE(queue_.overflowed());
    EXPECT_EQ(all(), (Items{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(QueueOverflow, A12thPushLandsBehindThe11thWithoutAnyGrace) {
    push(11);
    EXPECT_EQ(sleepsMs_, std::vector<unsigned int>{1});
    push(1);
    EXPECT_EQ(sleepsMs_, std::vector<unsigned int>{1});
    EXPECT_EQ(all(), (Items{11, 12}));
}

TEST_F(QueueOverflow, TheMarkIsTakenBackByAPushIntoTheEmptiedQueue) {
    push(11);
    EXPECT_EQ(all(), Items{11});
    EXPECT_TRUE(queue_.overflowed());
    push(1);
    EXPECT_FALSE(queue_.overflowed());
    EXPECT_EQ(all(), Items{12});
}

TEST_F(QueueOverflow, ClearTakesTheMarkBack) {
    push(11);
    queue_.clear();
    EXPECT_FALSE(queue_.overflowed());
    EXPECT_EQ(all(), Items());
}

TEST_F(QueueOverflow, AQueueThatWrappedOverwritesItsOldestItem) {
    push(4);
    EXPECT_EQ(all(), (Items{1, 2, 3, 4}));
    push(11);
    EXPECT_TRUE(queue_.overflowed());
    EXPECT_EQ(all(), Items{15});
}

TEST_F(QueueOverflow, WithOneSlotTheNewestItemAlwaysWins) {
    ThreadSafeQueue<int> slot(1);
    for (int i = 1; i <= 5; ++i) slot.push(i);
    int item = 0;
    ASSERT_TRUE(slot.pop(item, 0));
    EXPECT_EQ(item, 5);
    EXPECT_FALSE(slot.pop(item, 0));
    EXPECT_EQ(sleepsMs_, (std::vector<unsigned int>{1, 1, 1, 1}));
}

TEST_F(QueueOverflow, TheGraceIsGivenOnceWithTheLockFree) {
    int rescued = 0;
    std::unique_ptr<TestThread> consumer;
    whileAsleep_ = [&] {
        consumer = std::make_unique<TestThread>([&] { queue_.pop(rescued, 0); });
        EXPECT_TRUE(consumer->endsWithin(5000)) << "the producer sleeps in the lock";
    };
    push(11);
    consumer.reset();
    EXPECT_EQ(sleepsMs_, std::vector<unsigned int>{1});
    EXPECT_EQ(rescued, 1);
    EXPECT_FALSE(queue_.overflowed());
    EXPECT_EQ(all(), (Items{2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
}

TEST_F(QueueOverflow, AnotherProducerDuringTheGraceDoesNotEarnAnother) {
    whileAsleep_ = [&] {
        whileAsleep_ = nullptr;
        int item = 0;
        queue_.pop(item, 0);
        queue_.push(100);
    };
    push(11);
    EXPECT_EQ(sleepsMs_, std::vector<unsigned int>{1});
    EXPECT_TRUE(queue_.overflowed());
    EXPECT_EQ(all(), Items{11});
}
