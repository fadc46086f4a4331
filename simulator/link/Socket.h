#pragma once

#include <winsock2.h>

#include <string>
#include <utility>

namespace simulator {

/// Owns one socket handle.
class Socket {
public:
    Socket() = default;
    explicit Socket(SOCKET handle) : handle_(handle) {}
    Socket(Socket&& other) noexcept : handle_(other.release()) {}
    Socket& operator=(Socket&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { reset(); }

    SOCKET get() const { return handle_; }
    explicit operator bool() const { return handle_ != INVALID_SOCKET; }
    SOCKET release() { return std::exchange(handle_, INVALID_SOCKET); }
    void reset(SOCKET handle = INVALID_SOCKET) {
        if (handle_ != INVALID_SOCKET) closesocket(handle_);
        handle_ = handle;
    }

private:
    SOCKET handle_ = INVALID_SOCKET;
};

/// Windows Sockets are usable as long as it lives. Throws std::runtime_error.
class SocketLibrary {
public:
    SocketLibrary();
    ~SocketLibrary() { WSACleanup(); }
    SocketLibrary(const SocketLibrary&) = delete;
    SocketLibrary& operator=(const SocketLibrary&) = delete;
};

/// "what: <system's text> (code)" for the last socket error.
std::string socketError(const std::string& what);

}  // namespace simulator
