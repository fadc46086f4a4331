#include "doctor/TcpAddress.h"

#include <winsock2.h>

// Need winsock2.h before them.
#include <iphlpapi.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "doctor/FileAccess.h"

namespace qorctl::doctor {
namespace {

constexpr long connectLimitS = 2;
constexpr std::size_t spareBytes = 1024;  // between two calls an address may come

class Socket {
public:
    Socket() : socket_(socket(AF_INET, SOCK_STREAM, 0)) {}
    ~Socket() { closesocket(socket_); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    SOCKET get() const { return socket_; }

private:
    SOCKET const socket_;
};

sockaddr_in systemAddress(std::uint32_t host, unsigned port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(host);
    address.sin_port = htons(static_cast<u_short>(port));
    return address;
}

fd_set setOf(SOCKET socket) {
    fd_set set = {};
    set.fd_array[set.fd_count++] = socket;
    return set;
}

/// Waits for the end of a connect that does not block.
bool isConnectedInTime(SOCKET socket) {
    fd_set done = setOf(socket);
    fd_set failed = setOf(socket);
    timeval limit = {connectLimitS, 0};
    int error = -1;
    int size = sizeof error;
    return select(0, nullptr, &done, &failed, &limit) > 0 && failed.fd_count == 0 &&
           getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size) == 0 &&
           error == 0;
}

std::vector<std::uint32_t> ownAddresses() {
    ULONG size = 0;
    GetIpAddrTable(nullptr, &size, FALSE);
    std::vector<char> bytes(size + spareBytes);
    size = static_cast<ULONG>(bytes.size());
    auto* const table = reinterpret_cast<MIB_IPADDRTABLE*>(bytes.data());
    if (GetIpAddrTable(table, &size, FALSE) != NO_ERROR) return {};
    std::vector<std::uint32_t> addresses;
    std::for_each(table->table, table->table + table->dwNumEntries,
                  [&](const MIB_IPADDRROW& row) { addresses.push_back(ntohl(row.dwAddr)); });
    return addresses;
}

}  // namespace

std::optional<TcpAddress> TcpAddress::lookUp(const std::string& host, unsigned port,
                                             std::string& reason) {
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    const int error = getaddrinfo(host.c_str(), nullptr, &hints, &list);
    if (error != 0) {
        reason = systemText(static_cast<unsigned long>(error));
        return std::nullopt;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(list, &freeaddrinfo);
    const auto& first = *reinterpret_cast<const sockaddr_in*>(list->ai_addr);
    return TcpAddress(ntohl(first.sin_addr.s_addr), port);
}

// (Wine lets a socket be bound to any address: to try that would tell nothing.)
bool TcpAddress::isOfThisMachine() const {
    constexpr std::uint32_t loopback = 127;  // all that begins with it
    if (host_ >> 24 == loopback) return true;
    const std::vector<std::uint32_t> own = ownAddresses();
    return std::find(own.begin(), own.end(), host_) != own.end();
}

bool TcpAddress::takesConnection() const {
    const sockaddr_in address = systemAddress(host_, port_);
    const Socket probe;
    u_long on = 1;
    ioctlsocket(probe.get(), static_cast<long>(FIONBIO), &on);
    return connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
           (WSAGetLastError() == WSAEWOULDBLOCK && isConnectedInTime(probe.get()));
}

}  // namespace qorctl::doctor
