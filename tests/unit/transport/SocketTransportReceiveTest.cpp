#include <gtest/gtest.h>

#include <new>
#include <utility>

#include "SocketTransportSupport.h"
#include "transport/ConnInstance.h"

namespace {

using tcp::pingAnswer;
using tcp::Record;
using tcp::record;
using tcp::replyFlag;
using tcp::TcpPeer;
using tcp::word;

using Replyer = IExternalCommand::ICommandReplyer;

/// A command of QOR's own, with a request id of the test's choice.
std::string request(std::uint32_t requestId) {
    return record(8, requestId, word(3));
}

std::string pushedValue(std::uint32_t requestId) {
    return record(6, requestId, word(3) + std::string(8, '\0'));
}

std::string reply(std::uint32_t requestId) {
    return record(8 | replyFlag, requestId, word(3));
}

class SocketTransportReceiving : public testing::Test {
protected:
    TcpPeer peer;
    std::unique_ptr<TestTransport> transport;

    void connect(TestTransport::Handler handler = {}) {
        transport = std::make_unique<TestTransport>(peer.port(), std::move(handler));
        peer.accept();
    }
};

TEST_F(SocketTransportReceiving, AReplySplitOverTwoSegmentsIsParsedOnceTheSecondArrives) {
    connect();
    const std::string bytes = reply(5);

    peer.send(bytes.substr(0, 14));
    Sleep(60);
    EXPECT_EQ(0u, transport->seen(0).size());
    peer.send(bytes.substr(14));

    EXPECT_EQ(5u, transport->seen(1).at(0).requestId);
}

TEST_F(SocketTransportReceiving, ARecordMayArriveByteByByte) {
    connect();

    peer.sendInPieces(request(6) + request(7), 1, 2);

    EXPECT_EQ(pingAnswer(6, 1), peer.expectRecord().bytes());
    EXPECT_EQ(pingAnswer(7, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, TwoCommandsInOneSegmentAreHandledInTheSamePass) {
    Gate firstIsRunning;
    Gate sendIsQueued;
    connect([&](IExternalCommand&, Replyer&) {
        firstIsRunning.open();
        return sendIsQueued.passWithin(5000);
    });

    peer.send(request(1) + request(2));
    ASSERT_TRUE(firstIsRunning.passWithin(5000));
    transport->send(std::make_unique<CommandShutdown>(), 0);  // goes out at the end of the pass
    sendIsQueued.open();

    EXPECT_EQ(pingAnswer(1, 1), peer.expectRecord().bytes());
    EXPECT_EQ(pingAnswer(2, 1), peer.expectRecord().bytes());
    EXPECT_EQ(4u, peer.expectRecord().commandId());
}

TEST_F(SocketTransportReceiving, AReplyLeavesAtOnceAndTakesEarlierAcknowledgementsAlong) {
    Gate mayEnd;
    connect([&](IExternalCommand& command, Replyer& replyer) {
        if (static_cast<const ExternalCommand&>(command).requestId() != 2) return true;
        replyer.reply(nullptr, 0);
        return mayEnd.passWithin(5000);  // as long as a message box is open
    });

    peer.send(pushedValue(1) + request(2) + pushedValue(3));

    EXPECT_EQ(pingAnswer(1, 1), peer.expectRecord().bytes());
    EXPECT_EQ(pingAnswer(2, 0), peer.expectRecord().bytes());
    mayEnd.open();
    EXPECT_EQ(pingAnswer(3, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, ManyValuesInOneSegmentAreAllAcknowledgedInTheirOrder) {
    connect();
    std::string requests;
    for (std::uint32_t id = 1; id <= 100; ++id) requests += pushedValue(id);

    peer.send(requests);

    for (std::uint32_t id = 1; id <= 100; ++id)
        EXPECT_EQ(pingAnswer(id, 1), peer.expectRecord().bytes());
    EXPECT_TRUE(peer.hearsNothingFor(50));
}

TEST_F(SocketTransportReceiving, ALongRowOfValuesIsAcknowledgedBitByBit) {
    Gate mayGoOn;
    connect([&](IExternalCommand& command, Replyer&) {
        const bool isLate = static_cast<const ExternalCommand&>(command).requestId() > 20;
        return !isLate || mayGoOn.passWithin(5000);
    });
    std::string requests;
    for (std::uint32_t id = 1; id <= 30; ++id) requests += pushedValue(id);

    peer.send(requests);

    for (std::uint32_t id = 1; id <= 16; ++id)
        EXPECT_EQ(pingAnswer(id, 1), peer.expectRecord().bytes());
    mayGoOn.open();
    for (std::uint32_t id = 17; id <= 30; ++id)
        EXPECT_EQ(pingAnswer(id, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, ValuesAreAcknowledgedBeforeAHandlerThatMayTakeItsTime) {
    Gate mayEnd;
    connect([&](IExternalCommand& command, Replyer&) {
        const bool isSlow = static_cast<const ExternalCommand&>(command).requestId() == 3;
        return !isSlow || mayEnd.passWithin(5000);
    });

    peer.send(pushedValue(1) + pushedValue(2) + request(3));

    EXPECT_EQ(pingAnswer(1, 1), peer.expectRecord().bytes());
    EXPECT_EQ(pingAnswer(2, 1), peer.expectRecord().bytes());
    mayEnd.open();
    EXPECT_EQ(pingAnswer(3, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, ARequestAcceptedWithoutAReplyIsAcknowledgedAsHandled) {
    connect([](IExternalCommand&, Replyer&) { return true; });

    peer.send(request(0xCAFE0001));

    EXPECT_EQ(pingAnswer(0xCAFE0001, 1), peer.expectRecord().bytes());
    EXPECT_TRUE(peer.hearsNothingFor(50));
}

TEST_F(SocketTransportReceiving, ARequestThatIsNeitherRepliedToNorAcceptedIsAcknowledgedAsRefused) {
    connect([](IExternalCommand&, Replyer&) { return false; });

    peer.send(request(0xCAFE0002));

    EXPECT_EQ(pingAnswer(0xCAFE0002, 2), peer.expectRecord().bytes());
    EXPECT_TRUE(peer.hearsNothingFor(50));
}

TEST_F(SocketTransportReceiving, ARequestThatTheHandlerRepliedToIsNotAcknowledgedAsWell) {
    connect([](IExternalCommand&, Replyer& replyer) {
        EXPECT_TRUE(replyer.reply(std::make_unique<CommandShutdown>(), 100));
        return false;
    });

    peer.send(request(0xCAFE0003));

    const Record answer = peer.expectRecord();
    EXPECT_EQ(4u | replyFlag, answer.header);
    EXPECT_EQ(0xCAFE0003u, answer.requestId);
    EXPECT_TRUE(peer.hearsNothingFor(50));
}

TEST_F(SocketTransportReceiving, AnEmptyReplyReleasesTheSenderWithStatusZero) {
    connect([](IExternalCommand&, Replyer& replyer) { return replyer.reply(nullptr, 0); });

    peer.send(request(0xCAFE0004));

    EXPECT_EQ(pingAnswer(0xCAFE0004, 0), peer.expectRecord().bytes());
    EXPECT_TRUE(peer.hearsNothingFor(50));
}

TEST_F(SocketTransportReceiving, AReceivedReplyIsNeverAcknowledged) {
    connect([](IExternalCommand& command, Replyer&) {
        return static_cast<const ExternalCommand&>(command).requestId() == 1;
    });

    peer.send(reply(1) + reply(2));

    EXPECT_EQ(2u, transport->seen(2).size());
    EXPECT_TRUE(peer.hearsNothingFor(100));
}

TEST_F(SocketTransportReceiving, AnEmptyReplyToAReplySendsNothing) {
    connect([](IExternalCommand&, Replyer& replyer) { return replyer.reply(nullptr, 0); });

    peer.send(reply(1));

    EXPECT_EQ(1u, transport->seen(1).size());
    EXPECT_TRUE(peer.hearsNothingFor(100));
}

TEST_F(SocketTransportReceiving, AReceivedPingIsAcceptedLikeAnyCommand) {
    connect();

    peer.send(record(0, 9, word(0)));

    EXPECT_EQ(pingAnswer(9, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, HeaderBitsWithoutMeaningAreIgnored) {
    connect();

    peer.send(record(0xFFFE0008, 10, word(3)));

    EXPECT_EQ(pingAnswer(10, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, AReplyLeavesWhileTheHandlerStillRuns) {
    Gate handlerMayEnd;
    connect([&](IExternalCommand&, Replyer& replyer) {
        replyer.reply(nullptr, 2000);
        return handlerMayEnd.passWithin(5000);
    });

    peer.send(request(11));

    EXPECT_EQ(pingAnswer(11, 0), peer.expectRecord(3000).bytes());
    handlerMayEnd.open();
}

TEST_F(SocketTransportReceiving, ASendFromAHandlerLeavesAtOnceAndDoesNotWait) {
    Gate handlerMayEnd;
    unsigned sendMs = 9999;
    bool sent = false;
    connect([&](IExternalCommand&, Replyer&) {
        const Stopwatch watch;
        sent = transport->send(std::make_unique<CommandShutdown>(), 2000);
        sendMs = watch.ms();
        return handlerMayEnd.passWithin(5000);
    });

    peer.send(request(12));

    const Record own = peer.expectRecord(3000);
    handlerMayEnd.open();
    EXPECT_EQ(4u, own.header) << "a request of its own, not an answer";
    EXPECT_NE(12u, own.requestId);
    EXPECT_EQ(pingAnswer(12, 1), peer.expectRecord().bytes());
    EXPECT_TRUE(sent);
    EXPECT_LT(sendMs, 1000u);
}

TEST_F(SocketTransportReceiving, ARecordThatNoPrototypeTakesIsSkipped) {
    connect();

    peer.send(record(13, 1, "whatever") + record(0xFFFF, 2, "") + request(3));

    EXPECT_EQ(pingAnswer(3, 1), peer.expectRecord().bytes());
    EXPECT_EQ(1u, transport->seen(1).size());
}

TEST_F(SocketTransportReceiving, ARecordThatNoPrototypeTakesIsSkippedOnlyWhenItIsComplete) {
    connect();

    peer.send(record(13, 1, std::string(100, 'x')).substr(0, 50));
    Sleep(50);
    peer.send(std::string(62, 'x') + request(3));

    EXPECT_EQ(pingAnswer(3, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, ARecordThatAsksForMoreMemoryThanThereIsIsSkipped) {
    connect();

    peer.send(record(9, 1, word(0xFFFFFFFF)) + request(4));

    EXPECT_EQ(pingAnswer(4, 1), peer.expectRecord().bytes());
    EXPECT_EQ(1u, transport->seen(1).size());
}

TEST_F(SocketTransportReceiving, AnAbsurdLengthReplacesTheConnectionAndTheNextSendSucceeds) {
    connect();

    peer.send(word(8) + word(1) + word(0xFFFFFFFF) + "and more");

    ASSERT_TRUE(peer.seesTheEndWithin(3000));
    peer.accept();
    EXPECT_TRUE(exchangeWorks(*transport, peer));
}

TEST_F(SocketTransportReceiving, RunningOutOfMemoryOutsideAHandlerReplacesTheConnection) {
    bool first = true;
    connect([&](IExternalCommand&, Replyer&) -> bool {
        if (std::exchange(first, false)) throw std::bad_alloc();
        return true;
    });

    peer.send(request(15));

    ASSERT_TRUE(peer.seesTheEndWithin(3000));
    peer.accept();
    peer.send(request(16));
    EXPECT_EQ(pingAnswer(16, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, WhatCameBeforeAnAbsurdLengthIsAcknowledgedBeforeTheEnd) {
    connect();

    peer.send(pushedValue(1) + pushedValue(2) + word(6) + word(3) + word(0xFFFFFFF0));

    EXPECT_EQ(pingAnswer(1, 1), peer.expectRecord().bytes());
    EXPECT_EQ(pingAnswer(2, 1), peer.expectRecord().bytes());
    EXPECT_TRUE(peer.seesTheEndWithin(3000));
}

TEST_F(SocketTransportReceiving, TheConnectionAfterOneThatMemoryRanOutForHearsOnlyOfItsOwn) {
    connect([&](IExternalCommand& command, Replyer&) -> bool {
        if (static_cast<const ExternalCommand&>(command).requestId() == 2) throw std::bad_alloc();
        return true;
    });

    peer.send(pushedValue(1) + pushedValue(2));

    ASSERT_TRUE(peer.seesTheEndWithin(3000));
    peer.accept();
    peer.send(request(16));
    EXPECT_EQ(pingAnswer(16, 1), peer.expectRecord().bytes());
}

// A handler that shows a message box has the socket's notifications dispatched.
TEST_F(SocketTransportReceiving, AFloodBehindAHandlerReplacesTheConnection) {
    const std::string flood(ReceiveBuffer::maxBytes + 1, 'x');
    bool first = true;
    connect([&](IExternalCommand&, Replyer&) {
        class Any final : public ConnInstance {};
        Any any;
        if (std::exchange(first, false)) transport->onData(any, flood);
        return true;
    });

    peer.send(request(17));

    EXPECT_EQ(pingAnswer(17, 1), peer.expectRecord().bytes());
    ASSERT_TRUE(peer.seesTheEndWithin(3000));
    peer.accept();
    peer.send(request(18));
    EXPECT_EQ(pingAnswer(18, 1), peer.expectRecord().bytes());
}

TEST_F(SocketTransportReceiving, AnAcknowledgementIsNoCommandAndNeedsNoObject) {
    connect();
    bool isOffered = false;
    OwnPing::onOffer = [&] { isOffered = true; };

    EXPECT_TRUE(exchangeWorks(*transport, peer));
    std::future<bool> result = sendOnThread(*transport, 5000);
    peer.send(pingAnswer(peer.expectRecord().requestId, 2));
    EXPECT_FALSE(result.get());
    EXPECT_FALSE(isOffered);
    EXPECT_EQ(0u, transport->seen(0).size());

    peer.send(record(0, 17, word(0)));
    EXPECT_EQ(pingAnswer(17, 1), peer.expectRecord().bytes());
    EXPECT_TRUE(isOffered) << "a request of QOR's is one";
    transport.reset();
    OwnPing::onOffer = nullptr;
}

TEST_F(SocketTransportReceiving, AnAcknowledgementWithoutAStatusIsASuccess) {
    connect();
    std::future<bool> result = sendOnThread(*transport, 5000);

    peer.send(record(0 | replyFlag, peer.expectRecord().requestId, ""));

    EXPECT_TRUE(result.get());
}

TEST_F(SocketTransportReceiving, APingThatThereIsNoMemoryForTellsItsStatusAllTheSame) {
    connect();
    std::future<bool> result = sendOnThread(*transport, 5000);

    peer.send(record(0, peer.expectRecord().requestId, word(OwnPing::starvingStatus)));

    EXPECT_TRUE(result.get());
    EXPECT_TRUE(exchangeWorks(*transport, peer));
}

TEST_F(SocketTransportReceiving, ASenderDoesNotWaitForTheObjectOfAPing) {
    connect();
    std::promise<void> mayBeMade;
    OwnPing::onOffer = [&] {
        EXPECT_EQ(mayBeMade.get_future().wait_for(std::chrono::seconds(5)),
                  std::future_status::ready);
    };
    std::future<bool> result = sendOnThread(*transport, 5000);

    peer.send(record(0, peer.expectRecord().requestId, word(1)));

    EXPECT_TRUE(result.get());
    mayBeMade.set_value();
    transport.reset();
    OwnPing::onOffer = nullptr;
}

TEST_F(SocketTransportReceiving, RequestsAreAnsweredWhileASendWaits) {
    connect();
    std::future<bool> result = sendOnThread(*transport, 5000);
    const Record own = peer.expectRecord();

    peer.send(request(17));
    EXPECT_EQ(pingAnswer(17, 1), peer.expectRecord().bytes());

    peer.send(pingAnswer(own.requestId, 1));
    EXPECT_TRUE(result.get());
}

}  // namespace
