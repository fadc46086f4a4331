#include "doctor/PeerFacts.h"

#include <winsock2.h>

#include <windows.h>

// Needs winsock2.h before it.
#include <ws2tcpip.h>

#include <fmt/format.h>

#include <memory>

#include "doctor/FileAccess.h"
#include "doctor/TcpConnections.h"

namespace qorctl::doctor {
namespace {

constexpr long connectLimitS = 2;
constexpr unsigned maxPort = 65535;

struct SocketLibrary {
    WSADATA data = {};
    SocketLibrary() { WSAStartup(MAKEWORD(2, 2), &data); }
    ~SocketLibrary() { WSACleanup(); }
    SocketLibrary(const SocketLibrary&) = delete;
    SocketLibrary& operator=(const SocketLibrary&) = delete;
};

class Socket {
public:
    explicit Socket(int type) : socket_(socket(AF_INET, type, 0)) {}
    ~Socket() { closesocket(socket_); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    SOCKET get() const { return socket_; }

private:
    SOCKET const socket_;
};

/// As the library looks it up; false with the reason.
bool lookUp(const std::string& host, unsigned port, sockaddr_in& address, std::string& reason) {
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    const int error = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &list);
    if (error != 0) {
        reason = systemText(static_cast<unsigned long>(error));
        return false;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(list, &freeaddrinfo);
    address = *reinterpret_cast<const sockaddr_in*>(list->ai_addr);
    return true;
}

/// An address can be taken on the machine that has it, and on no other.
bool isOfThisMachine(sockaddr_in address) {
    address.sin_port = 0;
    const Socket probe(SOCK_DGRAM);
    return bind(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

/// Whether a connection is taken; closed at once.
bool canConnect(const sockaddr_in& address) {
    const Socket probe(SOCK_STREAM);
    u_long on = 1;
    ioctlsocket(probe.get(), static_cast<long>(FIONBIO), &on);
    connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    fd_set writable = {};
    writable.fd_array[writable.fd_count++] = probe.get();
    timeval limit = {connectLimitS, 0};
    return select(0, nullptr, &writable, nullptr, &limit) == 1;
}

void findSockets(PeerFacts& facts, std::uint32_t address, unsigned port) {
    Holders accepted;
    for (const TcpConnection& row : tcpConnections()) {
        const bool isHere =
            row.localPort == port && (row.localAddress == address || row.localAddress == 0);
        if (row.state == TcpConnection::State::listening && isHere)
            facts.servers.push_back(Holder::of(row.process));
        if (row.state != TcpConnection::State::established) continue;
        if (row.remotePort == port && row.remoteAddress == address)
            facts.clients.push_back(Holder::of(row.process));
        else if (isHere)
            accepted.push_back(Holder());  // its client, on another machine, perhaps
    }
    if (facts.clients.empty()) facts.clients = accepted;
}

PeerFacts gatherPort(const std::string& host, unsigned port) {
    PeerFacts facts;
    facts.isTcp = true;
    facts.place = fmt::format("port {} of {}", port, host.empty() ? "this machine" : host);
    facts.isUsable = port >= 1 && port <= maxPort;
    if (!facts.isUsable) return facts;
    const SocketLibrary sockets;
    sockaddr_in address = {};
    facts.isFound = lookUp(host, port, address, facts.reason);
    if (!facts.isFound) return facts;
    facts.isRemote = !isOfThisMachine(address);
    if (facts.isRemote)
        facts.accepts = canConnect(address);
    else
        findSockets(facts, ntohl(address.sin_addr.s_addr), port);
    return facts;
}

struct TitleSearch {
    std::string title;
    Holders found;
};

BOOL CALLBACK addIfTitled(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<TitleSearch*>(parameter);
    std::string text(search.title.size() + 2, '\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextA(window, text.data(), static_cast<int>(text.size()))));
    DWORD process = 0;
    // The system compares titles in this way when it looks for a window, too.
    if (lstrcmpiA(text.c_str(), search.title.c_str()) == 0 &&
        GetWindowThreadProcessId(window, &process) != 0)
        search.found.push_back(Holder::of(process));
    return TRUE;
}

Holders windowsTitled(const std::string& title) {
    TitleSearch search{title, {}};
    if (!title.empty()) EnumWindows(addIfTitled, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

PeerFacts gatherWindows(const std::string& server, const std::string& client) {
    PeerFacts facts;
    facts.place = fmt::format("window \"{}\"", server);
    facts.clientPlace = fmt::format("window \"{}\"", client);
    facts.isUsable =
        !server.empty() && !client.empty() && lstrcmpiA(server.c_str(), client.c_str());
    if (!facts.isUsable) return facts;
    facts.servers = windowsTitled(server);
    facts.clients = windowsTitled(client);
    return facts;
}

}  // namespace

PeerFacts PeerFacts::gather(const SettingsFacts& settings) {
    if (settings.usesTcp())
        return gatherPort(settings["ServerIp"].text, settings["TcpPort"].number);
    return gatherWindows(settings["ServerPipeName"].text, settings["ClientPipeName"].text);
}

}  // namespace qorctl::doctor
