#pragma once

#include <winsock2.h>

#include <cstdint>
#include <string>

#include "support/TcpBytes.h"

namespace tcp {

/// A host that does not exist, which shows without asking anybody: the name is too long.
inline std::string impossibleHost() {
    return std::string(100, 'x') + ".invalid";
}

/// Socket support of the process for as long as the object lives.
class WinsockUse {
public:
    WinsockUse();
    ~WinsockUse();
    WinsockUse(const WinsockUse&) = delete;
    WinsockUse& operator=(const WinsockUse&) = delete;
};

/// A socket handle with an owner.
class Socket {
public:
    explicit Socket(SOCKET handle = INVALID_SOCKET) : handle_(handle) {}
    ~Socket() { close(); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    SOCKET handle() const { return handle_; }
    bool isOpen() const { return handle_ != INVALID_SOCKET; }
    void adopt(SOCKET handle);
    void close();

private:
    SOCKET handle_;
};

/// The other end of a TCP connection under test: listens on a free loopback port and talks, with
/// plain blocking calls, to one connection at a time. Whatever does not happen in time, and every
/// failing call, is a std::runtime_error. Used by one thread at a time; `TcpPeerThread` gives it a
/// thread of its own.
class TcpPeer {
public:
    static constexpr unsigned patienceMs = 5000;

    /// Listens at once. A small `receiveBufferBytes` makes the window fill soon when the peer
    /// does not read; 0 leaves the system's size.
    explicit TcpPeer(int receiveBufferBytes = 0);

    unsigned port() const { return port_; }

    /// Takes the next connection; the one before is closed.
    void accept(unsigned withinMs = patienceMs);
    bool acceptsWithin(unsigned withinMs);
    bool isConnected() const { return connection_.isOpen(); }

    /// Ends the connection in order, or with a reset that drops what was not read.
    void close();
    void reset();

    /// While not listening, the port refuses connections.
    void stopListening();
    void listenAgain();

    void send(const std::string& bytes);
    /// Piece by piece, each in a segment of its own, with a gap between them.
    void sendInPieces(const std::string& bytes, std::size_t pieceBytes, unsigned gapMs);

    std::string receive(std::size_t count, unsigned withinMs = patienceMs);
    Record expectRecord(unsigned withinMs = patienceMs);
    /// True if neither bytes nor an end of the connection arrive for so long.
    bool hearsNothingFor(unsigned ms);
    /// Reads, and drops, until the other side has ended the connection; false if it has not.
    bool seesTheEndWithin(unsigned ms);

private:
    void listenOn(unsigned port);
    void waitForInput(SOCKET socket, unsigned withinMs, const char* what) const;

    WinsockUse winsock_;
    int receiveBufferBytes_;
    unsigned port_ = 0;
    Socket listener_;
    Socket connection_;
};

}  // namespace tcp
