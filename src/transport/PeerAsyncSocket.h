#pragma once

#include <string>

#include "common/Lock.h"
#include "framework/AsyncSocket.h"

class ConnInstance;

/// The socket of one connection attempt. Bytes to send may be handed over from any thread; all
/// else happens on the thread that made the object.
class PeerAsyncSocket : public CAsyncSocket {
public:
    /// `connection` must outlive the socket.
    explicit PeerAsyncSocket(ConnInstance& connection);
    ~PeerAsyncSocket() override = default;

    void Close() override;
    int Receive(void* buffer, int length, int flags = 0) override;
    int Send(const void* buffer, int length, int flags = 0) override;

    /// A peer that does not read lets at most this much wait; more is a send error.
    static constexpr std::size_t maxPendingBytes = 64u << 20;

    /// Takes over bytes to send; on the owner's thread they leave at once, as far as the socket
    /// accepts them, from any other thread with the next "may send" notification.
    void sendBytes(const std::string& bytes);

    bool isOpen() const { return m_hSocket != INVALID_SOCKET; }
    bool isOwnedByCaller() const;

protected:
    void OnReceive(int errorCode) override;
    void OnSend(int errorCode) override;
    void OnConnect(int errorCode) override;
    void OnClose(int errorCode) override;

private:
    bool addPending(const std::string& bytes);
    std::string takePending();
    void putBack(std::string&& unsent);
    void receiveChunk();
    std::size_t sendAsMuchAsPossible(const std::string& bytes);

    ConnInstance& connection_;
    std::string pendingOutput_;
    common::Lock lock_;  // guards pendingOutput_; never held while sending
    unsigned int ownerThread_;
};
