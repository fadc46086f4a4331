#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <stdexcept>

#include "SocketTransportSupport.h"
#include "support/TcpProcessFigures.h"

namespace {

using tcp::pingAnswer;
using tcp::record;
using tcp::TcpPeer;
using tcp::TcpPeerThread;
using tcp::word;

std::string request(std::uint32_t requestId) {
    return record(8, requestId, word(3));
}

/// Text that does not repeat at block sizes.
std::string longText(std::size_t length) {
    std::string text(length, '\0');
    for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<char>('a' + i % 251 % 26);
    return text;
}

TEST(SocketTransportLoad, SixteenMegabytesArriveWholeAtAReaderThatIsSlow) {
    TcpPeer peer(8192);
    TestTransport transport(peer.port());
    peer.accept();
    auto command = std::make_unique<CommandStartEdit>();
    command->path = longText(16000000);
    std::string expected;
    command->write(expected);

    transport.send(std::move(command), 0);

    Sleep(300);  // the window is full by now
    std::string received;
    while (received.size() < expected.size()) {
        const std::size_t left = expected.size() - received.size();
        received += peer.receive(std::min<std::size_t>(left, 1000000));
        Sleep(5);
    }
    EXPECT_TRUE(expected == received);
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportLoad, ALongRecordIsReceivedWhole) {
    TcpPeer peer;
    std::size_t length = 0;
    TestTransport transport(peer.port(), [&](IExternalCommand& command, auto&) {
        length = dynamic_cast<CommandGetParamInfo&>(command).name.size();
        return true;
    });
    peer.accept();
    const std::string text = longText(8000000);

    peer.send(record(3, 1, word(static_cast<std::uint32_t>(text.size())) + text));

    EXPECT_EQ(pingAnswer(1, 1), peer.expectRecord(20000).bytes());
    EXPECT_EQ(text.size(), length);
}

TEST(SocketTransportLoad, AFloodOfRequestsIsAnsweredOneByOneInBoundedMemory) {
    constexpr std::uint32_t count = 1500;
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    const std::size_t before = tcp::memoryBytes();
    std::string bytes;
    for (std::uint32_t id = 0; id < count; ++id) bytes += request(id);

    peer.send(bytes);

    for (std::uint32_t id = 0; id < count; ++id)
        ASSERT_EQ(pingAnswer(id, 1), peer.expectRecord().bytes());
    EXPECT_LT(tcp::memoryBytes(), before + 20000000);
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportLoad, ASendGetsThroughWhileThePeerFloods) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    std::string flood;
    for (std::uint32_t id = 0; id < 1000; ++id) flood += record(6 | tcp::replyFlag, id, "");
    std::future<bool> result = sendOnThread(transport, 10000);
    TcpPeerThread script(peer, [&](TcpPeer& self) {
        self.send(flood);
        const std::uint32_t id = self.expectRecord(10000).requestId;
        self.send(flood + pingAnswer(id, 1) + flood);
    });

    EXPECT_TRUE(result.get());
    script.join();
    EXPECT_EQ(3000u, transport.seen(3000).size());
}

TEST(SocketTransportLoad, AnswersAreHeardWhileAnotherThreadSendsWithoutPause) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    std::atomic<bool> stop{false};
    std::future<void> noise = std::async(std::launch::async, [&] {
        while (!stop) transport.send(std::make_unique<CommandPing>(), 0);
    });
    Sleep(50);
    std::promise<bool> answered;
    TcpPeerThread script(peer, [&](TcpPeer& self) {
        self.send(request(0x77));
        const Stopwatch watch;
        bool found = false;
        while (!found && watch.ms() < 5000) found = self.expectRecord().requestId == 0x77;
        answered.set_value(found);
    });

    EXPECT_TRUE(answered.get_future().get());
    stop = true;
    noise.get();
    script.join();
}

TEST(SocketTransportLoad, RandomBytesAreSurvivedAndSendsSucceedAfterwards) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    std::mt19937 generator(20240607);
    for (int round = 0; round < 20; ++round) {
        std::string noise;
        for (int i = 0; i < 1000; ++i) noise += static_cast<char>(generator() & 0xFF);
        // Half of the rounds begin like a record of an existing command.
        if (round % 2 == 0) noise.replace(0, 12, word(generator() % 20) + word(1) + word(900));
        try {
            peer.sendInPieces(noise, 1 + generator() % 400, 1);
        } catch (const std::runtime_error&) {
            // The transport has given this connection up already.
        }
        peer.close();
        peer.accept();
        ASSERT_TRUE(exchangeWorks(transport, peer)) << "round " << round;
    }
}

}  // namespace
