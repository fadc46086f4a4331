// The framework's sockets, and the pump that hands out what they are told, on the simulated
// network: each thread of the library has one at most.
#include <map>

#include "framework/AsyncSocket.h"
#include "Network.h"
#include "qorcontrol/Event.h"
#include "transport/SocketPump.h"

using simtime::Line;
using simtime::Machine;

namespace {

constexpr int maxNotificationsPerPump = 64;

std::map<unsigned int, CAsyncSocket*>& sockets() {
    static std::map<unsigned int, CAsyncSocket*> all;
    return all;
}

}  // namespace

CAsyncSocket::CAsyncSocket() = default;

CAsyncSocket::~CAsyncSocket() {
    CAsyncSocket::Close();
}

BOOL CAsyncSocket::Create(UINT, int) {
    static SOCKET last = 0;
    m_hSocket = ++last;
    sockets()[GetCurrentThreadId()] = this;
    return TRUE;
}

BOOL CAsyncSocket::Connect(const char*, UINT) {
    line_ = simtime::Network::present().connect();
    return fail(WSAEWOULDBLOCK) == 0;
}

BOOL CAsyncSocket::SetSockOpt(int, const void*, int, int) {
    return fail(WSAENOTSOCK) == 0;
}

int CAsyncSocket::GetLastError() {
    return static_cast<int>(::GetLastError());
}

int CAsyncSocket::fail(int error) const {
    SetLastError(static_cast<DWORD>(error));
    return SOCKET_ERROR;
}

void CAsyncSocket::Close() {
    if (m_hSocket == INVALID_SOCKET) return;
    m_hSocket = INVALID_SOCKET;
    const auto own = sockets().find(GetCurrentThreadId());
    if (own != sockets().end() && own->second == this) sockets().erase(own);
    if (line_) line_->close();
    line_.reset();
}

int CAsyncSocket::Receive(void* buffer, int length, int) {
    if (!line_) return fail(WSAENOTSOCK);
    const int received = line_->receive(static_cast<char*>(buffer), length);
    if (received >= 0) return received;
    return fail(received == -1 ? WSAEWOULDBLOCK : WSAECONNRESET);
}

int CAsyncSocket::Send(const void* buffer, int length, int) {
    if (!line_ || !line_->isConnected()) return fail(WSAENOTCONN);
    const int sent = line_->sendToQor(static_cast<const char*>(buffer), length);
    return sent >= 0 ? sent : fail(WSAEWOULDBLOCK);
}

CAsyncSocket* CAsyncSocket::ofThisThread() {
    const auto own = sockets().find(GetCurrentThreadId());
    return own != sockets().end() ? own->second : nullptr;
}

bool CAsyncSocket::hasNotification() const {
    return line_ && line_->hasNotification();
}

bool CAsyncSocket::dispatchOne() {
    Line::Notification next{};
    if (!line_ || !line_->takeNotification(next)) return false;
    switch (next.what) {
        case Line::Notification::connected:
            OnConnect(next.error);
            break;
        case Line::Notification::readable:
            OnReceive(next.error);
            break;
        case Line::Notification::writable:
            OnSend(next.error);
            break;
        case Line::Notification::closed:
            OnClose(next.error);
            break;
    }
    return true;
}

// One wait for both: an event has its own address to wait for, so the socket's has to be looked at
// behind a wait of a millisecond at most.
void pumpSocketNotifications(const common::Event* wakeUp) {
    const CAsyncSocket* const waiting = CAsyncSocket::ofThisThread();
    if (waiting == nullptr || !waiting->hasNotification()) {
        const DWORD ended = wakeUp != nullptr && wakeUp->exists()
                                ? WaitForSingleObject(wakeUp->handle(), 1)
                                : (Sleep(1), WAIT_TIMEOUT);
        if (ended == WAIT_OBJECT_0) return;
    }
    for (int taken = 0; taken < maxNotificationsPerPump; ++taken) {
        CAsyncSocket* const socket = CAsyncSocket::ofThisThread();
        if (socket == nullptr || !socket->dispatchOne()) return;
    }
}
