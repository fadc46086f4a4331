#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "Machine.h"

namespace simtime {

/// From the moment in which the library's agent begins with a request, so long at most until it
/// leaves on a connection that is there.
constexpr Ms hasteMs = 5;

/// One TCP connection, or the attempt to make one, between the library's socket and the simulated
/// QOR. The bytes of each direction arrive in their order, in pieces that chance cuts, after a time
/// that chance draws.
class Line : public std::enable_shared_from_this<Line> {
public:
    /// What the socket is told of.
    struct Notification {
        enum What { connected, readable, writable, closed } what;
        int error;
    };

    /// @name QOR's end
    /// @{
    /// Called with each piece; empty once the library has closed its end. `known`: so many bytes of
    /// QOR's the library had read `hasteMs` before it sent the piece.
    std::function<void(const std::string&, std::uint64_t known)> onBytes;
    void sendToLibrary(const std::string& bytes);
    /// So many bytes in all.
    std::uint64_t sentToLibrary() const { return sent_; }
    /// Ends it, behind what was sent before: in order, or as a reset, which loses part of that.
    void hangUp(bool isReset);
    /// While it does not read, the library's socket soon takes no more.
    void setReading(bool isReading);
    bool isOpen() const { return isOpen_; }
    /// @}

    /// @name The socket's end
    /// @{
    /// How many bytes it takes; -1: none, and it tells when it does again.
    int sendToQor(const char* bytes, int length);
    /// 0: closed in order; -1: nothing there; -2: reset.
    int receive(char* bytes, int length);
    void close();
    bool takeNotification(Notification& next);
    bool hasNotification() const { return !notifications_.empty(); }
    bool isConnected() const { return isConnected_; }
    /// @}

    /// The outcome of the attempt.
    void finishConnect(int error);

private:
    void notify(Notification::What what, int error);
    /// On its way to QOR.
    struct Piece {
        std::string bytes;
        std::uint64_t known;
    };

    void deliver(const std::string& piece);
    void arrive(const Piece& piece);
    Ms arrivalTime(Ms& last);
    void passOn();
    std::uint64_t known() const;

    std::deque<Notification> notifications_;
    std::string toLibrary_;
    std::deque<Piece> toQor_;  // not read by QOR
    std::size_t toQorBytes_ = 0;
    std::uint64_t sent_ = 0;
    std::uint64_t read_ = 0;
    std::deque<std::pair<Ms, std::uint64_t>> reads_;  // the last: when, and how much in all before
    bool isConnected_ = false;
    bool isOpen_ = true;          // neither end has closed it
    bool isClosedByQor_ = false;  // all of it has arrived
    bool isReset_ = false;
    bool isReading_ = true;
    bool wantsToSend_ = false;
    Ms lastToLibrary_ = 0;
    Ms lastToQor_ = 0;
};

/// Where QOR listens.
class Network {
public:
    enum class Door {
        open,     ///< an attempt succeeds
        refuses,  ///< and fails soon
        silent    ///< and brings nothing
    };

    static Network& present();

    Network();
    ~Network();
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;

    std::shared_ptr<Line> connect();
    void set(Door door) { door_ = door; }
    /// QOR takes the call.
    std::function<void(const std::shared_ptr<Line>&)> onCall;

private:
    Door door_ = Door::refuses;
};

}  // namespace simtime
