#include "transport/ClientConnInstance.h"

#include <utility>

#include "common/Deadline.h"
#include "transport/SocketPump.h"

namespace {

constexpr unsigned int unlimitedAttemptMs = 3000;

}  // namespace

ClientConnInstance::ClientConnInstance(std::string serverAddress, unsigned int serverPort,
                                       ConnectionDataAccepter& accepter)
    : serverAddress_(std::move(serverAddress)), serverPort_(serverPort), accepter_(accepter) {}

ClientConnInstance::~ClientConnInstance() {
    closing_ = true;
    accepter_.onClosed(*this);
    dropPeer();
}

bool ClientConnInstance::ensureConnected(unsigned int timeoutMs) {
    if (isConnected() && !isEnding()) return true;
    const unsigned int attemptMs = timeoutMs == common::noLimitMs ? unlimitedAttemptMs : timeoutMs;
    const auto deadline = common::Deadline::after(common::now(), timeoutMs);
    for (;;) {
        if (isEnding()) return false;
        if (startAttempt()) {
            awaitConnected(attemptMs);
            if (connected_ && !accepter_.isStopping()) return true;
        } else {
            common::sleepMs(1);
        }
        if (deadline.hasPassed()) return false;
    }
}

bool ClientConnInstance::startAttempt() {
    // What an earlier socket reported says nothing about the new one.
    connected_ = false;
    return connect(serverAddress_, serverPort_);
}

void ClientConnInstance::awaitConnected(unsigned int attemptMs) {
    const auto deadline = common::Deadline::at(common::now() + attemptMs);
    while (!connected_ && !isEnding() && !deadline.hasPassed()) pumpSocketNotifications(nullptr);
}

void ClientConnInstance::keepNoDelay(bool isWanted) {
    if (isWanted == noDelay_) return;
    noDelay_ = isWanted;
    if (isConnected()) setNoDelay(noDelay_);
}

void ClientConnInstance::abandon() {
    connected_ = false;
    dropPeer();
}

void ClientConnInstance::onConnect(int errorCode) {
    ConnInstance::onConnect(errorCode);
    connected_ = errorCode == 0;
    if (!connected_) return;
    if (noDelay_) setNoDelay(true);
    accepter_.onConnected(*this);
}

void ClientConnInstance::onData(const std::string& bytes) {
    ConnInstance::onData(bytes);
    accepter_.onData(*this, bytes);
}

void ClientConnInstance::onError(int errorCode) {
    ConnInstance::onError(errorCode);
    connected_ = false;
}

void ClientConnInstance::onSendError(int errorCode) {
    ConnInstance::onSendError(errorCode);
    connected_ = false;
}
