#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "HttpClient.h"
#include "RpcPeer.h"

/// A program that uses "qorctl serve" over HTTP: its events come over one connection, each request
/// goes over one of its own.
class HttpPeer final : public RpcPeer {
public:
    /// Follows the events and waits for the first, which has its name; throws std::runtime_error if
    /// that does not come. `headers` go with each request.
    explicit HttpPeer(unsigned short port, const std::string& headers = {});
    ~HttpPeer() override;

    nlohmann::json exchange(const std::string& message) override;
    std::future<nlohmann::json> begin(const std::string& method,
                                      const nlohmann::json& params) override;

    /// What the server calls it.
    const std::string& name() const { return name_; }
    const nlohmann::json& hello() const { return hello_; }
    /// Ends its events as the end of the program would, at once.
    void vanish();
    /// Whether the server has ended its events.
    bool isEnded() const { return isEnded_; }
    /// Stops reading its events, or goes on.
    void stall(bool isStalled) { isStalled_ = isStalled; }

private:
    void look() override {}
    void follow();
    void take(const std::string& event);

    const unsigned short port_;
    const std::string headers_;
    HttpClient events_;
    std::string name_;
    nlohmann::json hello_;
    std::string rest_;
    std::atomic<bool> isOver_{false};
    std::atomic<bool> isEnded_{false};
    std::atomic<bool> isStalled_{false};
    std::thread thread_;  // last: it uses everything above
};
