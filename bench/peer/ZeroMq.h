#pragma once

#include <memory>

#include "Server.h"

/// A request to another process and its reply, over ZeroMQ on TCP, with its defaults.
class ZeroMq {
public:
    ZeroMq();

    void roundTrip();

private:
    using Handle = std::unique_ptr<void, int (*)(void*)>;

    Server server_;
    Handle context_;
    Handle socket_;
};
