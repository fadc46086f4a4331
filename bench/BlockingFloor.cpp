#include "BlockingFloor.h"

#include <windows.h>

#include <stdexcept>
#include <string>

#include "EchoPeer.h"

namespace {

constexpr int connectAttempts = 500;
constexpr unsigned int attemptPauseMs = 10;

SOCKET connectTo(unsigned int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<u_short>(port));
    for (int attempt = 0; attempt < connectAttempts; ++attempt) {
        const SOCKET candidate = socket(AF_INET, SOCK_STREAM, 0);
        if (connect(candidate, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
            return candidate;
        closesocket(candidate);
        Sleep(attemptPauseMs);
    }
    throw std::runtime_error("the echo peer does not listen");
}

}  // namespace

BlockingFloor::BlockingFloor()
    : port_(freePort()),
      peer_("qor-bench.exe", "--echo-peer " + std::to_string(port_)),
      socket_(connectTo(port_)) {}

BlockingFloor::~BlockingFloor() {
    closesocket(socket_);
}

void BlockingFloor::roundTrip() {
    char bytes[echoBytes] = {};
    if (send(socket_, bytes, sizeof bytes, 0) != echoBytes)
        throw std::runtime_error("the echo peer has gone");
    for (int got = 0; got < echoBytes;) {
        const int received = recv(socket_, bytes, echoBytes - got, 0);
        if (received <= 0) throw std::runtime_error("the echo peer has gone");
        got += received;
    }
}
