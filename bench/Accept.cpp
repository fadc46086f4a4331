#include "Accept.h"

SOCKET acceptOne(unsigned int port) {
    const SOCKET listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<u_short>(port));
    const bool listens =
        bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        listen(listener, 1) == 0;
    const SOCKET peer = listens ? accept(listener, nullptr, nullptr) : INVALID_SOCKET;
    closesocket(listener);
    return peer;
}
