#include "Network.h"

#include <algorithm>

namespace simtime {
namespace {

constexpr int refused = 10061;
constexpr std::size_t sendBufferBytes = 8192;
Network* running = nullptr;

Machine& machine() {
    return Machine::present();
}

}  // namespace

Ms Line::arrivalTime(Ms& last) {
    Ms delay = machine().random().below(3);
    if (machine().random().oneIn(50)) delay += machine().random().below(20);
    last = std::max(last, machine().now() + delay);
    return last;
}

void Line::sendToLibrary(const std::string& bytes) {
    sent_ += bytes.size();
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        std::size_t length = bytes.size() - sent;
        if (machine().random().oneIn(6))
            length = 1 + machine().random().below(static_cast<unsigned int>(length));
        machine().at(arrivalTime(lastToLibrary_),
                     [self = shared_from_this(), piece = bytes.substr(sent, length)] {
                         self->deliver(piece);
                     });
        sent += length;
    }
}

void Line::deliver(const std::string& piece) {
    if (!isOpen_) return;
    toLibrary_ += piece;
    notify(Notification::readable, 0);
}

void Line::hangUp(bool isReset) {
    machine().at(arrivalTime(lastToLibrary_), [self = shared_from_this(), isReset] {
        if (!self->isOpen_ || self->isClosedByQor_) return;
        self->isClosedByQor_ = true;
        self->isReset_ = isReset;
        if (isReset) {
            const std::size_t size = self->toLibrary_.size();
            self->toLibrary_.resize(machine().random().below(static_cast<unsigned int>(size) + 1));
        }
        self->notify(Notification::closed, isReset ? 10054 : 0);
    });
}

void Line::setReading(bool isReading) {
    isReading_ = isReading;
    if (isReading) passOn();
}

int Line::sendToQor(const char* bytes, int length) {
    if (toQorBytes_ >= sendBufferBytes) {
        wantsToSend_ = true;
        return -1;
    }
    std::size_t taken = std::min(static_cast<std::size_t>(length), sendBufferBytes - toQorBytes_);
    if (taken > 1 && machine().random().oneIn(40))
        taken = 1 + machine().random().below(static_cast<unsigned int>(taken) - 1);
    if (taken < static_cast<std::size_t>(length)) wantsToSend_ = true;
    machine().at(arrivalTime(lastToQor_),
                 [self = shared_from_this(), piece = Piece{std::string(bytes, taken), known()}] {
                     self->arrive(piece);
                 });
    return static_cast<int>(taken);
}

std::uint64_t Line::known() const {
    const auto recent = std::find_if(reads_.begin(), reads_.end(), [](const auto& read) {
        return read.first + hasteMs >= machine().now();
    });
    return recent == reads_.end() ? read_ : recent->second;
}

void Line::arrive(const Piece& piece) {
    toQor_.push_back(piece);
    toQorBytes_ += piece.bytes.size();
    passOn();
}

void Line::passOn() {
    if (!isReading_) return;
    std::deque<Piece> pieces;
    pieces.swap(toQor_);
    toQorBytes_ = 0;
    // What was sent before the library closed its end arrives all the same.
    for (const Piece& piece : pieces)
        if (onBytes && !isClosedByQor_) onBytes(piece.bytes, piece.known);
    if (wantsToSend_) {
        wantsToSend_ = false;
        notify(Notification::writable, 0);
    }
}

int Line::receive(char* bytes, int length) {
    if (toLibrary_.empty()) return isReset_ ? -2 : isClosedByQor_ ? 0 : -1;
    std::size_t count = std::min(static_cast<std::size_t>(length), toLibrary_.size());
    if (machine().random().oneIn(16))
        count = 1 + machine().random().below(static_cast<unsigned int>(count));
    std::copy_n(toLibrary_.begin(), count, bytes);
    toLibrary_.erase(0, count);
    while (!reads_.empty() && reads_.front().first + hasteMs < machine().now()) reads_.pop_front();
    reads_.emplace_back(machine().now(), read_);
    read_ += count;
    if (!toLibrary_.empty()) notify(Notification::readable, 0);
    return static_cast<int>(count);
}

void Line::close() {
    if (!isOpen_) return;
    isOpen_ = false;
    notifications_.clear();
    machine().at(arrivalTime(lastToQor_), [self = shared_from_this()] {
        const auto toTell = std::move(self->onBytes);
        self->onBytes = nullptr;
        if (toTell) toTell(std::string(), 0);
    });
}

bool Line::takeNotification(Notification& next) {
    if (notifications_.empty()) return false;
    next = notifications_.front();
    // Of an orderly end the system tells when all that came before it was read.
    if (next.what == Notification::closed && !toLibrary_.empty() && !isReset_) {
        next = {Notification::readable, 0};
        return true;
    }
    notifications_.pop_front();
    return true;
}

void Line::notify(Notification::What what, int error) {
    if (!isOpen_) return;
    if (what != Notification::closed && !notifications_.empty() &&
        notifications_.back().what == what)
        return;
    notifications_.push_back({what, error});
}

void Line::finishConnect(int error) {
    if (!isOpen_) return;
    isConnected_ = error == 0;
    notify(Notification::connected, error);
    if (isConnected_) notify(Notification::writable, 0);
}

Network::Network() {
    running = this;
}

Network::~Network() {
    running = nullptr;
}

Network& Network::present() {
    return *running;
}

std::shared_ptr<Line> Network::connect() {
    auto line = std::make_shared<Line>();
    machine().after(1 + machine().random().below(4), [this, line] {
        if (!line->isOpen() || door_ == Door::silent) return;
        line->finishConnect(door_ == Door::open ? 0 : refused);
        if (door_ == Door::open) onCall(line);
    });
    return line;
}

}  // namespace simtime
