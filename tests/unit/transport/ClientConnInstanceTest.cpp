#include "transport/ClientConnInstance.h"

#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "support/TcpPeer.h"
#include "transport/SocketPump.h"

namespace {

class Accepter final : public ConnectionDataAccepter {
public:
    void onConnected(ConnInstance&) override {}
    void onData(ConnInstance&, const std::string&) override {}
    void onClosed(ConnInstance&) override {}
    bool isStopping() const override { return false; }
};

/// Each look at the clock lets 10 ms pass.
class ClientConnection : public testing::Test {
protected:
    ClientConnection() { clock.msPerRead = 10; }

    FakeClock clock;
    tcp::TcpPeer peer;
    Accepter accepter;
    ClientConnInstance connection{"127.0.0.1", peer.port(), accepter};
};

TEST_F(ClientConnection, TheTimeForItIsTheSameAcrossTheWrapOfTheTickCount) {
    peer.stopListening();
    for (const std::uint32_t msBefore : {1000u, 140u, 100u, 20u}) {
        SCOPED_TRACE(msBefore);
        clock.advanceToBeforeWrap(msBefore);
        const std::uint32_t start = clock.now();
        EXPECT_FALSE(connection.ensureConnected(150));
        EXPECT_GT(clock.now() - start, 150u);
        EXPECT_LT(clock.now() - start, 400u);  // the last attempt may begin at the end
    }
}

TEST_F(ClientConnection, AnAttemptRightBeforeTheWrapSucceeds) {
    clock.advanceToBeforeWrap(50);
    EXPECT_TRUE(connection.ensureConnected(60000));
}

TEST_F(ClientConnection, ThatWasLostIsNoneWhileNobodyListens) {
    ASSERT_TRUE(connection.ensureConnected(60000));
    peer.accept();
    peer.stopListening();
    peer.close();
    while (connection.isConnected()) pumpSocketNotifications(nullptr);
    EXPECT_FALSE(connection.ensureConnected(150));
}

}  // namespace
