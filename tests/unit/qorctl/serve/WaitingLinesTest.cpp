#include "serve/WaitingLines.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using qorctl::serve::ClientNumber;
using qorctl::serve::WaitingLines;

namespace {

class RpcWaitingLines : public testing::Test {
protected:
    WaitingLines lines{3};
    std::string done;

    bool add(ClientNumber client, char mark) {
        return lines.add(client, [this, mark] { done += mark; });
    }
    /// Carries out all that is there.
    std::string all() {
        lines.end();
        while (const auto work = lines.next()) (*work)();
        return done;
    }
};

TEST_F(RpcWaitingLines, OfTwoClientsTakeTurnsHoweverManyOneOfThemHas) {
    for (const char mark : {'a', 'b', 'c'}) EXPECT_TRUE(add(1, mark));
    for (const char mark : {'x', 'y'}) EXPECT_TRUE(add(2, mark));
    EXPECT_EQ("axbyc", all());
}

TEST_F(RpcWaitingLines, AreFullForTheClientThatFillsThem) {
    for (const char mark : {'a', 'b', 'c'}) EXPECT_TRUE(add(1, mark));
    EXPECT_FALSE(add(1, 'd'));
    EXPECT_TRUE(add(2, 'x'));
    EXPECT_TRUE(lines.addInAnyCase(1, [this] { done += 'e'; }));
    EXPECT_EQ("axbce", all());
}

TEST_F(RpcWaitingLines, ForgetWhatAClientWaitsForThatHasGone) {
    for (const char mark : {'a', 'b'}) add(1, mark);
    add(2, 'x');
    EXPECT_EQ(2u, lines.forget(1));
    EXPECT_EQ(0u, lines.forget(1));
    EXPECT_EQ("x", all());
}

TEST_F(RpcWaitingLines, TakeNothingMoreOnceTheyAreClosed) {
    add(1, 'a');
    lines.end();
    EXPECT_FALSE(add(1, 'b'));
    EXPECT_FALSE(lines.addInAnyCase(1, [] {}));
    EXPECT_EQ("a", all());
}

TEST_F(RpcWaitingLines, WakeWhoWaitsForWorkAndForTheEnd) {
    std::atomic<int> count{0};
    std::thread worker([&] {
        while (const auto work = lines.next()) (*work)();
    });
    for (int i = 0; i < 1000; ++i)
        while (!lines.add(static_cast<ClientNumber>(i % 7), [&] { ++count; }))
            std::this_thread::yield();
    lines.end();
    worker.join();
    EXPECT_EQ(1000, count);
}

TEST(RpcUrgentWork, PassesAllThatWaits) {
    WaitingLines lines(10);
    std::string done;
    for (const char letter : {'a', 'b'}) lines.add(1, [&done, letter] { done += letter; });
    for (const char letter : {'1', '2'})
        EXPECT_TRUE(lines.addFirst([&done, letter] { done += letter; }));
    lines.end();
    EXPECT_FALSE(lines.addFirst([] {}));
    while (const auto work = lines.next()) (*work)();
    EXPECT_EQ("12ab", done);
}

}  // namespace
