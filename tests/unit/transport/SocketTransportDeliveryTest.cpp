// How a send over TCP has ended: what becomes of the command is known where it happens.

#include <gtest/gtest.h>

#include <stdexcept>

#include "SocketTransportSupport.h"

namespace {

using tcp::pingAnswer;
using tcp::TcpPeer;
using tcp::word;

Delivery deliver(TestTransport& transport, unsigned timeoutMs) {
    return transport.sendIf([] { return true; }, std::make_unique<CommandEcuToolRoutine>(),
                            timeoutMs);
}

std::future<Delivery> deliverOnThread(TestTransport& transport, unsigned timeoutMs) {
    return std::async(std::launch::async, [&, timeoutMs] { return deliver(transport, timeoutMs); });
}

class SocketDelivery : public testing::Test {
protected:
    SocketDelivery() {
        peer.accept();
        EXPECT_TRUE(exchangeWorks(transport, peer));
    }

    TcpPeer peer;
    TestTransport transport{peer.port()};
};

TEST_F(SocketDelivery, AnAcknowledgementSaysTaken) {
    std::future<Delivery> sent = deliverOnThread(transport, 5000);
    peer.send(pingAnswer(peer.expectRecord().requestId, 1));
    EXPECT_EQ(Delivery::taken, sent.get());
}

TEST_F(SocketDelivery, AnAcknowledgementOfStatusTwoSaysRefused) {
    std::future<Delivery> sent = deliverOnThread(transport, 5000);
    peer.send(pingAnswer(peer.expectRecord().requestId, 2));
    EXPECT_EQ(Delivery::refused, sent.get());
}

TEST_F(SocketDelivery, WhatHasLeftAndIsNotAcknowledgedWasMetWithSilence) {
    EXPECT_EQ(Delivery::silent, deliver(transport, 200));
    peer.expectRecord();
}

TEST_F(SocketDelivery, ARefusalIsToldAlsoWhenItsSenderHasGivenUp) {
    EXPECT_EQ(Delivery::silent, deliver(transport, 100));
    const std::uint32_t late = peer.expectRecord().requestId;
    peer.send(pingAnswer(late, 1));
    EXPECT_TRUE(exchangeWorks(transport, peer));
    EXPECT_NE(transport.lastRefused(), late);
    peer.send(pingAnswer(late, 2));
    EXPECT_TRUE(exchangeWorks(transport, peer));
    EXPECT_EQ(transport.lastRefused(), late);
}

TEST_F(SocketDelivery, AConnectionThatBreaksBehindTheCommandIsLost) {
    std::future<Delivery> sent = deliverOnThread(transport, 600);
    peer.expectRecord();
    peer.close();
    peer.stopListening();
    EXPECT_EQ(Delivery::lost, sent.get());
    EXPECT_FALSE(transport.isConnected());
    EXPECT_TRUE(transport.isPeerGone());
}

TEST_F(SocketDelivery, AlsoIfThereIsAnotherOneBeforeTheTimeIsOver) {
    std::future<Delivery> sent = deliverOnThread(transport, 1500);
    peer.expectRecord();
    peer.close();
    peer.accept();
    EXPECT_TRUE(exchangeWorks(transport, peer));
    EXPECT_EQ(Delivery::lost, sent.get());
    EXPECT_TRUE(transport.isConnected());
}

TEST_F(SocketDelivery, WhatNoRecordCanHoldIsTooLong) {
    CommandDirectCtrl command;
    command.values = std::vector<double>((128u << 20) / sizeof(double));
    EXPECT_EQ(Delivery::tooLong,
              transport.sendIf([] { return true; },
                               std::make_unique<CommandDirectCtrl>(std::move(command)), 5000));
}

TEST(SocketDeliveryWithoutAPeer, IsNoConnectionWhetherTheTimeOrTheAttemptEndsFirst) {
    TcpPeer peer;
    peer.stopListening();
    TestTransport transport{peer.port()};
    bool asked = false;
    EXPECT_EQ(Delivery::noConnection,
              transport.sendIf([&] { return asked = true; },
                               std::make_unique<CommandEcuToolRoutine>(), 20));
    EXPECT_EQ(Delivery::noConnection,
              transport.sendIf([&] { return asked = true; },
                               std::make_unique<CommandEcuToolRoutine>(), 20000));
    EXPECT_FALSE(asked);
    EXPECT_FALSE(transport.isConnected());
}

// Nothing comes any more, so nothing is waited for.
TEST(SocketDeliveryOfAWorkerThatDies, IsBrokenAtOnce) {
    TcpPeer peer;
    TestTransport transport{peer.port(), [](IExternalCommand&, auto&) -> bool {
                                throw std::runtime_error("not foreseen");
                            }};
    peer.accept();
    std::future<Delivery> sent = deliverOnThread(transport, 60000);
    const Stopwatch watch;
    peer.expectRecord();

    peer.send(tcp::record(8, 5, word(3)));

    EXPECT_EQ(Delivery::broken, sent.get());
    EXPECT_LT(watch.ms(), 30000u);
}

TEST(SocketDeliveryBehindAHandler, WasNotBegun) {
    TcpPeer peer;
    Gate handlerMayEnd;
    TestTransport transport{
        peer.port(), [&](IExternalCommand&, auto&) { return handlerMayEnd.passWithin(20000); }};
    peer.accept();
    peer.send(tcp::record(8, 5, word(3)));
    EXPECT_EQ(1u, transport.seen(1).size());
    EXPECT_EQ(Delivery::notBegun, deliver(transport, 50));
    handlerMayEnd.open();
}

}  // namespace
