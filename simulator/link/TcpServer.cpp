#include "link/TcpServer.h"

#include <ws2tcpip.h>

#include <array>
#include <stdexcept>

namespace simulator {

namespace {

/// How long finish() waits for the client to close its side.
constexpr DWORD lingerMs = 500;
constexpr std::size_t inputBytes = 65536;
constexpr std::size_t lateInputBytes = 4096;

sockaddr_in addressOf(const std::string& ip, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (inet_pton(AF_INET, ip.c_str(), &address.sin_addr) != 1) {
        throw std::runtime_error("\"" + ip + "\" is no IPv4 address");
    }
    return address;
}

bool wouldBlock() {
    return WSAGetLastError() == WSAEWOULDBLOCK;
}

}  // namespace

TcpServer::TcpServer(const std::string& ip, std::uint16_t port, TcpServerEvents& events)
    : events_(events), event_(WSACreateEvent()) {
    if (event_ == WSA_INVALID_EVENT) throw std::runtime_error(socketError("event"));
    const std::string where = ip + ":" + std::to_string(port);
    const sockaddr_in address = addressOf(ip, port);
    listener_.reset(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
    // Two simulators on one port would share the clients at random.
    const BOOL exclusive = TRUE;
    setsockopt(listener_.get(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE,
               reinterpret_cast<const char*>(&exclusive), sizeof exclusive);
    const bool listens =
        listener_ &&
        bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        listen(listener_.get(), SOMAXCONN) == 0 &&
        WSAEventSelect(listener_.get(), event_, FD_ACCEPT) == 0;
    if (!listens) throw std::runtime_error(socketError("cannot listen on " + where));
}

TcpServer::~TcpServer() {
    client_.reset();
    listener_.reset();
    WSACloseEvent(event_);
}

void TcpServer::serve() {
    WSAResetEvent(event_);
    receive();  // first: an answer must not wait for the look at the listener
    sendPending();
    acceptClients();
}

void TcpServer::acceptClients() {
    while (true) {
        Socket accepted(accept(listener_.get(), nullptr, nullptr));
        if (!accepted) return;
        drop();
        const BOOL noDelay = TRUE;  // each piece in a segment of its own
        setsockopt(accepted.get(), IPPROTO_TCP, TCP_NODELAY,
                   reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
        WSAEventSelect(accepted.get(), event_, FD_READ | FD_WRITE | FD_CLOSE);
        client_ = std::move(accepted);
        events_.onConnected();
    }
}

// onBytes() may drop the client, so the handle is looked at anew in every turn.
void TcpServer::receive() {
    std::array<char, inputBytes> buffer;
    while (client_ && !closing_) {
        const int received = recv(client_.get(), buffer.data(), static_cast<int>(buffer.size()), 0);
        if (received > 0) {
            events_.onBytes({buffer.data(), static_cast<std::size_t>(received)});
            continue;
        }
        if (received == 0 || !wouldBlock()) drop();
        return;
    }
}

void TcpServer::send(const std::string& bytes) {
    if (!client_ || closing_) return;
    if (pending_.size() - sent_ + bytes.size() > maxPendingBytes) {
        drop();
        return;
    }
    pending_ += bytes;
    sendPending();
}

void TcpServer::sendPending() {
    while (client_ && sent_ < pending_.size()) {
        const auto size = static_cast<int>(pending_.size() - sent_);
        const int count = ::send(client_.get(), pending_.data() + sent_, size, 0);
        if (count == SOCKET_ERROR) {
            if (!wouldBlock()) drop();
            break;
        }
        sent_ += static_cast<std::size_t>(count);
    }
    if (!client_) return;
    // The rest is moved only when it is the smaller part: a long record leaves in many pieces.
    if (sent_ > pending_.size() / 2) {
        pending_.erase(0, sent_);
        sent_ = 0;
    }
    if (closing_ && pending_.empty()) finish();
}

void TcpServer::closeClient() {
    if (!client_) return;
    closing_ = true;
    sendPending();
}

// Closing a socket that still holds unread input would reset the connection, and the client could
// lose the last record. So the input is read until the client closes as well.
void TcpServer::finish() {
    shutdown(client_.get(), SD_SEND);
    WSAEventSelect(client_.get(), event_, 0);
    u_long blocking = 0;
    ioctlsocket(client_.get(), FIONBIO, &blocking);
    const DWORD timeoutMs = lingerMs;
    setsockopt(client_.get(), SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&timeoutMs),
               sizeof timeoutMs);
    std::array<char, lateInputBytes> buffer;
    const ULONGLONG startMs = GetTickCount64();
    while (GetTickCount64() - startMs < lingerMs &&
           recv(client_.get(), buffer.data(), static_cast<int>(buffer.size()), 0) > 0) {
    }
    drop();
}

void TcpServer::drop() {
    if (!client_) return;
    client_.reset();
    pending_.clear();
    sent_ = 0;
    closing_ = false;
    events_.onDisconnected();
}

}  // namespace simulator
