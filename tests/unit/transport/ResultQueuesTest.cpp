#include "transport/ResultQueues.h"

#include <gtest/gtest.h>

#include <future>
#include <set>
#include <vector>

namespace {

TEST(ResultQueues, AThreadAlwaysHasTheSameQueue) {
    EXPECT_EQ(&resultQueueOfThisThread(), &resultQueueOfThisThread());
}

TEST(ResultQueues, ThreadsThatLiveAtTheSameTimeHaveQueuesOfTheirOwn) {
    constexpr std::size_t count = 6;
    std::promise<void> release;
    const std::shared_future<void> released(release.get_future());
    std::vector<std::promise<CmdResultQueue*>> answers(count);
    std::vector<std::future<void>> threads;
    for (std::promise<CmdResultQueue*>& answer : answers)
        threads.push_back(std::async(std::launch::async, [&answer, released] {
            answer.set_value(&resultQueueOfThisThread());
            released.wait();
        }));

    std::set<CmdResultQueue*> queues{&resultQueueOfThisThread()};
    for (std::promise<CmdResultQueue*>& answer : answers) queues.insert(answer.get_future().get());
    release.set_value();

    EXPECT_EQ(count + 1, queues.size());
}

TEST(ResultQueues, TheQueueOutlivesItsThread) {
    CmdResultQueue* const queue =
        std::async(std::launch::async, [] { return &resultQueueOfThisThread(); }).get();

    queue->push(CmdResult{5, CmdResult::success});

    CmdResult left;
    EXPECT_TRUE(queue->pop(left, 0));
    EXPECT_EQ(5u, left.requestId);
}

TEST(ResultQueues, AQueueHoldsOneResultTheNewest) {
    CmdResultQueue& queue = resultQueueOfThisThread();
    queue.push(CmdResult{1, CmdResult::success});
    queue.push(CmdResult{2, CmdResult::failure});

    CmdResult left;
    ASSERT_TRUE(queue.pop(left, 0));
    EXPECT_EQ(2u, left.requestId);
    EXPECT_FALSE(queue.pop(left, 0));
}

}  // namespace
