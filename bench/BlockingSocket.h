#pragma once

#include <winsock2.h>

#include <cstddef>

/// Connects to a peer on loopback, which may still be starting. Throws std::runtime_error if it
/// does not come.
SOCKET connectTo(unsigned int port);

/// Transfers of a known length. False when the connection has ended.
bool sendWhole(SOCKET socket, const char* from, std::size_t length);
bool receiveWhole(SOCKET socket, char* to, std::size_t length);
