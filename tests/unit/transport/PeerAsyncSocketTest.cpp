#include "transport/PeerAsyncSocket.h"

#include <gtest/gtest.h>

#include "SocketTransportSupport.h"
#include "transport/ConnInstance.h"

namespace {

class SilentConnection final : public ConnInstance {
public:
    ~SilentConnection() override { dropPeer(); }
};

int optionOf(SOCKET socket, int level, int name) {
    int value = 0;  // of a flag only the lowest byte may be filled in
    int length = sizeof value;
    getsockopt(socket, level, name, reinterpret_cast<char*>(&value), &length);
    return value;
}

// Installed stations have always run with the system's own: what is asked for before the socket
// exists is refused, and nobody asks again.
TEST(PeerAsyncSocket, ItsSocketHasTheOptionsThatTheSystemGivesEverySocket) {
    ASSERT_TRUE(AfxSocketInit());
    SilentConnection connection;
    PeerAsyncSocket peer(connection);
    CAsyncSocket plain;
    ASSERT_TRUE(peer.Create());
    ASSERT_TRUE(plain.Create());
    for (const int option : {SO_SNDBUF, SO_RCVBUF, SO_DEBUG, SO_KEEPALIVE})
        EXPECT_EQ(optionOf(peer.m_hSocket, SOL_SOCKET, option),
                  optionOf(plain.m_hSocket, SOL_SOCKET, option))
            << option;
    EXPECT_EQ(optionOf(peer.m_hSocket, IPPROTO_TCP, TCP_NODELAY), 0);
    plain.Close();
    peer.Close();
    AfxSocketTerm();
}

}  // namespace
