#pragma once

#include <cstdint>

/// Winsock's numbers, for its stand-ins.

using SOCKET = std::uintptr_t;

constexpr SOCKET INVALID_SOCKET = ~SOCKET{0};
constexpr int SOCKET_ERROR = -1;
constexpr int AF_INET = 2;
constexpr int SOCK_STREAM = 1;
constexpr int IPPROTO_TCP = 6;
constexpr int SOL_SOCKET = 0xFFFF;
constexpr int SO_SNDBUF = 0x1001;
constexpr int SO_RCVBUF = 0x1002;
constexpr int TCP_NODELAY = 1;

constexpr int WSAEINVAL = 10022;
constexpr int WSAEWOULDBLOCK = 10035;
constexpr int WSAENOTSOCK = 10038;
constexpr int WSAECONNRESET = 10054;
constexpr int WSAENOBUFS = 10055;
constexpr int WSAEISCONN = 10056;
constexpr int WSAENOTCONN = 10057;
constexpr int WSAECONNREFUSED = 10061;
constexpr int WSANOTINITIALISED = 10093;
