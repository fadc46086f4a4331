// That the native sockets do what the system's do, as far as the library relies on it.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "framework/AsyncSocket.h"
#include "Link.h"

namespace {

const char* const host = "host";
constexpr unsigned int port = 80;
const char* const name = "host:80";

/// Writes down what it is told; reads at most `chunk` bytes each time.
class ToldSocket final : public CAsyncSocket {
public:
    using Told = std::vector<std::pair<long, int>>;

    explicit ToldSocket(std::size_t chunk = 100) : chunk_(chunk) {
        EXPECT_TRUE(Create());
        EXPECT_FALSE(Connect(host, port));
        EXPECT_EQ(GetLastError(), WSAEWOULDBLOCK);
    }

    /// What has been told since the last time.
    Told take() {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
        return std::exchange(told_, Told());
    }

    std::string received;

protected:
    void OnConnect(int error) override { told_.emplace_back(FD_CONNECT, error); }
    void OnSend(int error) override { told_.emplace_back(FD_WRITE, error); }
    void OnClose(int error) override { told_.emplace_back(FD_CLOSE, error); }
    void OnReceive(int error) override {
        told_.emplace_back(FD_READ, error);
        std::string bytes(chunk_, '\0');
        const int count = Receive(bytes.data(), static_cast<int>(chunk_));
        received += bytes.substr(0, count > 0 ? static_cast<std::size_t>(count) : 0);
    }

private:
    const std::size_t chunk_;
    Told told_;
};

using Told = ToldSocket::Told;

class DesktopSockets : public ::testing::Test {
protected:
    DesktopSockets() {
        AfxSocketInit();
        links::listen(name);
    }
    ~DesktopSockets() override {
        links::stopListening(name);
        AfxSocketTerm();
    }

    /// Connected, and all that was told of that is taken.
    std::shared_ptr<Link> accept(ToldSocket& socket) {
        auto link = links::accept(name);
        EXPECT_EQ(socket.take(), (Told{{FD_CONNECT, 0}, {FD_WRITE, 0}}));
        return link;
    }
};

TEST_F(DesktopSockets, AnAttemptEndsWhenItIsAcceptedOrRefused) {
    ToldSocket accepted;
    EXPECT_EQ(accepted.take(), Told());
    accept(accepted);
    ToldSocket refused;
    links::stopListening(name);
    EXPECT_EQ(refused.take(), (Told{{FD_CONNECT, WSAECONNREFUSED}}));
    ToldSocket second;
    EXPECT_EQ(second.take(), (Told{{FD_CONNECT, WSAECONNREFUSED}}));
    links::listen(name);
}

TEST_F(DesktopSockets, BytesAreToldOfAgainUntilTheyAreReadAndTheEndIsToldBehindThem) {
    ToldSocket socket(2);
    const auto link = accept(socket);
    link->toLibrary.append("ab");
    link->toLibrary.append("c");
    link->toLibrary.close();
    EXPECT_EQ(socket.take(), (Told{{FD_READ, 0}, {FD_READ, 0}, {FD_CLOSE, 0}}));
    EXPECT_EQ(socket.received, "abc");
    char byte = 0;
    EXPECT_EQ(socket.Receive(&byte, 1), 0);
}

TEST_F(DesktopSockets, AResetLosesWhatWasNotRead) {
    ToldSocket socket;
    const auto link = accept(socket);
    link->toLibrary.append("lost");
    link->toLibrary.breakOff();
    EXPECT_EQ(socket.take(), (Told{{FD_READ, 0}, {FD_CLOSE, WSAECONNRESET}}));
    EXPECT_EQ(socket.received, "");
    EXPECT_EQ(socket.Send("x", 1), SOCKET_ERROR);
    EXPECT_EQ(ToldSocket::GetLastError(), WSAECONNRESET);
}

TEST_F(DesktopSockets, OneThatTakesNoMoreTellsWhenItDoesAgain) {
    ToldSocket socket;
    const auto link = accept(socket);
    const std::string much(100000, 'x');
    const int taken = socket.Send(much.data(), static_cast<int>(much.size()));
    EXPECT_GT(taken, 0);
    EXPECT_EQ(socket.Send(much.data(), 1), SOCKET_ERROR);
    EXPECT_EQ(ToldSocket::GetLastError(), WSAEWOULDBLOCK);
    EXPECT_EQ(socket.take(), Told());
    EXPECT_EQ(link->toQor.takeAll().size(), static_cast<std::size_t>(taken));
    EXPECT_EQ(socket.take(), (Told{{FD_WRITE, 0}}));
}

TEST_F(DesktopSockets, AClosedOneIsToldNothingAndItsPeerSeesTheEnd) {
    ToldSocket socket;
    const auto link = accept(socket);
    link->toLibrary.append("x");
    socket.Close();
    EXPECT_TRUE(link->toQor.isClosed());
    EXPECT_EQ(socket.take(), Told());
}

TEST(DesktopSocketSupport, WithoutTheSupportOfTheProcessThereIsNoSocket) {
    CAsyncSocket socket;
    EXPECT_FALSE(socket.Create());
    EXPECT_EQ(CAsyncSocket::GetLastError(), WSANOTINITIALISED);
}

}  // namespace
