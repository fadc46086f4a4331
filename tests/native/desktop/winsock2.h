#pragma once

#include <windows.h>

#include "WinsockNumbers.h"

/// Winsock as the framework's sockets use it, on the `Link`s of this process (../Link.h). A host is
/// an address by itself: it listens as "host:port".

constexpr long FD_READ = 1;
constexpr long FD_WRITE = 2;
constexpr long FD_OOB = 4;
constexpr long FD_ACCEPT = 8;
constexpr long FD_CONNECT = 16;
constexpr long FD_CLOSE = 32;

struct WSADATA {
    WORD wVersion;
};
struct sockaddr {
    char name[64];
};

constexpr WORD MAKEWORD(unsigned low, unsigned high) {
    return static_cast<WORD>(high << 8 | low);
}
constexpr int WSAGETSELECTEVENT(LPARAM lParam) {
    return static_cast<int>(lParam & 0xFFFF);
}
constexpr int WSAGETSELECTERROR(LPARAM lParam) {
    return static_cast<int>(lParam >> 16 & 0xFFFF);
}

int WSAStartup(WORD version, WSADATA* data);
int WSACleanup();
int WSAGetLastError();
void WSASetLastError(int error);

SOCKET socket(int family, int type, int protocol);
int closesocket(SOCKET socket);
int bind(SOCKET socket, const sockaddr* address, int length);
/// The attempt ends when the other side accepts or stops listening.
int connect(SOCKET socket, const sockaddr* address, int length);
int setsockopt(SOCKET socket, int level, int option, const char* value, int length);
int recv(SOCKET socket, char* buffer, int length, int flags);
int send(SOCKET socket, const char* buffer, int length, int flags);
int WSAAsyncSelect(SOCKET socket, HWND window, UINT message, long events);
