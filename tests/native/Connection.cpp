// The TCP worker's connection on a Link in place of a socket: its notifications come, as those of
// a socket do, on the worker's own thread and only while it pumps.
#include <windows.h>

#include "Link.h"
#include "qorcontrol/Event.h"
#include "transport/ConnInstance.h"
#include "transport/SocketPump.h"

namespace {

constexpr int refused = 10061;
constexpr int reset = 10054;

thread_local PeerAsyncSocket* socketOfThisThread = nullptr;

}  // namespace

/// The library's end of a link.
class PeerAsyncSocket {
public:
    PeerAsyncSocket(ConnInstance& connection, std::shared_ptr<Link> link)
        : connection_(connection), link_(std::move(link)) {
        socketOfThisThread = this;
    }
    ~PeerAsyncSocket() {
        socketOfThisThread = nullptr;
        if (link_) link_->toQor.close();
    }
    PeerAsyncSocket(const PeerAsyncSocket&) = delete;
    PeerAsyncSocket& operator=(const PeerAsyncSocket&) = delete;

    bool isOpen() const { return link_ != nullptr; }

    void send(const std::string& bytes) {
        if (link_) link_->toQor.append(bytes);
    }

    void notify() {
        if (!told_) {
            told_ = true;
            return connection_.onConnect(link_ ? 0 : refused);
        }
        if (!link_) return;
        const bool closed = link_->toLibrary.isClosed();
        const std::string bytes = link_->toLibrary.takeAll();
        if (!bytes.empty()) connection_.onData(bytes);
        if (!closed) return;
        link_ = nullptr;
        connection_.onError(reset);
    }

private:
    ConnInstance& connection_;
    std::shared_ptr<Link> link_;
    bool told_ = false;  // how the attempt ended
};

ConnInstance::ConnInstance() = default;

ConnInstance::~ConnInstance() = default;

void ConnInstance::onConnect(int) {}

void ConnInstance::expect(std::size_t) {}

void ConnInstance::onData(const std::string&) {}

void ConnInstance::onError(int errorCode) {
    lastError_ = errorCode;
}

void ConnInstance::onSendError(int errorCode) {
    lastError_ = errorCode;
}

bool ConnInstance::connect(const std::string& host, unsigned int) {
    peer_.reset();  // it must be gone before the next one is this thread's
    peer_ = std::make_unique<PeerAsyncSocket>(*this, links::connect(host));
    return true;
}

void ConnInstance::send(std::string bytes) {
    if (peer_) peer_->send(bytes);
}

void ConnInstance::setNoDelay(bool) {}  // nothing here waits

bool ConnInstance::isOpen() const {
    return peer_ && peer_->isOpen();
}

void ConnInstance::dropPeer() {
    peer_.reset();
}

void pumpSocketNotifications(const common::Event* wakeUp) {
    if (wakeUp != nullptr && wakeUp->exists())
        WaitForSingleObject(wakeUp->handle(), 1);
    else
        Sleep(1);
    if (socketOfThisThread != nullptr) socketOfThisThread->notify();
}
