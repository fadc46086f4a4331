#include "transport/ClientConnInstance.h"

#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "support/TcpPeer.h"

namespace {

class Accepter final : public ConnectionDataAccepter {
public:
    void onConnected(ConnInstance&) override {}
    void onData(ConnInstance&, const std::string&) override {}
    void onClosed(ConnInstance&) override {}
    bool isStopping() const override { return false; }
};

/// Each look at the clock lets a millisecond pass.
class ClientConnection : public testing::Test {
protected:
    ClientConnection() { clock.msPerRead = 1; }

    FakeClock clock;
    tcp::TcpPeer peer;
    Accepter accepter;
    ClientConnInstance connection{"127.0.0.1", peer.port(), accepter};
};

TEST_F(ClientConnection, TheTimeForItIsTheSameAcrossTheWrapOfTheTickCount) {
    peer.stopListening();
    for (const std::uint32_t msBefore : {1000u, 150u, 100u, 10u}) {
        SCOPED_TRACE(msBefore);
        clock.advance(0u - msBefore - clock.now());
        const std::uint32_t start = clock.now();
        EXPECT_FALSE(connection.ensureConnected(150));
        EXPECT_GT(clock.now() - start, 150u);
        EXPECT_LT(clock.now() - start, 170u);
    }
}

TEST_F(ClientConnection, AnAttemptRightBeforeTheWrapSucceeds) {
    clock.advance(0u - 10 - clock.now());
    EXPECT_TRUE(connection.ensureConnected(60000));
}

}  // namespace
