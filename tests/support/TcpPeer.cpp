#include "support/TcpPeer.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>

namespace tcp {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error("TcpPeer: " + what + " (socket error " +
                             std::to_string(WSAGetLastError()) + ")");
}

sockaddr_in loopback(unsigned port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<u_short>(port));
    return address;
}

unsigned portOf(SOCKET socket) {
    sockaddr_in address = {};
    int length = sizeof address;
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        fail("getsockname");
    return ntohs(address.sin_port);
}

void setOption(SOCKET socket, int level, int option, int value) {
    if (setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value) != 0)
        fail("setsockopt");
}

bool hasInputWithin(SOCKET socket, unsigned withinMs) {
    fd_set sockets;
    FD_ZERO(&sockets);
    FD_SET(socket, &sockets);
    timeval limit = {static_cast<long>(withinMs / 1000), static_cast<long>(withinMs % 1000) * 1000};
    const int ready = select(0, &sockets, nullptr, nullptr, &limit);
    if (ready == SOCKET_ERROR) fail("select");
    return ready == 1;
}

}  // namespace

WinsockUse::WinsockUse() {
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) fail("WSAStartup");
}

WinsockUse::~WinsockUse() {
    WSACleanup();
}

void Socket::adopt(SOCKET handle) {
    close();
    handle_ = handle;
}

void Socket::close() {
    if (isOpen()) closesocket(handle_);
    handle_ = INVALID_SOCKET;
}

TcpPeer::TcpPeer(int receiveBufferBytes) : receiveBufferBytes_(receiveBufferBytes) {
    listenOn(0);
    port_ = portOf(listener_.handle());
}

void TcpPeer::listenOn(unsigned port) {
    listener_.adopt(socket(AF_INET, SOCK_STREAM, 0));
    if (!listener_.isOpen()) fail("socket");
    if (port != 0) setOption(listener_.handle(), SOL_SOCKET, SO_REUSEADDR, 1);
    // Accepted connections inherit the size.
    if (receiveBufferBytes_ > 0)
        setOption(listener_.handle(), SOL_SOCKET, SO_RCVBUF, receiveBufferBytes_);
    const sockaddr_in address = loopback(port);
    if (bind(listener_.handle(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail("bind");
    if (listen(listener_.handle(), SOMAXCONN) != 0) fail("listen");
}

void TcpPeer::waitForInput(SOCKET socket, unsigned withinMs, const char* what) const {
    if (hasInputWithin(socket, withinMs)) return;
    throw std::runtime_error("TcpPeer: no " + std::string(what) + " within " +
                             std::to_string(withinMs) + " ms");
}

void TcpPeer::accept(unsigned withinMs) {
    waitForInput(listener_.handle(), withinMs, "connection");
    connection_.adopt(::accept(listener_.handle(), nullptr, nullptr));
    if (!isConnected()) fail("accept");
    // Each send is a segment of its own.
    setOption(connection_.handle(), IPPROTO_TCP, TCP_NODELAY, 1);
}

bool TcpPeer::acceptsWithin(unsigned withinMs) {
    if (!hasInputWithin(listener_.handle(), withinMs)) return false;
    accept(0);
    return true;
}

void TcpPeer::close() {
    connection_.close();
}

void TcpPeer::reset() {
    const linger atOnce = {1, 0};
    setsockopt(connection_.handle(), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce),
               sizeof atOnce);
    connection_.close();
}

void TcpPeer::stopListening() {
    listener_.close();
}

void TcpPeer::listenAgain() {
    listenOn(port_);
}

void TcpPeer::send(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const int length = static_cast<int>(std::min<std::size_t>(bytes.size() - sent, 1u << 20));
        const int taken = ::send(connection_.handle(), bytes.data() + sent, length, 0);
        if (taken == SOCKET_ERROR) fail("send");
        sent += static_cast<std::size_t>(taken);
    }
}

void TcpPeer::sendInPieces(const std::string& bytes, std::size_t pieceBytes, unsigned gapMs) {
    for (std::size_t position = 0; position < bytes.size(); position += pieceBytes) {
        if (position > 0) Sleep(gapMs);
        send(bytes.substr(position, pieceBytes));
    }
}

std::string TcpPeer::receive(std::size_t count, unsigned withinMs) {
    std::string bytes(count, '\0');
    std::size_t got = 0;
    while (got < count) {
        waitForInput(connection_.handle(), withinMs, "bytes");
        const int length = static_cast<int>(std::min<std::size_t>(count - got, 1u << 20));
        const int read = recv(connection_.handle(), &bytes[got], length, 0);
        if (read == SOCKET_ERROR) fail("recv");
        if (read == 0) throw std::runtime_error("TcpPeer: the connection ended");
        got += static_cast<std::size_t>(read);
    }
    return bytes;
}

Record TcpPeer::expectRecord(unsigned withinMs) {
    const std::string head = receive(12, withinMs);
    Record record;
    record.header = wordAt(head, 0);
    record.requestId = wordAt(head, 4);
    record.payload = receive(wordAt(head, 8), withinMs);
    return record;
}

bool TcpPeer::hearsNothingFor(unsigned ms) {
    return !hasInputWithin(connection_.handle(), ms);
}

bool TcpPeer::seesTheEndWithin(unsigned ms) {
    const DWORD start = GetTickCount();
    char dropped[16384];
    for (DWORD gone = 0; gone <= ms; gone = GetTickCount() - start) {
        if (!hasInputWithin(connection_.handle(), ms - gone)) return false;
        if (recv(connection_.handle(), dropped, sizeof dropped, 0) <= 0) return true;
    }
    return false;
}

}  // namespace tcp
