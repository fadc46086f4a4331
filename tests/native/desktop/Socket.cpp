#include "Socket.h"

#include <algorithm>
#include <utility>

namespace desktop {
namespace {

/// So little that a peer which does not read is felt at once.
constexpr std::size_t sendRoom = 4096;

}  // namespace

void Socket::select(HWND window, UINT message, long events) {
    const std::lock_guard<std::mutex> guard(mutex_);
    window_ = events != 0 ? window : nullptr;
    message_ = message;
    events_ = events;
}

void Socket::connect(const std::string& name) {
    const auto link = links::connect(name);
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        link_ = link;
        isConnecting_ = link != nullptr;
        if (link == nullptr) return tell(FD_CONNECT, WSAECONNREFUSED);
    }
    const auto look = [self = weak_from_this()] {
        if (const auto socket = self.lock()) socket->tellNews();
    };
    link->toQor.observe(look);
    link->toLibrary.observe(look);
    tellNews();  // of what has happened before they were observed
}

void Socket::close() {
    std::shared_ptr<Link> closing;
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        window_ = nullptr;
        closing = std::exchange(link_, nullptr);
    }
    if (closing != nullptr) closing->toQor.close();
}

std::shared_ptr<Link> Socket::link() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return isConnected_ ? link_ : nullptr;
}

int Socket::receive(char* buffer, int length) {
    const auto from = link();
    if (from == nullptr) return -WSAENOTCONN;
    const std::string bytes = from->toLibrary.take(static_cast<std::size_t>(length));
    std::copy(bytes.begin(), bytes.end(), buffer);
    const Link::Stream::State left = from->toLibrary.state();
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        readTold_ = false;
    }
    tellNews();
    if (!bytes.empty()) return static_cast<int>(bytes.size());
    if (left.isBroken) return -WSAECONNRESET;
    return left.isClosed && left.bytes == 0 ? 0 : -WSAEWOULDBLOCK;
}

int Socket::send(const char* buffer, int length) {
    const auto to = link();
    if (to == nullptr) return -WSAENOTCONN;
    if (to->toLibrary.state().isBroken) return -WSAECONNRESET;
    const std::size_t waiting = to->toQor.state().bytes;
    const std::size_t room = sendRoom - std::min(waiting, sendRoom);
    const std::size_t count = std::min(room, static_cast<std::size_t>(length));
    if (count != 0) {
        to->toQor.append(std::string(buffer, count));
        return static_cast<int>(count);
    }
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        wantsToSend_ = true;
    }
    tellNews();  // the room may have come meanwhile
    return -WSAEWOULDBLOCK;
}

// By whichever thread has changed something. All tells of a socket are in order: it is locked.
void Socket::tellNews() {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (link_ == nullptr) return;
    const Link::Stream::State in = link_->toLibrary.state();
    if (isConnecting_ && (in.isAccepted || in.isClosed)) {
        isConnecting_ = false;
        isConnected_ = wantsToSend_ = in.isAccepted;
        tell(FD_CONNECT, in.isAccepted ? 0 : WSAECONNREFUSED);
    }
    if (!isConnected_) return;
    if (wantsToSend_ && link_->toQor.state().bytes < sendRoom) {
        wantsToSend_ = false;
        tell(FD_WRITE);
    }
    if (in.bytes != 0 && !readTold_) {
        readTold_ = true;
        tell(FD_READ);
    }
    if (in.isClosed && in.bytes == 0 && !std::exchange(closeTold_, true))
        tell(FD_CLOSE, in.isBroken ? WSAECONNRESET : 0);
}

void Socket::tell(long event, int error) {
    if (window_ != nullptr && (events_ & event) != 0)
        PostMessageA(window_, message_, reinterpret_cast<WPARAM>(this), event | error << 16);
}

}  // namespace desktop
