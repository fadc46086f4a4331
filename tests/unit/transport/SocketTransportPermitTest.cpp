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

/// A peer that nobody can connect to yet.
class DeafPeer : public TcpPeer {
public:
    DeafPeer() { stopListening(); }
};

/// A transport whose peer does not listen yet: what it is given to send has to wait.
class SocketPermit : public testing::Test {
protected:
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

    DeafPeer peer;
    TestTransport transport{peer.port()};
};

TEST_F(SocketPermit, ACommandThatItsSenderHasGivenUpNeverLeaves) {
    for (std::uint32_t i = 1; i <= 5; ++i) EXPECT_FALSE(transport.send(routine(i), 20));
    EXPECT_TRUE(arriving().empty());
}

TEST_F(SocketPermit, OneThatWasGivenUpDoesNotHoldUpTheNext) {
    for (std::uint32_t i = 1; i <= 8; ++i) EXPECT_FALSE(transport.send(routine(i), 1));
    const Stopwatch watch;
    EXPECT_FALSE(transport.send(routine(9), 20000));  // fails when its turn has come
    EXPECT_LT(watch.ms(), 4000u);
}

/// A connected transport whose worker is held up in a handler: what it is given has to wait.
class SocketPermitBusy : public testing::Test {
protected:
    SocketPermitBusy() {
        peer.accept();
        peer.send(tcp::record(8, 5, word(3)));
        transport.seen(1);
    }
    ~SocketPermitBusy() override { handlerMayEnd.open(); }

    TcpPeer peer;
    Gate handlerMayEnd;
    TestTransport transport{
        peer.port(), [this](IExternalCommand&, auto&) { return handlerMayEnd.passWithin(20000); }};
};

TEST_F(SocketPermitBusy, ThePermitIsAskedWhenTheTurnHasComeAndNotBefore) {
    std::atomic<bool> isAllowed{true};
    std::atomic<int> asked{0};
    const auto permit = [&] {
        ++asked;
        return isAllowed.load();
    };
    std::future<Delivery> withdrawn =
        std::async(std::launch::async, [&] { return transport.sendIf(permit, routine(1), 20000); });
    Sleep(50);
    EXPECT_EQ(0, asked);
    isAllowed = false;
    handlerMayEnd.open();
    EXPECT_EQ(Delivery::withdrawn, withdrawn.get());
    EXPECT_EQ(1, asked);
    EXPECT_EQ(pingAnswer(5, 1), peer.expectRecord().bytes());
    isAllowed = true;
    std::future<Delivery> allowed =
        std::async(std::launch::async, [&] { return transport.sendIf(permit, routine(2), 5000); });
    const tcp::Record record = peer.expectRecord();
    EXPECT_EQ(word(2), record.payload);
    peer.send(pingAnswer(record.requestId, 1));
    EXPECT_EQ(Delivery::taken, allowed.get());
}

TEST_F(SocketPermitBusy, ACommandThatNobodyWaitsForLeavesBehindOneThatWasGivenUp) {
    EXPECT_FALSE(transport.send(routine(6), 1));
    EXPECT_TRUE(transport.send(routine(7), 0));
    handlerMayEnd.open();
    EXPECT_EQ(pingAnswer(5, 1), peer.expectRecord().bytes());
    EXPECT_EQ(word(7), peer.expectRecord().payload);
}

class SocketPermitConnected : public testing::Test {
protected:
    SocketPermitConnected() { peer.accept(); }

    TcpPeer peer;
    TestTransport transport{peer.port()};
};

TEST_F(SocketPermitConnected, WithAPermitACommandLeaves) {
    std::future<Delivery> sent = std::async(std::launch::async, [&] {
        return transport.sendIf([] { return true; }, routine(1), 5000);
    });
    peer.send(pingAnswer(peer.expectRecord().requestId, 1));
    EXPECT_EQ(Delivery::taken, sent.get());
}

TEST_F(SocketPermitConnected, WithoutAPermitASendFailsAtOnceAndNothingLeaves) {
    const Stopwatch watch;
    EXPECT_EQ(Delivery::withdrawn, transport.sendIf([] { return false; }, routine(1), 5000));
    EXPECT_LT(watch.ms(), 2000u);
    transport.sendIf([] { return false; }, routine(2), 0);  // nobody waits
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
