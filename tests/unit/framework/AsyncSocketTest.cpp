#include <gtest/gtest.h>

#include <thread>

#include "SocketTestSupport.h"

namespace {

using tcp::TcpPeer;

TEST(AsyncSocket, ANewObjectHasNoHandle) {
    const CAsyncSocket socket;

    EXPECT_EQ(INVALID_SOCKET, socket.m_hSocket);
}

TEST(AsyncSocket, AnOptionAskedForBeforeTheSocketExistsIsRefused) {
    const tcp::WinsockUse winsock;
    CAsyncSocket socket;
    const int bytes = 16384;

    EXPECT_FALSE(socket.SetSockOpt(SO_SNDBUF, &bytes, sizeof bytes));
    EXPECT_EQ(WSAENOTSOCK, CAsyncSocket::GetLastError());
}

TEST(AsyncSocket, CreateBindsToTheGivenPortOfTheGivenAddress) {
    TcpPeer peer;
    const unsigned freePort = peer.port();
    peer.stopListening();
    CAsyncSocket socket;

    ASSERT_TRUE(socket.Create(freePort, SOCK_STREAM, FD_READ, "127.0.0.1"));

    sockaddr_in address = {};
    int length = sizeof address;
    ASSERT_EQ(0, getsockname(socket.m_hSocket, reinterpret_cast<sockaddr*>(&address), &length));
    EXPECT_EQ(freePort, ntohs(address.sin_port));
    EXPECT_EQ(htonl(INADDR_LOOPBACK), address.sin_addr.s_addr);
}

// As much as a connect to another machine needs.
TEST(AsyncSocket, CreateWithoutAnAddressBindsToAllOfThem) {
    const tcp::WinsockUse winsock;
    CAsyncSocket socket;

    ASSERT_TRUE(socket.Create());

    sockaddr_in address = {};
    int length = sizeof address;
    ASSERT_EQ(0, getsockname(socket.m_hSocket, reinterpret_cast<sockaddr*>(&address), &length));
    EXPECT_NE(0, address.sin_port);
    EXPECT_EQ(htonl(INADDR_ANY), address.sin_addr.s_addr);
}

TEST(AsyncSocket, CreateOnATakenPortFailsAndLeavesNoSocket) {
    const TcpPeer peer;
    CAsyncSocket socket;

    EXPECT_FALSE(socket.Create(peer.port(), SOCK_STREAM, FD_READ, "127.0.0.1"));

    EXPECT_EQ(WSAEADDRINUSE, CAsyncSocket::GetLastError());
    EXPECT_EQ(INVALID_SOCKET, socket.m_hSocket);
}

LRESULT CALLBACK refuseWindows(int code, WPARAM wParam, LPARAM lParam) {
    return code == HCBT_CREATEWND ? 1 : CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST(AsyncSocket, CreateFailsWithTheSocketErrorWhenThereIsNoWindowForTheNotifications) {
    const tcp::WinsockUse winsock;
    HHOOK const hook = SetWindowsHookExA(WH_CBT, refuseWindows, nullptr, GetCurrentThreadId());
    ASSERT_NE(nullptr, hook);
    CAsyncSocket socket;

    EXPECT_FALSE(socket.Create());
    EXPECT_EQ(WSAEINVAL, CAsyncSocket::GetLastError());
    EXPECT_EQ(INVALID_SOCKET, socket.m_hSocket);

    UnhookWindowsHookEx(hook);
    EXPECT_TRUE(socket.Create()) << "the failure leaves nothing behind";
}

TEST(AsyncSocket, CreateFailsWithoutSocketSupport) {
    CAsyncSocket socket;

    EXPECT_FALSE(socket.Create());

    EXPECT_EQ(WSANOTINITIALISED, CAsyncSocket::GetLastError());
    EXPECT_EQ(INVALID_SOCKET, socket.m_hSocket);
}

TEST(AsyncSocket, AConnectToAListenerWouldBlockAndThenReportsSuccess) {
    TcpPeer peer;
    RecordingSocket socket;
    ASSERT_TRUE(socket.Create());

    EXPECT_FALSE(socket.Connect("127.0.0.1", peer.port()));
    EXPECT_EQ(WSAEWOULDBLOCK, CAsyncSocket::GetLastError());

    EXPECT_TRUE(socket.connects.empty()) << "nothing is reported before the messages are pumped";
    EXPECT_TRUE(pumpUntil([&] { return !socket.connects.empty() && socket.sends > 0; }));
    EXPECT_EQ(std::vector<int>{0}, socket.connects);
    EXPECT_NO_THROW(peer.accept());
}

TEST(AsyncSocket, ARefusedConnectReportsIt) {
    TcpPeer peer;
    peer.stopListening();
    RecordingSocket socket;
    ASSERT_TRUE(socket.Create());

    socket.Connect("127.0.0.1", peer.port());

    ASSERT_TRUE(pumpUntil([&] { return !socket.connects.empty(); }));
    EXPECT_EQ(WSAECONNREFUSED, socket.connects.front());
}

TEST(AsyncSocket, ALookUpOfAHostThatDoesNotExistFails) {
    const tcp::WinsockUse winsock;
    CAsyncSocket socket;
    ASSERT_TRUE(socket.Create());

    EXPECT_FALSE(socket.Connect(tcp::impossibleHost().c_str(), 80));

    EXPECT_NE(0, CAsyncSocket::GetLastError());
    EXPECT_NE(WSAEWOULDBLOCK, CAsyncSocket::GetLastError());
}

TEST(AsyncSocket, AHostNameIsLookedUp) {
    TcpPeer peer;
    RecordingSocket socket;
    ASSERT_TRUE(socket.Create());

    socket.Connect("localhost", peer.port());

    ASSERT_TRUE(pumpUntil([&] { return !socket.connects.empty(); }));
    EXPECT_EQ(0, socket.connects.front());
}

TEST(AsyncSocket, DataIsNotifiedAgainUntilAllOfItIsRead) {
    TcpPeer peer;
    RecordingSocket socket;  // reads 1000 bytes at a time
    ASSERT_TRUE(connectTo(peer, socket));
    const std::string sent = std::string(3000, 'a') + std::string(3001, 'b');

    peer.send(sent);

    ASSERT_TRUE(pumpUntil([&] { return socket.received.size() >= sent.size(); }));
    EXPECT_EQ(sent, socket.received);
}

TEST(AsyncSocket, SentBytesReachThePeer) {
    TcpPeer peer;
    RecordingSocket socket;
    ASSERT_TRUE(connectTo(peer, socket));

    EXPECT_EQ(5, socket.Send("hello", 5));

    EXPECT_EQ("hello", peer.receive(5));
}

TEST(AsyncSocket, ACloseByThePeerIsNotified) {
    TcpPeer peer;
    RecordingSocket socket;
    ASSERT_TRUE(connectTo(peer, socket));

    peer.close();

    EXPECT_TRUE(pumpUntil([&] { return !socket.closes.empty(); }));
}

TEST(AsyncSocket, AFullOutputIsNotifiedWhenThereIsRoomAgain) {
    TcpPeer peer(4096);
    RecordingSocket socket;
    ASSERT_TRUE(connectTo(peer, socket));
    ASSERT_TRUE(pumpUntil([&] { return socket.sends > 0; }));
    const std::string block(100000, 'x');
    std::size_t sent = 0;
    for (int taken = 0; taken != SOCKET_ERROR; sent += static_cast<std::size_t>(taken)) {
        taken = socket.Send(block.data(), static_cast<int>(block.size()));
        if (taken == SOCKET_ERROR) break;
    }
    ASSERT_EQ(WSAEWOULDBLOCK, CAsyncSocket::GetLastError());
    const unsigned before = socket.sends;

    peer.receive(sent);

    EXPECT_TRUE(pumpUntil([&] { return socket.sends > before; }));
}

TEST(AsyncSocket, NotificationsComeOnTheCreatingThreadOnly) {
    TcpPeer peer;
    RecordingSocket socket;
    ASSERT_TRUE(connectTo(peer, socket));
    std::thread sender([&] {
        peer.send("abc");
        pumpFor(50);  // this thread's messages hold none of the socket's
    });
    sender.join();

    EXPECT_EQ("", socket.received);
    ASSERT_TRUE(pumpUntil([&] { return socket.received == "abc"; }));
    for (const DWORD thread : socket.threads) EXPECT_EQ(GetCurrentThreadId(), thread);
}

TEST(AsyncSocket, TwoSocketsOfOneThreadAreToldApart) {
    TcpPeer firstPeer;
    TcpPeer secondPeer;
    RecordingSocket first;
    RecordingSocket second;
    ASSERT_TRUE(connectTo(firstPeer, first));
    ASSERT_TRUE(connectTo(secondPeer, second));

    firstPeer.send("one");
    secondPeer.send("two");

    EXPECT_TRUE(pumpUntil([&] { return first.received == "one" && second.received == "two"; }));
}

TEST(AsyncSocket, EachStartOfTheSocketSupportNeedsItsOwnEnd) {
    WSADATA data = {};
    ASSERT_TRUE(AfxSocketInit(&data));
    ASSERT_TRUE(AfxSocketInit());
    EXPECT_EQ(MAKEWORD(2, 2), data.wVersion);

    AfxSocketTerm();
    {
        CAsyncSocket stillPossible;
        EXPECT_TRUE(stillPossible.Create());
    }
    AfxSocketTerm();
    CAsyncSocket tooLate;
    EXPECT_FALSE(tooLate.Create());
}

}  // namespace
