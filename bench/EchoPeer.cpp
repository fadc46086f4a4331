#include "EchoPeer.h"

#include <winsock2.h>

#include <windows.h>

int runEchoPeer(unsigned int port) {
    const SOCKET listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<u_short>(port));
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return 1;
    if (listen(listener, 1) != 0) return 1;
    const SOCKET peer = accept(listener, nullptr, nullptr);
    char bytes[echoBytes];
    for (;;) {
        const int received = recv(peer, bytes, sizeof bytes, 0);
        if (received <= 0 || send(peer, bytes, received, 0) != received) break;
    }
    closesocket(peer);
    closesocket(listener);
    return 0;
}
