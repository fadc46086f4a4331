#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "serve/http/Gate.h"
#include "serve/Server.h"

namespace qorctl::serve::http {

/// Where the server is to listen.
struct Address {
    std::string host = "127.0.0.1";
    int port = 0;  ///< 0: any that is free

    bool isLoopback() const;
    /// "ADDRESS:PORT", ":PORT" or "PORT". Throws std::invalid_argument for anything else.
    static Address parse(const std::string& text);
};

/// Lets clients use the server over HTTP, any number of them at once.
class HttpLink {
public:
    /// Takes the address at once, so that nothing else is begun if that is not free: throws
    /// std::runtime_error. Connections wait until `serve`.
    HttpLink(const Address& address, Gate::Rules rules);
    /// Ends all connections; the server must have ended.
    ~HttpLink();
    HttpLink(const HttpLink&) = delete;
    HttpLink& operator=(const HttpLink&) = delete;

    /// From now on; the server must outlive this.
    void serve(Server& server);

    /// "http://127.0.0.1:4711/"
    std::string url() const;

private:
    class Routes;

    void listen();

    Address address_;
    const Gate gate_;
    std::unique_ptr<Routes> routes_;
    std::atomic<bool> isOver_{false};
    std::atomic<bool> isThreadOver_{false};
    std::thread thread_;
};

}  // namespace qorctl::serve::http
