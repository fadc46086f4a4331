#include "serve/http/Connection.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "Spelling.h"

namespace qorctl::serve::http {
namespace {

constexpr std::chrono::seconds headTime(10);  // from the first byte of a request to its body
constexpr std::chrono::seconds bodyTime(30);
constexpr std::chrono::seconds sendTime(30);
/// Nothing wakes a thread that waits for a socket, so it wakes by itself.
constexpr std::chrono::milliseconds longestSleep(100);
constexpr std::size_t portion = 16 * 1024;
const char* const headEnd = "\r\n\r\n";

}  // namespace

Connection::Connection(socket_t socket, const std::atomic<bool>& isEnding)
    : socket_(socket), isEnding_(isEnding) {
    u_long isNonBlocking = 1;
    ioctlsocket(socket_, static_cast<long>(FIONBIO), &isNonBlocking);
    const int isOn = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&isOn),
               sizeof isOn);
}

bool Connection::isReady(bool toRead, Clock::duration within) const {
    const Clock::time_point end = Clock::now() + within;
    while (true) {
        const auto left =
            std::clamp<Clock::duration>(end - Clock::now(), Clock::duration::zero(), longestSleep);
        timeval time = {};
        time.tv_usec =
            static_cast<long>(std::chrono::duration_cast<std::chrono::microseconds>(left).count());
        fd_set sockets;
        FD_ZERO(&sockets);
        sockets.fd_array[sockets.fd_count++] = socket_;
        const int count =
            select(0, toRead ? &sockets : nullptr, toRead ? nullptr : &sockets, nullptr, &time);
        if (count != 0) return count == 1;
        if (isEnding_ || Clock::now() >= end) return false;
    }
}

bool Connection::receive(Clock::time_point deadline) {
    if (!isReady(true, deadline - Clock::now())) return false;
    if (position_ > 0) {
        received_.erase(0, position_);
        position_ = 0;
    }
    const std::size_t before = received_.size();
    received_.resize(before + portion);
    const int count = recv(socket_, &received_[before], static_cast<int>(portion), 0);
    received_.resize(before + static_cast<std::size_t>(std::max(count, 0)));
    return count > 0;
}

Connection::Head Connection::readHead() {
    isHeadWritten_ = false;
    Clock::time_point deadline = Clock::now() + std::chrono::seconds(idleS);
    if (position_ == received_.size() && !receive(deadline)) return Head::none;
    deadline = Clock::now() + headTime;
    std::size_t end = 0;
    while ((end = received_.find(headEnd, position_)) == std::string::npos) {
        if (received_.size() - position_ > mostHeadBytes) return Head::tooLong;
        if (!receive(deadline)) return Head::none;
    }
    if (end - position_ > mostHeadBytes) return Head::tooLong;
    if (hasOddLines(end)) return Head::broken;
    leaveOutRanges();
    mayRead_ = mostHeadBytes + mostBodyBytes;
    deadline_ = Clock::now() + bodyTime;
    return Head::whole;
}

bool Connection::hasOddLines(std::size_t end) const {
    // The library would see other lines than we do.
    for (std::size_t i = position_; i < end; ++i)
        if (received_[i] == '\0' ||
            (received_[i] == '\n' && (i == position_ || received_[i - 1] != '\r')))
            return true;
    return false;
}

void Connection::leaveOutRanges() {
    // No part of anything is served, and the library's pattern for them goes as deep as they are
    // long.
    std::size_t line = received_.find("\r\n", position_) + 2;
    while (received_.compare(line, 2, "\r\n") != 0) {
        const std::size_t next = received_.find("\r\n", line) + 2;
        const std::string name =
            received_.substr(line, received_.find_first_of(":\r", line) - line);
        if (isSameName(name.substr(0, name.find_last_not_of(" \t") + 1), "Range"))
            received_.erase(line, next - line);
        else
            line = next;
    }
}

bool Connection::is_readable() const {
    return position_ < received_.size() || isReady(true, deadline_ - Clock::now());
}

bool Connection::hasPeerLeft() const {
    char next = 0;
    return isReady(true, {}) && recv(socket_, &next, 1, MSG_PEEK) <= 0;
}

bool Connection::is_writable() const {
    return !hasPeerLeft() && isReady(false, sendTime);
}

ssize_t Connection::read(char* data, size_t size) {
    if (mayRead_ == 0 || (position_ == received_.size() && !receive(deadline_))) return -1;
    const std::size_t count = std::min({size, received_.size() - position_, mayRead_});
    std::memcpy(data, received_.data() + position_, count);
    position_ += count;
    mayRead_ -= count;
    return static_cast<ssize_t>(count);
}

ssize_t Connection::write(const char* data, size_t size) {
    // "Go on": the client sends its body only then.
    if (std::string_view(data, size).rfind("HTTP/1.1 100 ", 0) == 0)
        return send(data, size) ? static_cast<ssize_t>(size) : -1;
    if (!isHeadWritten_) {
        // Sent with what follows: two small packets take much longer than one.
        isHeadWritten_ = true;
        held_.assign(data, size);
        return static_cast<ssize_t>(size);
    }
    if (held_.empty()) return send(data, size) ? static_cast<ssize_t>(size) : -1;
    held_.append(data, size);
    return flush() ? static_cast<ssize_t>(size) : -1;
}

bool Connection::flush() {
    const bool isSent = send(held_.data(), held_.size());
    held_.clear();
    return isSent;
}

bool Connection::send(const char* data, std::size_t size) {
    const Clock::time_point deadline = Clock::now() + sendTime;
    while (size > 0) {
        const int count =
            ::send(socket_, data, static_cast<int>(std::min<std::size_t>(size, 1 << 20)), 0);
        if (count < 0 && WSAGetLastError() != WSAEWOULDBLOCK) return false;
        if (count < 0 && !isReady(false, deadline - Clock::now())) return false;
        data += std::max(count, 0);
        size -= static_cast<std::size_t>(std::max(count, 0));
    }
    return true;
}

void Connection::turnAway(int status, const char* reason) {
    const std::string body = std::string(R"({"error":")") + reason + "\"}";
    const std::string answer = "HTTP/1.1 " + std::to_string(status) + " " +
                               httplib::detail::status_message(status) +
                               "\r\nConnection: close\r\nContent-Type: application/json\r\n"
                               "Content-Length: " +
                               std::to_string(body.size()) + "\r\n\r\n" + body;
    ::send(socket_, answer.data(), static_cast<int>(answer.size()), 0);
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
    httplib::detail::get_remote_ip_and_port(socket_, ip, port);
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
    httplib::detail::get_local_ip_and_port(socket_, ip, port);
}

}  // namespace qorctl::serve::http
