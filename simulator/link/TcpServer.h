#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "link/Socket.h"

namespace simulator {

/// What a TcpServer tells. Called from within serve() and drop().
class TcpServerEvents {
public:
    virtual ~TcpServerEvents() = default;
    virtual void onConnected() = 0;
    virtual void onBytes(std::string_view bytes) = 0;
    virtual void onDisconnected() = 0;
};

/// Listens on one port and talks to one client at a time: a new one replaces the old one. Never
/// blocks; one thread uses it, which waits on readyEvent() and then calls serve().
class TcpServer {
public:
    /// Listens from here on. Throws std::runtime_error.
    TcpServer(const std::string& ip, std::uint16_t port, TcpServerEvents& events);
    ~TcpServer();
    TcpServer(const TcpServer&) = delete;
    TcpServer& operator=(const TcpServer&) = delete;

    /// Signalled when there is something to accept, read, write or close.
    HANDLE readyEvent() const { return event_; }
    void serve();

    /// Sends as one piece if the socket has room; what it has no room for follows in serve().
    void send(const std::string& bytes);
    /// Ends the connection once everything is sent. The client sees an orderly end.
    void closeClient();
    /// Ends the connection at once.
    void drop();
    bool hasClient() const { return static_cast<bool>(client_); }

private:
    void acceptClients();
    void receive();
    void sendPending();
    void finish();

    static constexpr std::size_t maxPendingBytes = 256U * 1024U * 1024U;

    TcpServerEvents& events_;
    WSAEVENT event_;
    Socket listener_;
    Socket client_;
    std::string pending_;   // accepted by send(), not yet by the socket
    std::size_t sent_ = 0;  // of pending_, the first so many are sent already
    bool closing_ = false;
};

}  // namespace simulator
