#include "BlockingSocket.h"

#include <windows.h>

#include <stdexcept>

namespace {

constexpr int connectAttempts = 500;
constexpr unsigned int attemptPauseMs = 10;
/// Of a piece of very many megabytes the system would keep all.
constexpr std::size_t mostAtOnce = 1u << 20;

int lengthOf(std::size_t rest) {
    return static_cast<int>(rest < mostAtOnce ? rest : mostAtOnce);
}

}  // namespace

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
    throw std::runtime_error("a peer of the benchmark does not listen");
}

bool sendWhole(SOCKET socket, const char* from, std::size_t length) {
    for (std::size_t sent = 0; sent < length;) {
        const int taken = send(socket, from + sent, lengthOf(length - sent), 0);
        if (taken <= 0) return false;
        sent += static_cast<std::size_t>(taken);
    }
    return true;
}

bool receiveWhole(SOCKET socket, char* to, std::size_t length) {
    for (std::size_t received = 0; received < length;) {
        const int come = recv(socket, to + received, lengthOf(length - received), 0);
        if (come <= 0) return false;
        received += static_cast<std::size_t>(come);
    }
    return true;
}
