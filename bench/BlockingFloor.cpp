#include "BlockingFloor.h"

#include <stdexcept>
#include <string>

#include "BlockingSocket.h"
#include "EchoPeer.h"

BlockingFloor::BlockingFloor()
    : port_(freePort()),
      peer_("qor-bench.exe", "--echo-peer " + std::to_string(port_)),
      socket_(connectTo(port_)) {}

BlockingFloor::~BlockingFloor() {
    closesocket(socket_);
}

void BlockingFloor::roundTrip() {
    char bytes[echoBytes] = {};
    if (!sendWhole(socket_, bytes, sizeof bytes) || !receiveWhole(socket_, bytes, sizeof bytes))
        throw std::runtime_error("the echo peer has gone");
}
