// Records of up to 128 MiB, and peers that only announce them.
#include <gtest/gtest.h>

#include <algorithm>

#include "SocketTransportSupport.h"
#include "support/TcpProcessFigures.h"

namespace {

using tcp::pingAnswer;
using tcp::TcpPeer;
using tcp::TcpPeerThread;
using tcp::word;

constexpr std::uint32_t longest = 0x8000000;  // the head of 12 bytes included
constexpr unsigned patienceMs = 60000;

/// Differs at every place from what stands a block or a chunk away.
char letterAt(std::size_t position) {
    return static_cast<char>('a' + position % 251 % 26);
}

std::string lettersFrom(std::size_t position, std::size_t count) {
    std::string letters(count, '\0');
    for (std::size_t i = 0; i < count; ++i) letters[i] = letterAt(position + i);
    return letters;
}

/// Sends letters in blocks, so that no second copy of them is made.
void sendLetters(TcpPeer& peer, std::size_t count) {
    constexpr std::size_t block = 1u << 20;
    for (std::size_t sent = 0; sent < count; sent += block)
        peer.send(lettersFrom(sent, std::min(block, count - sent)));
}

bool receivesLetters(TcpPeer& peer, std::size_t count) {
    constexpr std::size_t block = 1u << 20;
    for (std::size_t got = 0; got < count; got += block) {
        const std::size_t size = std::min(block, count - got);
        if (peer.receive(size, patienceMs) != lettersFrom(got, size)) return false;
    }
    return true;
}

/// The head of a description's record of `length` bytes, and its first text but for the letters.
std::string headOfNameOf(std::uint32_t length) {
    return word(3) + word(1) + word(length - 12) + word(length - 16);
}

TEST(SocketTransportLongRecord, TheLongestIsReceivedWhole) {
    TcpPeer peer;
    std::string received;
    TestTransport transport(peer.port(), [&](IExternalCommand& command, auto&) {
        received.swap(dynamic_cast<CommandGetParamInfo&>(command).name);
        return true;
    });
    peer.accept();

    peer.send(headOfNameOf(longest));
    sendLetters(peer, longest - 16);

    EXPECT_EQ(pingAnswer(1, 1), peer.expectRecord(patienceMs).bytes());
    ASSERT_EQ(longest - 16, received.size());
    bool isSame = true;
    for (std::size_t i = 0; i < received.size(); ++i) isSame = isSame && received[i] == letterAt(i);
    EXPECT_TRUE(isSame);
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportLongRecord, OneByteMoreReplacesTheConnectionAsSoonAsItsHeadIsThere) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();

    peer.send(headOfNameOf(longest + 1));

    ASSERT_TRUE(peer.seesTheEndWithin(3000));
    peer.accept();
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportLongRecord, TheLongestIsSentWholeToAReaderThatIsSlow) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    auto command = std::make_unique<CommandStartEdit>();
    constexpr std::uint32_t around = 12 + 4 * 9;  // the head and the other fields
    command->path = lettersFrom(0, longest - around);

    EXPECT_TRUE(transport.send(std::move(command), 0));

    Sleep(300);  // the window is full by now
    const std::string head = peer.receive(12 + 12);
    EXPECT_EQ(word(1), head.substr(0, 4));
    EXPECT_EQ(word(longest - 12) + word(7) + word(1) + word(longest - around), head.substr(8));
    EXPECT_TRUE(receivesLetters(peer, longest - around));
    const std::string behind = word(0xFFFFFFFF) + std::string(4 * 5, '\0');
    EXPECT_EQ(behind, peer.receive(behind.size()));
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportLongRecord, OneByteMoreIsRefusedAtOnceAndNothingOfItIsSent) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    auto command = std::make_unique<CommandStartEdit>();
    command->path.assign(longest - 12 - 4 * 9 + 1, 'x');

    EXPECT_FALSE(transport.send(std::move(command), 5000));

    EXPECT_TRUE(peer.hearsNothingFor(100));
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportLongRecord, OneByteMoreIsRefusedInAHandlerToo) {
    TcpPeer peer;
    bool sent = true;
    bool replied = true;
    TestTransport* self = nullptr;
    const auto tooLong = [] {
        auto command = std::make_unique<CommandStartEdit>();
        command->path.assign(longest - 12 - 4 * 9 + 1, 'x');
        return command;
    };
    TestTransport transport(peer.port(), [&](IExternalCommand&, auto& replyer) {
        sent = self->send(tooLong(), 0);
        replied = replyer.reply(tooLong(), 0);
        return true;
    });
    self = &transport;
    peer.accept();

    peer.send(tcp::record(8, 5, word(3)));

    EXPECT_EQ(pingAnswer(5, 1), peer.expectRecord().bytes()) << "it has not been answered yet";
    EXPECT_FALSE(sent);
    EXPECT_FALSE(replied);
    EXPECT_TRUE(exchangeWorks(transport, peer));
}

TEST(SocketTransportLongRecord, WhatIsOnlyAnnouncedTakesNoMemory) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    const std::size_t before = tcp::committedBytes();

    peer.send(headOfNameOf(longest));
    sendLetters(peer, 100000);
    Sleep(200);

    EXPECT_LT(tcp::committedBytes(), before + 4000000);
}

TEST(SocketTransportLongRecord, HalfRecordsOfManyConnectionsAreForgottenWithThem) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    const std::size_t before = tcp::committedBytes();
    for (int round = 0; round < 20; ++round) {
        peer.send(headOfNameOf(longest));
        sendLetters(peer, 4000000);
        peer.close();
        peer.accept();
    }

    EXPECT_TRUE(exchangeWorks(transport, peer));
    EXPECT_LT(tcp::committedBytes(), before + 20000000);
}

TEST(SocketTransportLongRecord, ShortRecordsAroundALongOneAreHandledInTheirOrder) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    constexpr std::uint32_t length = 3000000;

    peer.send(tcp::record(8, 21, word(3)) + tcp::record(8, 22, word(3)) + headOfNameOf(length));
    sendLetters(peer, length - 16);
    peer.send(tcp::record(8, 23, word(3)));

    const auto seen = transport.seen(4);
    ASSERT_EQ(4u, seen.size());
    EXPECT_EQ(21u, seen[0].requestId);
    EXPECT_EQ(22u, seen[1].requestId);
    EXPECT_EQ(1u, seen[2].requestId);
    EXPECT_EQ(23u, seen[3].requestId);
}

TEST(SocketTransportLongRecord, ItsMemoryIsGivenBackOnceItIsHandledOrSent) {
    TcpPeer peer;
    TestTransport transport(peer.port());
    peer.accept();
    const std::size_t before = tcp::committedBytes();
    constexpr std::uint32_t length = 40000000;
    constexpr std::size_t allowed = 10000000;
    const std::string next = pingAnswer(77, 1);

    peer.send(headOfNameOf(length));
    sendLetters(peer, length - 16 - 1);
    peer.send("x" + next.substr(0, 5));  // what waits for its rest does not wait in all that memory
    EXPECT_EQ(pingAnswer(1, 1), peer.expectRecord(patienceMs).bytes());
    const Stopwatch sinceThen;  // it is answered first
    while (tcp::committedBytes() >= before + allowed && sinceThen.ms() < 5000) Sleep(1);
    EXPECT_LT(tcp::committedBytes(), before + allowed);
    peer.send(next.substr(5));
    auto command = std::make_unique<CommandStartEdit>();
    command->path.assign(length, 'x');
    transport.send(std::move(command), 0);
    peer.receive(12 + 4 * 9, patienceMs);
    for (std::uint32_t got = 0; got < length; got += 1000000) peer.receive(1000000, patienceMs);

    EXPECT_TRUE(exchangeWorks(transport, peer));
    EXPECT_LT(tcp::committedBytes(), before + allowed);
}

}  // namespace
