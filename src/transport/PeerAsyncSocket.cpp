#include "transport/PeerAsyncSocket.h"

#include <algorithm>
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

void PeerAsyncSocket::sendBytes(std::string&& bytes) {
    if (!addPending(std::move(bytes))) return connection_.onSendError(WSAENOBUFS);
    if (isOwnedByCaller() && isOpen()) OnSend(0);
}

bool PeerAsyncSocket::addPending(std::string&& bytes) {
    const common::LockGuard guard(lock_);
    if (pendingOutput_.size() + bytes.size() > maxPendingBytes) return false;
    pendingOutput_.append(std::move(bytes));
    return true;
}

void PeerAsyncSocket::OnSend(int errorCode) {
    UnsentOutput output = takePending();
    sendAsMuchAsPossible(output);
    if (!output.isEmpty()) putBack(std::move(output));
    CAsyncSocket::OnSend(errorCode);
}

UnsentOutput PeerAsyncSocket::takePending() {
    UnsentOutput output;
    const common::LockGuard guard(lock_);
    std::swap(output, pendingOutput_);
    return output;
}

void PeerAsyncSocket::putBack(UnsentOutput&& unsent) {
    const common::LockGuard guard(lock_);
    pendingOutput_.putBack(std::move(unsent));
}

void PeerAsyncSocket::sendAsMuchAsPossible(UnsentOutput& output) {
    while (!output.isEmpty()) {
        const std::string_view next = output.front().substr(0, maxSendBytes);
        const int accepted = Send(next.data(), static_cast<int>(next.size()));
        if (accepted == SOCKET_ERROR) {
            const int error = GetLastError();
            if (error != WSAEWOULDBLOCK) connection_.onSendError(error);
            return;
        }
        output.dropFront(static_cast<std::size_t>(accepted));
    }
}

void PeerAsyncSocket::OnReceive(int errorCode) {
    try {
        receiveChunks();
    } catch (const std::bad_alloc&) {
        // It must not pass through the system's code that called us. A chunk is lost, and with it
        // the place in the stream: a broken connection, of which nothing more may be taken.
        connection_.onError(WSAENOBUFS);
        Close();
    }
    CAsyncSocket::OnReceive(errorCode);
}

void PeerAsyncSocket::receiveChunks() {
    std::string chunk(chunkBytes, '\0');
    bool isMoreThere = receiveInto(chunk);
    std::size_t roomBytes = maxExpectedChunkBytes / 4;
    while (isMoreThere && expectedBytes_ > 0) {
        expectedChunk_.resize(std::min(expectedBytes_, roomBytes));
        isMoreThere = receiveInto(expectedChunk_);
        roomBytes = std::min(2 * roomBytes, maxExpectedChunkBytes);
    }
    if (expectedBytes_ == 0) std::string().swap(expectedChunk_);
}

/// True if it was filled, which leaves it open whether there is more.
bool PeerAsyncSocket::receiveInto(std::string& chunk) {
    const int received = Receive(chunk.data(), static_cast<int>(chunk.size()));
    if (received <= 0) {
        // A close by the peer (nothing received) arrives here too, with whatever code is left.
        const int error = GetLastError();
        if (received == 0 || error != WSAEWOULDBLOCK) connection_.onError(error);
        return false;
    }
    const bool isFilled = static_cast<std::size_t>(received) == chunk.size();
    chunk.resize(static_cast<std::size_t>(received));
    expectedBytes_ -= std::min(expectedBytes_, chunk.size());
    connection_.onData(chunk);
    return isFilled;
}

void PeerAsyncSocket::OnConnect(int errorCode) {
    connection_.onConnect(errorCode);
    CAsyncSocket::OnConnect(errorCode);
}

void PeerAsyncSocket::OnClose(int errorCode) {
    CAsyncSocket::OnClose(errorCode);
    Close();
}
