#pragma once

#include <winsock2.h>

/// Listens on a loopback port for the one connection of a benchmark's other side and takes it;
/// INVALID_SOCKET if that fails.
SOCKET acceptOne(unsigned int port);
