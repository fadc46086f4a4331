#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <utility>

#include "SocketTestSupport.h"
#include "support/TcpProcessFigures.h"

namespace {

using tcp::TcpPeer;

/// Whether this process has a window for notifications; other processes may have some, too.
bool hasSocketWindow() {
    HWND window = nullptr;
    DWORD process = 0;
    while (process != GetCurrentProcessId()) {
        window = FindWindowExA(HWND_MESSAGE, window, "QorSocketWindow", nullptr);
        if (window == nullptr) return false;
        GetWindowThreadProcessId(window, &process);
    }
    return true;
}

TEST(AsyncSocketClose, AClosedSocketIsNotNotifiedAnyMore) {
    TcpPeer peer;
    RecordingSocket socket;
    ASSERT_TRUE(connectTo(peer, socket));
    peer.send("abc");
    Sleep(50);  // the notification is queued now
    const std::size_t before = socket.threads.size();

    socket.Close();
    pumpFor(50);

    EXPECT_EQ(before, socket.threads.size());
    EXPECT_EQ(INVALID_SOCKET, socket.m_hSocket);
    EXPECT_TRUE(peer.seesTheEndWithin(1000));
}

TEST(AsyncSocketClose, ClosingTwiceDoesNothingTheSecondTime) {
    TcpPeer peer;
    RecordingSocket socket;
    ASSERT_TRUE(connectTo(peer, socket));

    socket.Close();
    socket.Close();

    EXPECT_EQ(INVALID_SOCKET, socket.m_hSocket);
}

TEST(AsyncSocketClose, TheDestructorCloses) {
    TcpPeer peer;
    auto socket = std::make_unique<RecordingSocket>();
    ASSERT_TRUE(connectTo(peer, *socket));

    socket.reset();

    EXPECT_TRUE(peer.seesTheEndWithin(1000));
}

// The system gives the handle value of a closed socket to the next one. What is queued for the
// refused socket must not be taken for the good one, nor the other way round.
TEST(AsyncSocketClose, ThreeHundredReconnectsAreNeverToldTheOutcomeOfTheOneBefore) {
    TcpPeer refusing;
    refusing.stopListening();
    TcpPeer peer;
    int wrong = 0;
    for (int round = 0; round < 300; ++round) {
        {
            RecordingSocket refused;
            ASSERT_TRUE(refused.Create());
            refused.Connect("127.0.0.1", refusing.port());
            MsgWaitForMultipleObjectsEx(0, nullptr, 200, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        }  // closed with its outcome still queued
        RecordingSocket good;
        ASSERT_TRUE(good.Create());
        good.Connect("127.0.0.1", peer.port());
        ASSERT_TRUE(pumpUntil([&] { return !good.connects.empty(); }));
        if (good.connects.front() != 0) ++wrong;
        peer.accept();
    }

    EXPECT_EQ(0, wrong);
}

TEST(AsyncSocketClose, ThreeHundredReconnectsBesideALiveSocketAreTheSame) {
    TcpPeer livePeer;
    RecordingSocket live;
    ASSERT_TRUE(connectTo(livePeer, live));
    TcpPeer refusing;
    refusing.stopListening();
    TcpPeer peer;
    int wrong = 0;
    for (int round = 0; round < 300; ++round) {
        livePeer.send("x");
        {
            RecordingSocket refused;
            ASSERT_TRUE(refused.Create());
            refused.Connect("127.0.0.1", refusing.port());
            Sleep(1);
        }
        RecordingSocket good;
        ASSERT_TRUE(good.Create());
        good.Connect("127.0.0.1", peer.port());
        ASSERT_TRUE(pumpUntil([&] { return !good.connects.empty(); }));
        if (good.connects.front() != 0) ++wrong;
        peer.accept();
    }

    EXPECT_EQ(0, wrong);
    EXPECT_TRUE(pumpUntil([&] { return live.received.size() == 300; }))
        << "nothing of the live socket is lost, yet only " << live.received.size() << " came";
}

TEST(AsyncSocketClose, AnotherSocketMayCloseItselfWhileThisOneCloses) {
    TcpPeer firstPeer;
    TcpPeer secondPeer;
    RecordingSocket first;
    RecordingSocket second;
    second.onClose = [&] { second.Close(); };
    ASSERT_TRUE(connectTo(firstPeer, first));
    ASSERT_TRUE(connectTo(secondPeer, second));
    secondPeer.close();
    Sleep(50);  // queued for `second`, and looked through when `first` closes

    first.Close();

    EXPECT_TRUE(pumpUntil([&] { return second.m_hSocket == INVALID_SOCKET; }));
    RecordingSocket third;
    EXPECT_TRUE(connectTo(firstPeer, third));
}

TEST(AsyncSocketClose, ASocketMayBeDeletedInItsOwnCloseNotification) {
    TcpPeer peer;
    auto* socket = new RecordingSocket;
    ASSERT_TRUE(connectTo(peer, *socket));
    socket->onClose = [&socket] { delete std::exchange(socket, nullptr); };

    peer.close();

    EXPECT_TRUE(pumpUntil([&] { return socket == nullptr; }));
    pumpFor(20);
    EXPECT_FALSE(hasSocketWindow());
}

TEST(AsyncSocketClose, AQuitMessageIsStillThereAfterwards) {
    TcpPeer peer;
    RecordingSocket socket;
    ASSERT_TRUE(connectTo(peer, socket));
    PostQuitMessage(7);

    socket.Close();

    MSG message = {};
    ASSERT_TRUE(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(static_cast<UINT>(WM_QUIT), message.message);
    EXPECT_EQ(7u, message.wParam);
}

TEST(AsyncSocketClose, ThreadsThatMakeTheirFirstAndLastSocketAtOnceDoNotDisturbOneAnother) {
    const tcp::WinsockUse winsock;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 300; ++round) {
                CAsyncSocket socket;
                if (!socket.Create()) ++failures;
            }
        });
    for (std::thread& thread : threads) thread.join();

    EXPECT_EQ(0, failures);
}

TEST(AsyncSocketClose, ManySocketsLeaveNeitherHandlesNorWindowsBehind) {
    const tcp::WinsockUse winsock;
    const auto rounds = [](int count) {
        for (int round = 0; round < count; ++round) {
            CAsyncSocket socket;
            ASSERT_TRUE(socket.Create());
        }
    };
    {
        CAsyncSocket open;
        ASSERT_TRUE(open.Create());
        EXPECT_TRUE(hasSocketWindow());
    }
    rounds(5);
    const std::uintptr_t before = tcp::nextFreeHandle();

    rounds(200);

    EXPECT_EQ(before, tcp::nextFreeHandle());
    EXPECT_FALSE(hasSocketWindow());
}

}  // namespace
