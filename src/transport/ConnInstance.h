#pragma once

#include <cstddef>
#include <memory>
#include <string>

class PeerAsyncSocket;

/// One TCP connection: makes a fresh socket for every attempt and hears of its events.
class ConnInstance {
public:
    ConnInstance();
    virtual ~ConnInstance() = 0;
    ConnInstance(const ConnInstance&) = delete;
    ConnInstance& operator=(const ConnInstance&) = delete;

    virtual void onConnect(int errorCode);
    virtual void onData(const std::string& bytes);
    virtual void onError(int errorCode);
    virtual void onSendError(int errorCode);

    /// Starts a new attempt, on the thread that made the previous one; the old socket is closed.
    /// True if the attempt is under way: `onConnect` tells how it ended.
    bool connect(const std::string& host, unsigned int port);
    void send(std::string bytes);
    bool isOpen() const;
    /// Whether what is sent leaves at once though the other side has not yet confirmed what left
    /// before it. Of the present socket, if there is one: a new one begins without.
    void setNoDelay(bool isWanted);
    /// See PeerAsyncSocket; of the present socket, if there is one.
    void expect(std::size_t bytes);

    /// The socket's last error code, for tests and debuggers: a send tells of success alone.
    int lastError() const { return lastError_; }

protected:
    /// Closes and deletes the socket.
    void dropPeer();

private:
    bool startConnecting(const std::string& host, unsigned int port);

    std::unique_ptr<PeerAsyncSocket> peer_;
    int lastError_ = 0;
};
