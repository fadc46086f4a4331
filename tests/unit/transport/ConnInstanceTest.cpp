#include "transport/ConnInstance.h"

#include <gmock/gmock.h>

#include <new>
#include <thread>
#include <vector>

#include "SocketTransportSupport.h"
#include "transport/PeerAsyncSocket.h"
#include "transport/SocketPump.h"

namespace {

using tcp::TcpPeer;
using testing::ElementsAre;

class RecordingConnection final : public ConnInstance {
public:
    ~RecordingConnection() override { dropPeer(); }

    void onConnect(int errorCode) override {
        ConnInstance::onConnect(errorCode);
        connects.push_back(errorCode);
    }
    void onData(const std::string& bytes) override {
        if (isOutOfMemory) throw std::bad_alloc();
        chunks.push_back(bytes.size());
        data += bytes;
    }
    void onError(int errorCode) override {
        ConnInstance::onError(errorCode);
        errors.push_back(errorCode);
    }
    void onSendError(int errorCode) override {
        ConnInstance::onSendError(errorCode);
        sendErrors.push_back(errorCode);
    }

    std::vector<int> connects;
    std::vector<int> errors;
    std::vector<int> sendErrors;
    std::vector<std::size_t> chunks;
    std::string data;
    bool isOutOfMemory = false;
};

template <class Condition>
bool pumpUntil(Condition isDone) {
    const Stopwatch watch;
    while (!isDone()) {
        if (watch.ms() > 5000) return false;
        pumpSocketNotifications(nullptr);
    }
    return true;
}

class Connection : public testing::Test {
protected:
    TcpPeer peer;
    RecordingConnection connection;

    bool connect() {
        if (!connection.connect("127.0.0.1", peer.port())) return false;
        peer.accept();
        return pumpUntil([&] { return !connection.connects.empty(); });
    }
};

TEST_F(Connection, BeforeTheFirstAttemptItIsNotOpenAndDropsWhatIsSent) {
    EXPECT_FALSE(connection.isOpen());
    connection.send("lost");

    ASSERT_TRUE(connect());
    EXPECT_TRUE(peer.hearsNothingFor(50));
}

TEST_F(Connection, AnAttemptUnderWayCountsAsSuccessWithoutAnError) {
    EXPECT_TRUE(connection.connect("127.0.0.1", peer.port()));

    EXPECT_TRUE(connection.isOpen());
    EXPECT_EQ(0, connection.lastError());
}

TEST_F(Connection, ARefusalIsKeptAsTheLastError) {
    peer.stopListening();
    connection.connect("127.0.0.1", peer.port());

    ASSERT_TRUE(pumpUntil([&] { return !connection.connects.empty(); }));
    EXPECT_EQ(WSAECONNREFUSED, connection.connects.front());
    EXPECT_EQ(WSAECONNREFUSED, connection.lastError());
}

TEST_F(Connection, AHostThatDoesNotExistFailsAtOnceWithItsError) {
    EXPECT_FALSE(connection.connect(tcp::impossibleHost(), 80));

    EXPECT_NE(0, connection.lastError());
    EXPECT_NE(WSAEWOULDBLOCK, connection.lastError());
}

TEST_F(Connection, AnotherThreadCannotReplaceTheSocket) {
    ASSERT_TRUE(connect());
    bool connected = true;
    std::thread([&] { connected = connection.connect("127.0.0.1", peer.port()); }).join();

    EXPECT_FALSE(connected);
    EXPECT_TRUE(connection.isOpen());
}

TEST_F(Connection, ANewAttemptClosesTheOldSocket) {
    ASSERT_TRUE(connect());

    ASSERT_TRUE(connection.connect("127.0.0.1", peer.port()));

    EXPECT_TRUE(peer.seesTheEndWithin(2000));
    peer.accept();
    EXPECT_TRUE(pumpUntil([&] { return connection.connects.size() == 2; }));
}

TEST_F(Connection, BytesSentBeforeTheConnectionStandsFollowWhenItDoes) {
    ASSERT_TRUE(connection.connect("127.0.0.1", peer.port()));
    connection.send("early ");
    connection.send("birds");
    peer.accept();

    ASSERT_TRUE(pumpUntil([&] { return !connection.connects.empty(); }));
    ASSERT_TRUE(pumpUntil([&] { return !peer.hearsNothingFor(0); }));
    EXPECT_EQ("early birds", peer.receive(11));
}

TEST_F(Connection, BytesOfTheOwnThreadLeaveAtOnce) {
    ASSERT_TRUE(connect());

    connection.send("now");

    EXPECT_EQ("now", peer.receive(3));
}

TEST_F(Connection, BytesOfAnotherThreadFollowTheOwnThreadsNext) {
    ASSERT_TRUE(connect());
    std::thread([&] { connection.send("first "); }).join();
    EXPECT_TRUE(peer.hearsNothingFor(30));

    connection.send("second");

    EXPECT_EQ("first second", peer.receive(12));
}

TEST_F(Connection, ReceivedBytesComeInChunksOfAtMostSixteenKilobytes) {
    ASSERT_TRUE(connect());
    const std::string sent(100000, 'x');

    peer.send(sent);

    ASSERT_TRUE(pumpUntil([&] { return connection.data.size() == sent.size(); }));
    for (const std::size_t chunk : connection.chunks) EXPECT_LE(chunk, 16384u);
    EXPECT_TRUE(connection.errors.empty());
}

TEST_F(Connection, WhatIsStillToComeOfARecordIsTakenWithItsFirstChunk) {
    ASSERT_TRUE(connect());
    connection.expect(50000);

    peer.send(std::string(60000, 'x'));
    Sleep(100);  // without pumping: all of it is there

    ASSERT_TRUE(pumpUntil([&] { return connection.data.size() == 60000; }));
    EXPECT_THAT(connection.chunks, ElementsAre(16384, 50000 - 16384, 10000));
    EXPECT_TRUE(connection.errors.empty());
}

TEST_F(Connection, ARecordThatComesInPiecesIsTakenWithoutErrors) {
    ASSERT_TRUE(connect());
    connection.expect(60000);
    for (int piece = 0; piece < 3; ++piece) {
        peer.send(std::string(20000, 'x'));
        const std::size_t sent = 20000u * (piece + 1);
        ASSERT_TRUE(pumpUntil([&] { return connection.data.size() == sent; }));
    }
    EXPECT_TRUE(connection.errors.empty());
}

TEST_F(Connection, AnEndInTheMiddleOfARecordIsToldOf) {
    ASSERT_TRUE(connect());
    connection.expect(100000);
    peer.send(std::string(16384, 'x'));
    peer.close();
    EXPECT_TRUE(pumpUntil([&] { return !connection.isOpen() && !connection.errors.empty(); }));
    EXPECT_EQ(16384u, connection.data.size());
}

TEST_F(Connection, AfterACloseByThePeerItIsNotOpen) {
    ASSERT_TRUE(connect());

    peer.close();

    EXPECT_TRUE(pumpUntil([&] { return !connection.isOpen(); }));
}

TEST_F(Connection, SendingToAPeerThatIsGoneReportsASendError) {
    ASSERT_TRUE(connect());
    peer.reset();
    Sleep(50);  // without pumping: the connection does not know yet

    for (int i = 0; i < 50 && connection.sendErrors.empty(); ++i) {
        connection.send("x");
        Sleep(2);
    }

    ASSERT_EQ(1u, connection.sendErrors.size());
    EXPECT_EQ(connection.sendErrors.front(), connection.lastError());
}

TEST_F(Connection, APeerThatNeverReadsCannotMakeTheOutputGrowWithoutEnd) {
    ASSERT_TRUE(connect());
    const std::string block(1000000, 'x');

    int blocks = 0;
    while (blocks < 300 && connection.sendErrors.empty()) {
        connection.send(block);
        ++blocks;
    }

    ASSERT_FALSE(connection.sendErrors.empty());
    EXPECT_EQ(WSAENOBUFS, connection.sendErrors.front());
    EXPECT_GT(blocks, 190) << "the longest record would not pass";
}

TEST_F(Connection, RunningOutOfMemoryWhileReceivingIsAnErrorOfTheConnection) {
    ASSERT_TRUE(connect());
    connection.isOutOfMemory = true;

    peer.send("abc");

    ASSERT_TRUE(pumpUntil([&] { return !connection.errors.empty(); }));
    EXPECT_EQ(WSAENOBUFS, connection.errors.front());
    EXPECT_FALSE(connection.isOpen()) << "what comes next would close the gap";
}

}  // namespace
