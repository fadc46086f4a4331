// Winsock's calls.
#include <ws2tcpip.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <memory>
#include <shared_mutex>

#include "Desktop.h"
#include "Socket.h"

using desktop::Socket;

namespace {

std::atomic<int> users{0};

/// The open sockets; the value of a socket is its object's address, so one that is closed soon
/// comes back, as with the system. Who only looks shares the lock.
struct Sockets {
    std::shared_mutex mutex;
    std::map<SOCKET, std::shared_ptr<Socket>> open;
};

Sockets& sockets() {
    static auto* const all = new Sockets;  // also for threads that outlive the others
    return *all;
}

int fail(int error) {
    WSASetLastError(error);
    return SOCKET_ERROR;
}

int orFail(int result) {
    return result >= 0 ? result : fail(-result);
}

std::shared_ptr<Socket> find(SOCKET socket) {
    const std::shared_lock<std::shared_mutex> guard(sockets().mutex);
    const auto found = sockets().open.find(socket);
    if (found == sockets().open.end()) fail(WSAENOTSOCK);
    return found != sockets().open.end() ? found->second : nullptr;
}

}  // namespace

int desktop::openSockets() {
    const std::shared_lock<std::shared_mutex> guard(sockets().mutex);
    return static_cast<int>(sockets().open.size());
}

int desktop::socketUsers() {
    return users;
}

int WSAStartup(WORD version, WSADATA* data) {
    data->wVersion = version;
    ++users;
    return 0;
}

int WSACleanup() {
    --users;
    return 0;
}

int WSAGetLastError() {
    return static_cast<int>(GetLastError());
}

void WSASetLastError(int error) {
    SetLastError(static_cast<DWORD>(error));
}

SOCKET socket(int, int, int) {
    if (users <= 0) {
        fail(WSANOTINITIALISED);
        return INVALID_SOCKET;
    }
    const auto made = std::make_shared<Socket>();
    const SOCKET value = reinterpret_cast<SOCKET>(made.get());
    const std::unique_lock<std::shared_mutex> guard(sockets().mutex);
    sockets().open.emplace(value, made);
    return value;
}

int closesocket(SOCKET socket) {
    const auto closing = find(socket);
    if (closing == nullptr) return SOCKET_ERROR;
    {
        const std::unique_lock<std::shared_mutex> guard(sockets().mutex);
        sockets().open.erase(socket);
    }
    closing->close();
    return 0;
}

int bind(SOCKET socket, const sockaddr*, int) {
    return find(socket) != nullptr ? 0 : SOCKET_ERROR;
}

int connect(SOCKET socket, const sockaddr* address, int) {
    const auto connecting = find(socket);
    if (connecting == nullptr) return SOCKET_ERROR;
    connecting->connect(address->name);
    return fail(WSAEWOULDBLOCK);
}

int setsockopt(SOCKET socket, int, int, const char*, int) {
    return find(socket) != nullptr ? 0 : SOCKET_ERROR;
}

int recv(SOCKET socket, char* buffer, int length, int) {
    const auto receiving = find(socket);
    return receiving != nullptr ? orFail(receiving->receive(buffer, length)) : SOCKET_ERROR;
}

int send(SOCKET socket, const char* buffer, int length, int) {
    const auto sending = find(socket);
    return sending != nullptr ? orFail(sending->send(buffer, length)) : SOCKET_ERROR;
}

int WSAAsyncSelect(SOCKET socket, HWND window, UINT message, long events) {
    const auto selected = find(socket);
    if (selected == nullptr) return SOCKET_ERROR;
    selected->select(window, message, events);
    return 0;
}

int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** list) {
    auto address = std::make_unique<sockaddr>();
    std::snprintf(address->name, sizeof address->name, "%s:%s", host != nullptr ? host : "",
                  service);
    auto found = std::make_unique<addrinfo>(*hints);
    found->ai_addrlen = sizeof *address;
    found->ai_addr = address.release();
    *list = found.release();
    return 0;
}

void freeaddrinfo(addrinfo* list) {
    delete list->ai_addr;
    delete list;
}
