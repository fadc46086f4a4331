#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

/// The other side of a round trip: a process of its own, which tells where it can be reached.
/// Made before this process has threads, for they do not come along.
class Server {
public:
    using Tell = std::function<void(const std::string& place)>;

    /// `serve` runs in the new process, tells its place once and then serves for ever.
    explicit Server(const std::function<void(const Tell&)>& serve);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    const std::string& place() const { return place_; }

private:
    pid_t process_;
    std::string place_;
};
