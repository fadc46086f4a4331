#include "serve/http/Listener.h"

#include <exception>
#include <utility>

#include "serve/http/Workers.h"

namespace qorctl::serve::http {
namespace {

/// Of the request that the thread serves.
thread_local bool endsConnection = false;

thread_local std::size_t ownReserved = 0;
thread_local const Connection* ownConnection = nullptr;

constexpr unsigned int lookMs = 10;
/// The bodies of all requests that come at a time; the library takes up to three times that.
constexpr std::size_t mostReserved = 32 * 1024 * 1024;

}  // namespace

void Listener::endConnection(httplib::Response& response) {
    response.set_header("Connection", "close");
    endsConnection = true;
}

bool Listener::hasPeerLeft() {
    return ownConnection != nullptr && ownConnection->hasPeerLeft();
}

bool Listener::reserve(std::size_t bytes) {
    if (reserved_.fetch_add(bytes) + bytes > mostReserved) {
        reserved_ -= bytes;
        return false;
    }
    ownReserved += bytes;
    return true;
}

bool Listener::process_and_close_socket(socket_t socket) {
    try {
        if (add(socket)) {
            Connection connection(socket, isEnding_);
            if (Workers::isTurningAway())
                connection.turnAway(503, "there are too many connections");
            else
                serve(connection);
        }
    } catch (const std::exception&) {
        // Too little memory for this one; it ends.
    }
    remove(socket);
    httplib::detail::shutdown_socket(socket);
    httplib::detail::close_socket(socket);
    return true;
}

void Listener::serve(Connection& connection) {
    bool goesOn = true;
    while (goesOn && !isEnding_) {
        const Connection::Head head = connection.readHead();
        if (head == Connection::Head::tooLong)
            connection.turnAway(431, "the head of the request is longer than 32 KiB");
        if (head == Connection::Head::broken)
            connection.turnAway(400,
                                "the head of the request has lines that do not end with CR LF");
        if (head != Connection::Head::whole) return;
        endsConnection = false;
        ownConnection = &connection;
        bool isClosed = false;
        ++answering_;
        try {
            goesOn = process_request(connection, false, isClosed, nullptr);
            goesOn = connection.flush() && goesOn && !isClosed && !endsConnection;
        } catch (...) {
            noteAnswered();
            throw;
        }
        noteAnswered();
    }
}

void Listener::noteAnswered() {
    ownConnection = nullptr;
    reserved_ -= std::exchange(ownReserved, 0);
    --answering_;
}

bool Listener::add(socket_t socket) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (isEnding_) return false;
    open_.insert(socket);
    return true;
}

void Listener::remove(socket_t socket) {
    const std::lock_guard<std::mutex> guard(mutex_);
    open_.erase(socket);
}

void Listener::endAll() {
    isEnding_ = true;
    for (unsigned int waited = 0; answering_ != 0 && waited < patienceMs; waited += lookMs)
        Sleep(lookMs);
    const std::lock_guard<std::mutex> guard(mutex_);
    for (const socket_t each : open_) httplib::detail::shutdown_socket(each);
}

}  // namespace qorctl::serve::http
