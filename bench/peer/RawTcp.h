#pragma once

#include "Server.h"

/// The floor: the bytes to another process and back, over a blocking TCP connection.
class RawTcp {
public:
    RawTcp();
    ~RawTcp();
    RawTcp(const RawTcp&) = delete;
    RawTcp& operator=(const RawTcp&) = delete;

    void roundTrip();

private:
    Server server_;
    const int socket_;
};
