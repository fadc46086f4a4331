#pragma once

#include <atomic>
#include <chrono>
#include <string>

#include "serve/http/Library.h"

namespace qorctl::serve::http {

/// One connection of a client, with limits on what it sends and on the time it takes for that.
class Connection final : public httplib::Stream {
public:
    enum class Head { whole, none, tooLong, broken };

    static constexpr std::size_t mostHeadBytes = 32 * 1024;
    static constexpr std::size_t mostBodyBytes = 8 * 1024 * 1024;

    /// So long, in seconds, a client may wait between two requests.
    static constexpr int idleS = 15;

    /// Does not own the socket.
    /// @param isEnding  once set, nothing more is waited for; outlives this.
    Connection(socket_t socket, const std::atomic<bool>& isEnding);

    /// Waits for the next request's head, some time for its beginning and some more for the rest.
    Head readHead();
    /// Whether the client has closed its end.
    bool hasPeerLeft() const;
    /// Sends what is still held back of a response.
    bool flush();
    /// Without having been asked for anything; as far as it goes at once.
    void turnAway(int status, const char* reason);

    // As the library wants it.
    bool is_readable() const override;
    /// Also false once the client has closed its end.
    bool is_writable() const override;
    ssize_t read(char* data, size_t size) override;
    ssize_t write(const char* data, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

private:
    using Clock = std::chrono::steady_clock;

    bool isReady(bool toRead, Clock::duration within) const;
    /// Adds what comes to the buffer; false: nothing in time, or the end.
    bool receive(Clock::time_point deadline);
    bool send(const char* data, std::size_t size);
    bool hasOddLines(std::size_t end) const;
    void leaveOutRanges();

    const socket_t socket_;
    const std::atomic<bool>& isEnding_;
    std::string received_;
    std::size_t position_ = 0;    // of what of it was read
    std::size_t mayRead_ = 0;     // so much more of the present request
    Clock::time_point deadline_;  // of its end
    std::string held_;            // the head of the response, until its body comes
    bool isHeadWritten_ = false;
};

}  // namespace qorctl::serve::http
