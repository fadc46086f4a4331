// Commands that wait for their turn, and senders that do not wait for them any more.

#include <gtest/gtest.h>

#include <atomic>

#include "SocketTransportSupport.h"

namespace {

using tcp::pingAnswer;
using tcp::TcpPeer;
using tcp::word;

std::unique_ptr<CommandEcuToolRoutine> routine(std::uint32_t number) {
    return std::make_unique<CommandEcuToolRoutine>(protocol::EcuToolRoutine{number});
}

/// A transport whose peer does not listen yet: what it is given to send has to wait.
class SocketPermit : public testing::Test {
protected:
    SocketPermit() { peer.stopListening(); }

    /// The routines that arrive, up to the one that ends the test.
    std::vector<std::string> arriving() {
        constexpr std::uint32_t last = 99;
        peer.listenAgain();
        peer.accept();
        transport.send(routine(last), 0);
        std::vector<std::string> payloads;
        for (;;) {
            payloads.push_back(peer.expectRecord().payload);
            if (payloads.back() == word(last)) break;
        }
        payloads.pop_back();
        return payloads;
    }

    TcpPeer peer;
    TestTransport transport{peer.port()};
};

TEST_F(SocketPermit, ACommandThatItsSenderHasGivenUpNeverLeaves) {
    for (std::uint32_t i = 1; i <= 5; ++i) EXPECT_FALSE(transport.send(routine(i), 20));
    EXPECT_TRUE(arriving().empty());
}

TEST_F(SocketPermit, ACommandThatNobodyWaitsForStillLeaves) {
    transport.send(routine(7), 0);
    EXPECT_EQ(std::vector<std::string>{word(7)}, arriving());
}

TEST_F(SocketPermit, OneThatWasGivenUpDoesNotHoldUpTheNext) {
    for (std::uint32_t i = 1; i <= 8; ++i) EXPECT_FALSE(transport.send(routine(i), 1));
    const Stopwatch watch;
    EXPECT_FALSE(transport.send(routine(9), 20000));  // fails when its turn has come
    EXPECT_LT(watch.ms(), 4000u);
}

TEST_F(SocketPermit, ThePermitIsAskedWhenTheTurnHasComeAndNotBefore) {
    std::atomic<bool> isAllowed{true};
    std::future<bool> sent = std::async(std::launch::async, [&] {
        return transport.sendIf([&] { return isAllowed.load(); }, routine(1), 20000);
    });
    Sleep(50);
    isAllowed = false;
    EXPECT_TRUE(arriving().empty());
    EXPECT_FALSE(sent.get());
}

class SocketPermitConnected : public testing::Test {
protected:
    SocketPermitConnected() { peer.accept(); }

    TcpPeer peer;
    TestTransport transport{peer.port()};
};

TEST_F(SocketPermitConnected, WithAPermitACommandLeaves) {
    std::future<bool> sent = std::async(std::launch::async, [&] {
        return transport.sendIf([] { return true; }, routine(1), 5000);
    });
    peer.send(pingAnswer(peer.expectRecord().requestId, 1));
    EXPECT_TRUE(sent.get());
}

TEST_F(SocketPermitConnected, WithoutAPermitASendFailsAtOnceAndNothingLeaves) {
    const Stopwatch watch;
    EXPECT_FALSE(transport.sendIf([] { return false; }, routine(1), 5000));
    EXPECT_LT(watch.ms(), 2000u);
    EXPECT_TRUE(transport.sendIf([] { return false; }, routine(2), 0));  // nobody waits
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST_F(SocketPermitConnected, EveryConnectionAfterTheFirstIsToAnotherQor) {
    EXPECT_EQ(0, transport.newQors());
    for (int round = 1; round <= 3; ++round) {
        if (round == 2)
            peer.reset();
        else
            peer.close();
        peer.accept();
        EXPECT_TRUE(exchangeWorks(transport, peer));
        EXPECT_EQ(round, transport.newQors());
    }
}

TEST_F(SocketPermitConnected, AnotherQorIsKnownBeforeAnythingOfItIsHandledOrSentToIt) {
    std::atomic<int> atHandling{0};
    TcpPeer another;
    TestTransport* self = nullptr;
    TestTransport handling(another.port(), [&](IExternalCommand&, auto&) {
        atHandling = self->newQors();
        return true;
    });
    self = &handling;
    another.accept();
    EXPECT_TRUE(exchangeWorks(handling, another));
    another.close();
    another.accept();
    another.send(tcp::record(8, 5, word(3)));
    EXPECT_EQ(1u, handling.seen(1).size());
    EXPECT_EQ(pingAnswer(5, 1), another.expectRecord().bytes());
    EXPECT_EQ(1, atHandling);
}

}  // namespace
