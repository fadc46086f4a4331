#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace qorctl::doctor {

/// One row of the system's table of TCP connections (IPv4; a listener for both kinds counts, too).
struct TcpConnection {
    enum class State { listening, established, other };

    std::uint32_t localAddress = 0;  ///< as a number, first part in the highest byte; 0: all
    unsigned localPort = 0;
    std::uint32_t remoteAddress = 0;
    unsigned remotePort = 0;
    State state = State::other;
    unsigned long process = 0;  ///< 0: the system does not tell
};

using TcpConnections = std::vector<TcpConnection>;

/// The present table; none if the system does not give it.
std::optional<TcpConnections> tcpConnections();

}  // namespace qorctl::doctor
