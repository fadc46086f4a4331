#include "doctor/PortHolders.h"

#include <algorithm>
#include <set>

namespace qorctl::doctor {
namespace {

using State = TcpConnection::State;

bool listensAt(const TcpConnections& rows, std::uint32_t address, unsigned port) {
    return std::any_of(rows.begin(), rows.end(), [&](const TcpConnection& row) {
        return row.state == State::listening && row.localPort == port &&
               row.localAddress == address;
    });
}

/// The addresses at which the program is reached that listens for `address`: one for all of them
/// has each that no other program has for itself. (A connection's own end is always at an address
/// of this machine.)
std::set<std::uint32_t> addressesOf(const TcpConnections& rows, std::uint32_t address,
                                    unsigned port) {
    std::set<std::uint32_t> addresses = {address};
    if (listensAt(rows, address, port) || !listensAt(rows, 0, port)) return addresses;
    for (const TcpConnection& row : rows)
        if (row.state == State::established && row.localPort == port &&
            !listensAt(rows, row.localAddress, port))
            addresses.insert(row.localAddress);
    return addresses;
}

}  // namespace

PortHolders PortHolders::in(const TcpConnections& rows, std::uint32_t address, unsigned port) {
    const std::set<std::uint32_t> addresses = addressesOf(rows, address, port);
    PortHolders holders;
    Holders accepted;
    for (const TcpConnection& row : rows) {
        if (row.state == State::listening && row.localPort == port &&
            (row.localAddress == address || row.localAddress == 0))
            holders.servers.push_back(Holder::of(row.process));
        if (row.state != State::established) continue;
        if (row.remotePort == port && addresses.count(row.remoteAddress) != 0)
            holders.clients.push_back(Holder::of(row.process));
        else if (row.localPort == port && addresses.count(row.localAddress) != 0)
            accepted.push_back(Holder());  // its client, on another machine, perhaps
    }
    if (holders.clients.empty()) holders.clients = accepted;
    return holders;
}

}  // namespace qorctl::doctor
