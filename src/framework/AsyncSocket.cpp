#include "framework/AsyncSocket.h"

#include <ws2tcpip.h>

#include <memory>
#include <string>
#include <utility>

#include "framework/SocketWindow.h"

namespace {

/// Frees a list without touching the socket error that the use of it has left.
struct FreeAddresses {
    void operator()(addrinfo* list) const {
        const int error = WSAGetLastError();
        freeaddrinfo(list);
        WSASetLastError(error);
    }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

/// Looks `host` up (null: any local address); empty on failure, with the socket error set.
Addresses resolve(const char* host, UINT port, int socketType) {
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = socketType;
    hints.ai_flags = host == nullptr ? AI_PASSIVE : 0;
    addrinfo* list = nullptr;
    const std::string service = std::to_string(port);
    const int error = getaddrinfo(host, service.c_str(), &hints, &list);
    if (error != 0) WSASetLastError(error);
    return Addresses(error == 0 ? list : nullptr);
}

}  // namespace

CAsyncSocket::~CAsyncSocket() {
    CAsyncSocket::Close();
}

BOOL CAsyncSocket::Create(UINT socketPort, int socketType, long events, const char* socketAddress) {
    m_hSocket = socket(AF_INET, socketType, 0);
    if (m_hSocket == INVALID_SOCKET) return FALSE;
    if (SocketWindow::attach(*this, events) && bindTo(socketPort, socketAddress)) return TRUE;
    const int error = WSAGetLastError();
    CAsyncSocket::Close();
    WSASetLastError(error);
    return FALSE;
}

BOOL CAsyncSocket::bindTo(UINT port, const char* address) {
    const Addresses local = resolve(address, port, SOCK_STREAM);
    return local && bind(m_hSocket, local->ai_addr, static_cast<int>(local->ai_addrlen)) == 0;
}

BOOL CAsyncSocket::Connect(const char* hostAddress, UINT hostPort) {
    const Addresses remote = resolve(hostAddress, hostPort, SOCK_STREAM);
    return remote && connect(m_hSocket, remote->ai_addr, static_cast<int>(remote->ai_addrlen)) == 0;
}

BOOL CAsyncSocket::SetSockOpt(int optionName, const void* optionValue, int optionLength,
                              int level) {
    return setsockopt(m_hSocket, level, optionName, static_cast<const char*>(optionValue),
                      optionLength) == 0;
}

void CAsyncSocket::Close() {
    if (m_hSocket == INVALID_SOCKET) return;
    const SOCKET closing = std::exchange(m_hSocket, INVALID_SOCKET);
    SocketWindow::detach(closing);
    closesocket(closing);
}

int CAsyncSocket::Receive(void* buffer, int length, int flags) {
    return recv(m_hSocket, static_cast<char*>(buffer), length, flags);
}

int CAsyncSocket::Send(const void* buffer, int length, int flags) {
    return send(m_hSocket, static_cast<const char*>(buffer), length, flags);
}

void CAsyncSocket::notify(int event, int errorCode) {
    switch (event) {
        case FD_READ:
            return OnReceive(errorCode);
        case FD_WRITE:
            return OnSend(errorCode);
        case FD_OOB:
            return OnOutOfBandData(errorCode);
        case FD_ACCEPT:
            return OnAccept(errorCode);
        case FD_CONNECT:
            return OnConnect(errorCode);
        case FD_CLOSE:
            return OnClose(errorCode);
        default:
            return;
    }
}

BOOL AfxSocketInit(WSADATA* data) {
    WSADATA local;
    return WSAStartup(MAKEWORD(2, 2), data != nullptr ? data : &local) == 0;
}

void AfxSocketTerm() {
    WSACleanup();
}
