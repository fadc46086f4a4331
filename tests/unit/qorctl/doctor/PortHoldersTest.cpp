// Tables as the system may have them. Processes of such numbers do not exist.
#include "doctor/PortHolders.h"

#include <gmock/gmock.h>

using namespace qorctl::doctor;
using testing::IsEmpty;
using testing::SizeIs;
using State = TcpConnection::State;

namespace {

constexpr std::uint32_t loopback = 0x7F000001;
constexpr std::uint32_t ownCard = 0xC0A80105;
constexpr std::uint32_t otherMachine = 0xC0A80109;
constexpr unsigned port = 5000;
constexpr unsigned farPort = 61000;
constexpr unsigned long qor = 4000000004;
constexpr unsigned long host = 4000000008;

TcpConnection listener(std::uint32_t address) {
    return {address, port, 0, 0, State::listening, qor};
}

TcpConnection accepted(std::uint32_t local, std::uint32_t remote) {
    return {local, port, remote, farPort, State::established, qor};
}

TcpConnection connected(std::uint32_t local, std::uint32_t remote) {
    return {local, farPort, remote, port, State::established, host};
}

PortHolders holders(const TcpConnections& rows) {
    return PortHolders::in(rows, loopback, port);
}

TEST(PortHolders, AHostOfAnotherMachineIsSeenWhateverAddressItUses) {
    const auto found = holders({listener(0), accepted(ownCard, otherMachine)});
    EXPECT_THAT(found.servers, SizeIs(1));
    ASSERT_THAT(found.clients, SizeIs(1));
    EXPECT_EQ(0u, found.clients[0].process);
}

TEST(PortHolders, AHostOfThisMachineIsNamedWhateverAddressItUses) {
    for (const std::uint32_t address : {loopback, ownCard}) {
        const auto found =
            holders({listener(0), connected(address, address), accepted(address, address)});
        ASSERT_THAT(found.clients, SizeIs(1)) << address;
        EXPECT_EQ(host, found.clients[0].process) << address;
    }
}

TEST(PortHolders, WhoTalksToAnotherProgramAtThatPortIsNoHostOfQors) {
    // One that listens at that address alone.
    const auto beside =
        holders({listener(loopback), listener(ownCard), accepted(ownCard, otherMachine)});
    EXPECT_THAT(beside.servers, SizeIs(1));
    EXPECT_THAT(beside.clients, IsEmpty());
    EXPECT_THAT(holders({listener(0), listener(ownCard), accepted(ownCard, otherMachine)}).clients,
                IsEmpty());
    // One on another machine, and a connection that has got that port for its own end.
    EXPECT_THAT(holders({listener(0), connected(ownCard, otherMachine)}).clients, IsEmpty());
    EXPECT_THAT(holders({accepted(ownCard, otherMachine)}).clients, IsEmpty());
}

}  // namespace
