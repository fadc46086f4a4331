#include "EchoPeer.h"

#include "Accept.h"

int runEchoPeer(unsigned int port) {
    const SOCKET peer = acceptOne(port);
    if (peer == INVALID_SOCKET) return 1;
    char bytes[echoBytes];
    for (;;) {
        const int received = recv(peer, bytes, sizeof bytes, 0);
        if (received <= 0 || send(peer, bytes, received, 0) != received) break;
    }
    closesocket(peer);
    return 0;
}
