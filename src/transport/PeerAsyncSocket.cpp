#include "transport/PeerAsyncSocket.h"

#include <new>
#include <utility>

#include "common/Thread.h"
#include "transport/ConnInstance.h"

PeerAsyncSocket::PeerAsyncSocket(ConnInstance& connection)
    : connection_(connection), ownerThread_(common::currentThreadId()) {
    // There is no socket yet, so these requests fail and the system's defaults stay in force.
    // Installed stations have always run with those defaults; do not move this behind Create.
    const int sendBufferBytes = 16384;
    const int receiveBufferBytes = 32768;
    const int on = 1;
    SetSockOpt(SO_SNDBUF, &sendBufferBytes, sizeof sendBufferBytes);
    SetSockOpt(SO_RCVBUF, &receiveBufferBytes, sizeof receiveBufferBytes);
    SetSockOpt(1, &on, sizeof on);
}

void PeerAsyncSocket::Close() {
    CAsyncSocket::Close();
}

int PeerAsyncSocket::Receive(void* buffer, int length, int flags) {
    return CAsyncSocket::Receive(buffer, length, flags);
}

int PeerAsyncSocket::Send(const void* buffer, int length, int flags) {
    return CAsyncSocket::Send(buffer, length, flags);
}

bool PeerAsyncSocket::isOwnedByCaller() const {
    return common::currentThreadId() == ownerThread_;
}

void PeerAsyncSocket::sendBytes(const std::string& bytes) {
    if (!addPending(bytes)) return connection_.onSendError(WSAENOBUFS);
    if (isOwnedByCaller() && isOpen()) OnSend(0);
}

bool PeerAsyncSocket::addPending(const std::string& bytes) {
    const common::LockGuard guard(lock_);
    if (pendingOutput_.size() + bytes.size() > maxPendingBytes) return false;
    pendingOutput_ += bytes;
    return true;
}

void PeerAsyncSocket::OnSend(int errorCode) {
    std::string output = takePending();
    output.erase(0, sendAsMuchAsPossible(output));
    if (!output.empty()) putBack(std::move(output));
    CAsyncSocket::OnSend(errorCode);
}

std::string PeerAsyncSocket::takePending() {
    std::string output;
    const common::LockGuard guard(lock_);
    output.swap(pendingOutput_);
    return output;
}

void PeerAsyncSocket::putBack(std::string&& unsent) {
    const common::LockGuard guard(lock_);
    unsent += pendingOutput_;
    pendingOutput_.swap(unsent);
}

std::size_t PeerAsyncSocket::sendAsMuchAsPossible(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const int accepted = Send(bytes.data() + sent, static_cast<int>(bytes.size() - sent));
        if (accepted == SOCKET_ERROR) {
            const int error = GetLastError();
            if (error != WSAEWOULDBLOCK) connection_.onSendError(error);
            break;
        }
        sent += static_cast<std::size_t>(accepted);
    }
    return sent;
}

void PeerAsyncSocket::OnReceive(int errorCode) {
    try {
        receiveChunk();
    } catch (const std::bad_alloc&) {
        // It must not pass through the system's code that called us. A chunk is lost, and with it
        // the place in the stream: a broken connection.
        connection_.onError(WSAENOBUFS);
    }
    CAsyncSocket::OnReceive(errorCode);
}

void PeerAsyncSocket::receiveChunk() {
    char chunk[16384];
    const int received = Receive(chunk, sizeof chunk);
    if (received > 0) {
        connection_.onData(std::string(chunk, static_cast<std::size_t>(received)));
    } else {
        // A close by the peer (nothing received) arrives here too, with whatever code is left.
        const int error = GetLastError();
        if (received == 0 || error != WSAEWOULDBLOCK) connection_.onError(error);
    }
}

void PeerAsyncSocket::OnConnect(int errorCode) {
    connection_.onConnect(errorCode);
    CAsyncSocket::OnConnect(errorCode);
}

void PeerAsyncSocket::OnClose(int errorCode) {
    CAsyncSocket::OnClose(errorCode);
    Close();
}
