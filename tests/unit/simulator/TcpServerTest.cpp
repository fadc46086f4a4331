#include "link/TcpServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

namespace simulator::test {
namespace {

constexpr DWORD patienceMs = 5000;

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

std::uint16_t freePort() {
    const Socket probe(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
    sockaddr_in address = loopback(0);
    bind(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    int size = sizeof address;
    getsockname(probe.get(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

// Notes what the server tells.
class Recorder : public TcpServerEvents {
public:
    void onConnected() override { ++connected; }
    void onBytes(std::string_view bytes) override {
        received.append(bytes);
        if (onInput) onInput();
    }
    void onDisconnected() override { ++disconnected; }

    int connected = 0;
    int disconnected = 0;
    std::string received;
    std::function<void()> onInput;
};

class TcpServerTest : public testing::Test {
protected:
    Socket connectedClient() const {
        Socket client(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
        const sockaddr_in address = loopback(port_);
        EXPECT_EQ(
            connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        const DWORD timeoutMs = patienceMs;
        setsockopt(client.get(), SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&timeoutMs),
                   sizeof timeoutMs);
        return client;
    }

    // Serves until the condition holds.
    bool serveUntil(const std::function<bool()>& condition) {
        const DWORD startMs = GetTickCount();
        while (!condition()) {
            if (GetTickCount() - startMs > patienceMs) return false;
            WaitForSingleObject(server_.readyEvent(), 100);
            server_.serve();
        }
        return true;
    }

    static void put(const Socket& client, const std::string& bytes) {
        EXPECT_EQ(send(client.get(), bytes.data(), static_cast<int>(bytes.size()), 0),
                  static_cast<int>(bytes.size()));
    }

    // What the client reads next; empty at the end of the connection.
    static std::string get(const Socket& client) {
        char buffer[65536];
        const int count = recv(client.get(), buffer, sizeof buffer, 0);
        return std::string(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
    }

    SocketLibrary sockets_;
    std::uint16_t port_ = freePort();
    Recorder events_;
    TcpServer server_{"127.0.0.1", port_, events_};
};

TEST_F(TcpServerTest, BytesTravelBothWays) {
    const Socket client = connectedClient();
    put(client, "question");
    ASSERT_TRUE(serveUntil([&] { return events_.received == "question"; }));
    server_.send("answer");
    EXPECT_EQ(get(client), "answer");
    EXPECT_EQ(events_.connected, 1);
}

TEST_F(TcpServerTest, ANewClientReplacesTheOldOne) {
    const Socket first = connectedClient();
    ASSERT_TRUE(serveUntil([&] { return events_.connected == 1; }));
    const Socket second = connectedClient();
    ASSERT_TRUE(serveUntil([&] { return events_.connected == 2; }));
    EXPECT_EQ(events_.disconnected, 1);
    EXPECT_EQ(get(first), "");
    server_.send("for the second");
    EXPECT_EQ(get(second), "for the second");
}

TEST_F(TcpServerTest, AClientThatGoesIsNoticed) {
    connectedClient();
    ASSERT_TRUE(serveUntil([&] { return events_.disconnected == 1; }));
    EXPECT_FALSE(server_.hasClient());
    server_.send("for nobody");
}

TEST_F(TcpServerTest, ClosingDeliversWhatWasSentBeforeHoweverMuchItIs) {
    const Socket client = connectedClient();
    ASSERT_TRUE(serveUntil([&] { return events_.connected == 1; }));
    const std::string big(8U * 1024U * 1024U, 'z');
    server_.send(big);
    server_.closeClient();
    server_.send("too late");
    EXPECT_TRUE(server_.hasClient());
    std::size_t got = 0;
    for (std::string bytes = get(client); !bytes.empty(); bytes = get(client)) {
        got += bytes.size();
        server_.serve();
    }
    EXPECT_EQ(got, big.size());
    EXPECT_EQ(events_.disconnected, 1);
}

TEST_F(TcpServerTest, AClientMayBeDroppedWhileItsBytesAreBeingHandled) {
    events_.onInput = [&] { server_.drop(); };
    const Socket client = connectedClient();
    put(client, std::string(200000, 'x'));
    ASSERT_TRUE(serveUntil([&] { return events_.disconnected == 1; }));
    EXPECT_FALSE(server_.hasClient());
    const Socket next = connectedClient();
    EXPECT_TRUE(serveUntil([&] { return events_.connected == 2; }));
}

TEST_F(TcpServerTest, MoreThanTheSocketTakesAtOnceFollowsLater) {
    const Socket client = connectedClient();
    ASSERT_TRUE(serveUntil([&] { return events_.connected == 1; }));
    const std::string big(20U * 1024U * 1024U, 'z');
    server_.send(big);
    std::size_t got = 0;
    const DWORD startMs = GetTickCount();
    while (got < big.size() && GetTickCount() - startMs < 4 * patienceMs) {
        got += get(client).size();
        server_.serve();
    }
    EXPECT_EQ(got, big.size());
}

TEST_F(TcpServerTest, ThePortBelongsToOneServer) {
    Recorder other;
    try {
        const TcpServer second("127.0.0.1", port_, other);
        FAIL() << "two servers on one port";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("cannot listen on 127.0.0.1:"));
    }
}

TEST(TcpServerRestart, ThePortIsFreeAsSoonAsTheServerHasGone) {
    const SocketLibrary sockets;
    const std::uint16_t port = freePort();
    for (int round = 0; round < 3; ++round) {
        Recorder events;
        TcpServer server("127.0.0.1", port, events);
        const Socket client(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
        const sockaddr_in address = loopback(port);
        ASSERT_EQ(
            connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        WaitForSingleObject(server.readyEvent(), patienceMs);
        server.serve();
        EXPECT_EQ(events.connected, 1);
        server.closeClient();
    }
}

}  // namespace
}  // namespace simulator::test
