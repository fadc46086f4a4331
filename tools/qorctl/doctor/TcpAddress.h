#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qorctl::doctor {

/// Where a TCP server is. Winsock must be started.
class TcpAddress {
public:
    /// As the library looks a host up (IPv4); none, with the reason, if there is no such host.
    static std::optional<TcpAddress> lookUp(const std::string& host, unsigned port,
                                            std::string& reason);

    /// The host's number, first part in the highest byte.
    std::uint32_t host() const { return host_; }

    bool isOfThisMachine() const;

    /// Whether a connection to it comes about within 2 s; it is closed at once.
    bool takesConnection() const;

private:
    TcpAddress(std::uint32_t host, unsigned port) : host_(host), port_(port) {}

    std::uint32_t host_;
    unsigned port_;
};

}  // namespace qorctl::doctor
