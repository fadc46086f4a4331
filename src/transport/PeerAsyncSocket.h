#pragma once

#include <string>

#include "framework/AsyncSocket.h"
#include "protocol/RecordStream.h"
#include "qorcontrol/Lock.h"
#include "transport/UnsentOutput.h"

class ConnInstance;

/// The socket of one connection attempt. Bytes to send may be handed over from any thread; all
/// else happens on the thread that made the object.
class PeerAsyncSocket : public CAsyncSocket {
public:
    /// `connection` must outlive the socket.
    explicit PeerAsyncSocket(ConnInstance& connection);
    ~PeerAsyncSocket() override = default;

    // These three only forward: all that goes over a connection passes here, for debuggers.
    void Close() override;
    int Receive(void* buffer, int length, int flags = 0) override;
    int Send(const void* buffer, int length, int flags = 0) override;

    /// A peer that does not read lets at most this much wait, the longest record and more; beyond
    /// it is a send error.
    static constexpr std::size_t maxPendingBytes = protocol::maxRecordBytes + (64u << 20);

    /// The system is given no more at a time: of a piece of very many megabytes it may want to
    /// keep all, and fail for lack of room.
    static constexpr std::size_t maxSendBytes = 1u << 20;

    /// The first chunk of a notification, and those behind it.
    static constexpr std::size_t chunkBytes = 16384;
    static constexpr std::size_t maxExpectedChunkBytes = 1u << 20;

    /// Takes over bytes to send; on the owner's thread they leave at once, as far as the socket
    /// accepts them, from any other thread with the next "may send" notification.
    void sendBytes(std::string&& bytes);

    /// So many bytes of a record are still to come; 0: nobody knows. What a notification brings of
    /// them beyond its first chunk is taken at once, for each notification has its price.
    void expect(std::size_t bytes) { expectedBytes_ = bytes; }

    bool isOpen() const { return m_hSocket != INVALID_SOCKET; }
    bool isOwnedByCaller() const;

protected:
    void OnReceive(int errorCode) override;
    void OnSend(int errorCode) override;
    void OnConnect(int errorCode) override;
    void OnClose(int errorCode) override;

private:
    bool addPending(std::string&& bytes);
    UnsentOutput takePending();
    void putBack(UnsentOutput&& unsent);
    void receiveChunks();
    bool receiveInto(std::string& chunk);
    void sendAsMuchAsPossible(UnsentOutput& output);

    ConnInstance& connection_;
    UnsentOutput pendingOutput_;
    common::Lock lock_;  // guards pendingOutput_; never held while sending
    unsigned int ownerThread_;
    std::size_t expectedBytes_ = 0;
    std::string expectedChunk_;  // its room, while more of a record is to come
};
