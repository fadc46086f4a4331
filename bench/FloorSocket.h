#pragma once

#include <memory>

#include "common/Deadline.h"
#include "framework/AsyncSocket.h"
#include "transport/SocketPump.h"

/// An asynchronous socket of a floor, which knows how its connect went.
class FloorSocket : public CAsyncSocket {
public:
    bool isConnected() const { return connected_; }
    bool hasFailed() const { return failed_; }

protected:
    void OnConnect(int errorCode) override {
        connected_ = errorCode == 0;
        failed_ = errorCode != 0;
    }

private:
    bool connected_ = false;
    bool failed_ = false;
};

/// Connects to the other side of a floor, which may still be starting; null if it does not come.
/// `makeSocket` makes a socket for each attempt.
template <class MakeSocket>
auto connectFloor(unsigned int port, MakeSocket makeSocket) -> decltype(makeSocket()) {
    constexpr unsigned int giveUpMs = 5000;
    const auto deadline = common::Deadline::after(common::now(), giveUpMs);
    while (!deadline.hasPassed()) {
        auto socket = makeSocket();
        socket->Create();
        socket->Connect("127.0.0.1", port);
        while (!socket->isConnected() && !socket->hasFailed()) pumpSocketNotifications(nullptr);
        if (socket->isConnected()) return socket;
        common::sleepMs(10);
    }
    return nullptr;
}
