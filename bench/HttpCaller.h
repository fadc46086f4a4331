#pragma once

#include <cstdint>
#include <string>

/// One connection to a server on this machine, with plain blocking sockets.
class HttpCaller {
public:
    /// Throws std::runtime_error if nobody listens.
    explicit HttpCaller(unsigned int port);
    ~HttpCaller();
    HttpCaller(const HttpCaller&) = delete;
    HttpCaller& operator=(const HttpCaller&) = delete;

    /// The body of the answer; throws std::runtime_error if it is none of success.
    std::string post(const std::string& path, const std::string& headers, const std::string& body);

    /// Asks for a stream of events, which `nextEvent` gives.
    void openEvents(const std::string& path);
    struct Event {
        std::string name;
        std::string data;
    };
    /// False: the connection was closed, by `close` or by the server.
    bool nextEvent(Event& event);
    /// From another thread, for one that waits.
    void close() const;

private:
    bool receive();
    std::string takeHead();
    bool decode();
    bool takeLine(std::string& line);

    std::uintptr_t socket_;
    std::string received_;
    std::string text_;  ///< of events, without what the transfer adds
    bool isChunked_ = false;
};
