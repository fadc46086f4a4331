#include "transport/ConnInstance.h"

#include <utility>

#include "transport/PeerAsyncSocket.h"

ConnInstance::ConnInstance() = default;

ConnInstance::~ConnInstance() = default;

void ConnInstance::onConnect(int errorCode) {
    if (errorCode != 0) lastError_ = errorCode;
}

void ConnInstance::onData(const std::string&) {}

void ConnInstance::onError(int errorCode) {
    lastError_ = errorCode;
}

void ConnInstance::onSendError(int errorCode) {
    lastError_ = errorCode;
}

bool ConnInstance::connect(const std::string& host, unsigned int port) {
    if (peer_ && !peer_->isOwnedByCaller()) return false;
    peer_ = std::make_unique<PeerAsyncSocket>(*this);
    if (!peer_->Create()) {
        lastError_ = CAsyncSocket::GetLastError();
        return false;
    }
    return startConnecting(host, port);
}

bool ConnInstance::startConnecting(const std::string& host, unsigned int port) {
    if (peer_->Connect(host.c_str(), port)) return true;
    lastError_ = CAsyncSocket::GetLastError();
    if (lastError_ != WSAEWOULDBLOCK && lastError_ != WSAEISCONN) return false;
    lastError_ = 0;
    return true;
}

void ConnInstance::send(std::string bytes) {
    if (peer_) peer_->sendBytes(std::move(bytes));
}

void ConnInstance::setNoDelay(bool isWanted) {
    const BOOL value = isWanted ? TRUE : FALSE;
    // One that does not take it is slower, which is no reason to fail anything.
    if (isOpen()) peer_->SetSockOpt(TCP_NODELAY, &value, sizeof value, IPPROTO_TCP);
}

void ConnInstance::expect(std::size_t bytes) {
    if (peer_) peer_->expect(bytes);
}

bool ConnInstance::isOpen() const {
    return peer_ && peer_->isOpen();
}

void ConnInstance::dropPeer() {
    peer_.reset();
}
