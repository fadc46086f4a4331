#pragma once

#include <cstdint>
#include <map>
#include <string>

/// What a server has answered.
struct HttpAnswer {
    int status = 0;                              ///< 0: none came
    std::map<std::string, std::string> headers;  ///< names in lower case
    std::string body;
};

/// One connection over plain sockets, which sends whatever bytes a test wants.
class HttpClient {
public:
    /// Connects to this machine; throws std::runtime_error if nobody takes the connection.
    explicit HttpClient(unsigned short port);
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    /// False: the other side takes no more.
    bool send(const std::string& bytes);
    /// The next answer on this connection. Without Content-Length its body is empty.
    HttpAnswer readAnswer(unsigned timeoutMs = 30000);
    /// What has come beyond that, after a wait of at most that long; empty: nothing, or the end.
    std::string readSome(unsigned timeoutMs);
    /// Whether a read has found the end.
    bool isEnded() const { return isEnded_; }
    /// Whether the other side closes it in time; what comes before is dropped.
    bool isClosedWithin(unsigned timeoutMs);
    /// Ends it so that the other side gets a reset.
    void reset();
    /// Tells the other side that nothing more is sent.
    void endSending();
    /// How much the system takes in for a reader that stalls; before the first read.
    void takeLittle();

private:
    std::uintptr_t socket_;
    std::string received_;
    bool isEnded_ = false;
};

/// The bytes of a request; each of `headers` ends with a line end. With a body its length and its
/// type, JSON, are added.
std::string httpRequest(const std::string& method, const std::string& path,
                        const std::string& headers = {}, const std::string& body = {});

/// On a connection of its own.
HttpAnswer httpExchange(unsigned short port, const std::string& bytes, unsigned timeoutMs = 30000);
