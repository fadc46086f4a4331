#pragma once

#include <atomic>
#include <mutex>
#include <set>

#include "serve/http/Connection.h"
#include "serve/http/Library.h"

namespace qorctl::serve::http {

/// The library's server on connections of our own.
class Listener final : public httplib::Server {
public:
    /// The library's `stop` may be called once.
    void stopIfRunning() {
        if (is_running() && svr_sock_ != INVALID_SOCKET) stop();
    }

    /// Ends what waits for a client, once what is being answered is.
    void endAll();
    /// So long `endAll` waits for answers.
    static constexpr unsigned int patienceMs = 1000;

    /// For a handler: whether the client of the present request has closed its connection.
    static bool hasPeerLeft();

    /// For a handler: room for the body of the present request, until its end. False: others take
    /// all there is.
    bool reserve(std::size_t bytes);

    /// For a handler: the present request's connection ends with it, for its body was not read.
    static void endConnection(httplib::Response& response);

private:
    bool process_and_close_socket(socket_t socket) override;
    void serve(Connection& connection);
    void noteAnswered();
    bool add(socket_t socket);
    void remove(socket_t socket);

    std::atomic<bool> isEnding_{false};
    std::atomic<unsigned int> answering_{0};
    std::atomic<std::size_t> reserved_{0};
    std::mutex mutex_;
    std::set<socket_t> open_;  // guarded by mutex_
};

}  // namespace qorctl::serve::http
