#pragma once

#include <string>

#include "common/TimeLimits.h"
#include "transport/ConnectionDataAccepter.h"
#include "transport/ConnInstance.h"

/// The connection to QOR's listening socket. It is made, used and deleted on one thread.
class ClientConnInstance : public ConnInstance {
public:
    /// `accepter` must outlive the connection.
    ClientConnInstance(std::string serverAddress, unsigned int serverPort,
                       ConnectionDataAccepter& accepter);
    ~ClientConnInstance() override;

    /// Returns true if the connection stands, otherwise tries to make it, again and again, for
    /// about `timeoutMs`. A refused attempt lasts as long as one without an answer. Without a limit
    /// (the worker always sets one, so that commands do not wait for a QOR that is not there) a
    /// single attempt takes at most 3 s.
    bool ensureConnected(unsigned int timeoutMs);

    bool isConnected() const { return isOpen() && connected_; }

    /// Of this connection and those after it; costs nothing unless it has changed.
    void keepNoDelay(bool isWanted);

    /// Gives the connection up: the next `ensureConnected` makes a new one.
    void abandon();

    void onConnect(int errorCode) override;
    void onData(const std::string& bytes) override;
    void onError(int errorCode) override;
    void onSendError(int errorCode) override;

private:
    bool isEnding() const { return closing_ || accepter_.isStopping(); }
    bool startAttempt();
    void awaitConnected(unsigned int attemptMs);

    const std::string serverAddress_;
    const unsigned int serverPort_;
    bool connected_ = false;
    bool noDelay_ = false;
    bool closing_ = false;  // in the destructor: it forbids its accepter an attempt in onClosed
    ConnectionDataAccepter& accepter_;
};
