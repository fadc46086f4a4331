#include <gtest/gtest.h>

#include "SocketTransportSupport.h"
#include "support/FakeClock.h"
#include "support/TcpProcessFigures.h"

namespace {

using tcp::pingAnswer;
using tcp::record;
using tcp::TcpPeer;
using tcp::word;

std::string request(std::uint32_t requestId) {
    return record(8, requestId, word(3));
}

TEST(SocketTransportConnection, TheWorkerConnectsWithoutBeingAsked) {
    TcpPeer peer;
    TestTransport transport(peer.port());

    EXPECT_NO_THROW(peer.accept());
    EXPECT_TRUE(peer.hearsNothingFor(30));
}

TEST(SocketTransportConnection, ASendBeforeTheConnectionStandsIsDelivered) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    std::future<bool> result = sendOnThread(transport, 5000);
    peer.accept();

    peer.send(pingAnswer(peer.expectRecord().requestId, 1));

    EXPECT_TRUE(result.get());
}

TEST(SocketTransportConnection, ASendOfTwoSecondsToAStoppedPeerFailsWithinAboutOnePass) {
    TcpPeer peer;
    peer.stopListening();
    TestTransport transport(peer.port());
    const Stopwatch watch;

    EXPECT_FALSE(transport.send(std::make_unique<CommandShutdown>(), 2000));

    EXPECT_LT(watch.ms(), 1800u) << "well before its own time-out";
}

TEST(SocketTransportConnection, ASendThatDoesNotWaitIsTrueEvenWhenThePeerIsStopped) {
    TcpPeer peer;
    peer.stopListening();
    TestTransport transport(peer.port());
    const Stopwatch watch;

    EXPECT_TRUE(transport.send(std::make_unique<CommandShutdown>(), 0));

    EXPECT_LT(watch.ms(), 200u);
}

TEST(SocketTransportConnection, AHostThatDoesNotExistIsLikeAStoppedPeer) {
    TestTransport transport(80, {}, tcp::impossibleHost());
    const Stopwatch watch;

    EXPECT_FALSE(transport.send(std::make_unique<CommandShutdown>(), 3000));

    EXPECT_LT(watch.ms(), 2500u);
}

TEST(SocketTransportConnection, APeerThatStartsLaterIsFound) {
    TcpPeer peer;
    peer.stopListening();
    TestTransport transport(peer.port());
    Sleep(300);

    peer.listenAgain();

    peer.accept();
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportConnection, TheFirstSendAfterARestartOfThePeerIsDelivered) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    ASSERT_TRUE(exchangeWorks(transport, peer));

    peer.stopListening();
    peer.close();
    Sleep(200);  // refused meanwhile
    peer.listenAgain();
    peer.accept();

    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportConnection, AClosedConnectionIsReplacedAgainAndAgain) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    for (int round = 0; round < 20; ++round) {
        peer.accept();
        ASSERT_TRUE(exchangeWorks(transport, peer)) << "round " << round;
        if (round % 2 == 0)
            peer.close();
        else
            peer.reset();
    }
}

TEST(SocketTransportConnection, ACloseInTheMiddleOfARecordLeavesNothingForTheNextConnection) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    peer.send(record(8, 1, std::string(40, 'x')).substr(0, 30));
    Sleep(50);

    peer.close();
    peer.accept();
    peer.send(request(2));

    EXPECT_EQ(pingAnswer(2, 1), peer.expectRecord().bytes());
}

TEST(SocketTransportConnection, WhatArrivedBeforeTheCloseIsStillHandled) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();

    std::string bytes;
    for (std::uint32_t id = 1; id <= 200; ++id)
        bytes += record(6 | tcp::replyFlag, id, std::string(500, '\0'));
    peer.send(bytes);
    peer.close();

    EXPECT_EQ(200u, transport.seen(200).size());
}

TEST(SocketTransportConnection, ADisconnectDuringASendEndsItAtItsDeadline) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    const Stopwatch watch;
    std::future<bool> result = sendOnThread(transport, 600);
    peer.expectRecord();

    peer.close();
    peer.accept();

    EXPECT_FALSE(result.get());
    EXPECT_GE(watch.ms(), 560u);
    EXPECT_LT(watch.ms(), 2500u);
}

TEST(SocketTransportConnection, AnAnswerOverTheNextConnectionStillCounts) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    std::future<bool> result = sendOnThread(transport, 5000);
    const std::uint32_t id = peer.expectRecord().requestId;

    peer.close();
    peer.accept();
    peer.send(pingAnswer(id, 1));

    EXPECT_TRUE(result.get());
}

TEST(SocketTransportConnection, ItCanBeDestroyedWhileItConnects) {
    TcpPeer peer;
    peer.stopListening();
    const Stopwatch watch;
    {
        const TestTransport transport(peer.port());
        Sleep(30);
    }
    EXPECT_LT(watch.ms(), 3000u);
}

TEST(SocketTransportConnection, ItCanBeDestroyedAtOnce) {
    TcpPeer peer;
    const Stopwatch watch;
    { const TestTransport transport(peer.port()); }
    EXPECT_LT(watch.ms(), 2000u);
}

TEST(SocketTransportConnection, ItCanBeDestroyedWhileASendWaits) {
    TcpPeer peer;
    auto transport = std::make_unique<TestTransport>(peer.port());
    peer.accept();
    std::future<bool> result = sendOnThread(*transport, 800);
    peer.expectRecord();

    transport.reset();

    EXPECT_TRUE(peer.seesTheEndWithin(1000));
    EXPECT_FALSE(result.get());
}

TEST(SocketTransportConnection, ItCanBeDestroyedWhenThePeerIsGone) {
    TcpPeer peer;
    auto transport = std::make_unique<TestTransport>(peer.port());
    peer.accept();
    peer.stopListening();
    peer.reset();
    Sleep(50);
    const Stopwatch watch;

    transport.reset();

    EXPECT_LT(watch.ms(), 3000u);
}

TEST(SocketTransportConnection, AStopTellsThatAWorkerHangs) {
    FakeClock clock;  // on which five seconds take no time
    TcpPeer peer;
    Gate handlerMayEnd;
    const unsigned threads = tcp::threadCount();
    {
        TestTransport transport(
            peer.port(), [&](IExternalCommand&, auto&) { return handlerMayEnd.passWithin(20000); });
        peer.accept();
        peer.send(request(1));
        ASSERT_EQ(1u, transport.seen(1).size());
        EXPECT_FALSE(transport.stop());
        EXPECT_FALSE(transport.stop());
        handlerMayEnd.open();
        for (int i = 0; i < 1000 && tcp::threadCount() > threads; ++i) Sleep(10);
    }
    EXPECT_LE(tcp::threadCount(), threads);
}

TEST(SocketTransportConnection, AStopThatTheWorkerFollowsTellsThat) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    EXPECT_TRUE(transport.stop());
    EXPECT_TRUE(transport.stop());
}

// The test program itself has none while it has no peer.
TEST(SocketTransportConnection, TheSocketSupportEndsWithTheTransport) {
    const auto becomes = [](bool wanted) {
        for (int i = 0; i < 500; ++i) {
            const SOCKET made = socket(AF_INET, SOCK_STREAM, 0);
            if (made != INVALID_SOCKET) closesocket(made);
            if ((made != INVALID_SOCKET) == wanted) return true;
            Sleep(10);
        }
        return false;
    };
    ASSERT_TRUE(becomes(false));
    {
        const TestTransport transport(1);
        EXPECT_TRUE(becomes(true));
    }
    EXPECT_TRUE(becomes(false));
}

TEST(SocketTransportConnection, TwoTransportsWorkSideBySide) {
    TcpPeer firstPeer;
    TcpPeer secondPeer;
    TestTransport first(firstPeer.port());
    TestTransport second(secondPeer.port());
    firstPeer.accept();
    secondPeer.accept();

    EXPECT_TRUE(exchangeWorks(first, firstPeer));
    EXPECT_TRUE(exchangeWorks(second, secondPeer));
}

TEST(SocketTransportConnection, FiftyRoundsLeaveNoHandlesAndNoThreadsBehind) {
    TcpPeer peer;
    const auto rounds = [&peer](int count) {
        for (int round = 0; round < count; ++round) {
            TestTransport transport(peer.port());
            peer.accept();
            ASSERT_TRUE(exchangeWorks(transport, peer));
        }
    };
    rounds(3);
    peer.close();
    Sleep(100);
    const std::uintptr_t handles = tcp::nextFreeHandle();
    const unsigned threads = tcp::threadCount();

    rounds(50);

    peer.close();
    Sleep(100);
    EXPECT_EQ(handles, tcp::nextFreeHandle());
    EXPECT_EQ(threads, tcp::threadCount());
}

}  // namespace
