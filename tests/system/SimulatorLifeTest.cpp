// That a QOR's stand-in that was started by hand is there for one host after the other, however
// each of them left, and ends each time a host tells it to.

#include <winsock2.h>

#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

namespace {

constexpr int hosts = 100;
constexpr unsigned answerMs = 15000;

class StandIn : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    /// A host comes, reads a value and goes.
    testing::AssertionResult servesAHost() {
        station.construct();
        const bool answers = eventually(answerMs, [&] { return station->pingQor(500); });
        std::vector<double> values;
        const bool reads = answers && station->getParamData("EngineSpeed", values, 5000);
        station.close();
        if (reads) return testing::AssertionSuccess();
        return testing::AssertionFailure() << (answers ? "no value" : "no answer") << "; its log:\n"
                                           << bytesOfFile(station.settings.log);
    }
};

INSTANTIATE_TEST_SUITE_P(Over, StandIn, everyTransport(), transportName);

TEST_P(StandIn, ServesAHundredHostsOneAfterTheOther) {
    station.settings.executable.clear();
    station.writeSettings();
    station.startQorByHand();
    const std::vector<unsigned long> started = qor::running();
    for (int host = 0; host < hosts; ++host) ASSERT_TRUE(servesAHost()) << "host " << host;
    EXPECT_EQ(started, qor::running());
}

TEST_P(StandIn, EndsEachTimeAHostThatNamesItsProgramGoes) {
    station.writeSettings();
    for (int host = 0; host < hosts / 2; ++host) {
        station.startQorByHand();
        ASSERT_TRUE(servesAHost()) << "host " << host;
        ASSERT_TRUE(eventually(5000, [] { return qor::running().empty(); })) << "host " << host;
    }
}

/// A client over TCP that knows no manners.
class RudeClient {
public:
    explicit RudeClient(unsigned short port) : socket_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        isConnected_ =
            connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~RudeClient() { closesocket(socket_); }
    RudeClient(const RudeClient&) = delete;
    RudeClient& operator=(const RudeClient&) = delete;

    bool isConnected() const { return isConnected_; }
    void send(const std::string& bytes) const {
        ::send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0);
    }
    /// What it closes is reset.
    void leaveByReset() const {
        const linger at = {1, 0};
        setsockopt(socket_, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&at), sizeof at);
    }

private:
    SOCKET socket_;
    bool isConnected_ = false;
};

TEST(StandInOverTcp, ServesTheNextHostHoweverTheLastOneHasLeft) {
    const std::string request("\x03\0\0\0\x01\0\0\0\x0F\0\0\0\x0B\0\0\0EngineSpeed", 27);
    Station station(Transport::tcp);
    station.settings.executable.clear();
    station.writeSettings();
    station.startQorByHand();
    for (int host = 0; host < hosts; ++host) {
        const RudeClient client(station.settings.port);
        ASSERT_TRUE(client.isConnected()) << "host " << host;
        const std::string sent[] = {"", request.substr(0, 5), request.substr(0, 20), request};
        client.send(sent[host % 4]);
        if (host % 8 < 4) client.leaveByReset();
        if (host % 3 == 0) Sleep(10);
    }
    station.construct();
    EXPECT_TRUE(eventually(answerMs, [&] { return station->pingQor(500); }))
        << bytesOfFile(station.settings.log);
}

}  // namespace
