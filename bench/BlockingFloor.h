#pragma once

#include <winsock2.h>

#include "Process.h"

/// The raw thing: 32 bytes to another process and back, over a blocking TCP connection.
class BlockingFloor {
public:
    BlockingFloor();
    ~BlockingFloor();
    BlockingFloor(const BlockingFloor&) = delete;
    BlockingFloor& operator=(const BlockingFloor&) = delete;

    void roundTrip();

private:
    const unsigned int port_;
    Process peer_;
    SOCKET socket_;
};
