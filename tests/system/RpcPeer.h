#pragma once

#include <functional>
#include <future>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "QorctlProcess.h"

/// What a server has told by itself, in the order of its coming.
struct ServerEvent {
    std::string name;
    nlohmann::json data;
};

/// A program that uses "qorctl serve", written by hand from what the protocol says.
class RpcPeer {
public:
    RpcPeer() = default;
    virtual ~RpcPeer() = default;
    RpcPeer(const RpcPeer&) = delete;
    RpcPeer& operator=(const RpcPeer&) = delete;

    /// Sends these bytes as one message and waits for what comes back; null: nothing does. While it
    /// waits nothing else may be asked.
    virtual nlohmann::json exchange(const std::string& message) = 0;

    /// Asks without waiting; the future gives the whole response.
    virtual std::future<nlohmann::json> begin(const std::string& method,
                                              const nlohmann::json& params) = 0;

    /// The whole response; null if none comes within half a minute.
    nlohmann::json ask(const std::string& method,
                       const nlohmann::json& params = nlohmann::json::object());
    /// Its result; a failure of the test, and null, if it is an error.
    nlohmann::json resultOf(const std::string& method,
                            const nlohmann::json& params = nlohmann::json::object());
    /// Its error code; 0 if it is none.
    int errorOf(const std::string& method, const nlohmann::json& params = nlohmann::json::object());

    /// What it was told by that name so far.
    std::vector<nlohmann::json> eventsOf(const std::string& name);
    std::size_t countOf(const std::string& name);
    /// Whether it is told something like that in time; what was told before counts.
    bool awaitEvent(const std::string& name,
                    const std::function<bool(const nlohmann::json&)>& isWanted,
                    unsigned timeoutMs = 10000);

protected:
    void note(ServerEvent event);
    /// Takes in what has come.
    virtual void look() = 0;

private:
    std::mutex mutex_;
    std::vector<ServerEvent> events_;  // guarded by mutex_
};

/// The one over standard input and output.
class StdioPeer final : public RpcPeer {
public:
    explicit StdioPeer(QorctlProcess& process) : process_(process) {}

    nlohmann::json exchange(const std::string& message) override;
    std::future<nlohmann::json> begin(const std::string& method,
                                      const nlohmann::json& params) override;

    /// The response to the request of that id, or a batch that has it; null if none comes.
    nlohmann::json await(const nlohmann::json& id, unsigned timeoutMs = 30000);
    /// The responses that came and that nobody has waited for, in the order of their coming.
    std::vector<nlohmann::json> takeResponses();
    /// The lines that were no JSON object or array: there must never be one.
    const std::vector<std::string>& oddLines() const { return oddLines_; }

private:
    void look() override;
    void take(const std::string& line);

    QorctlProcess& process_;
    std::string rest_;
    std::vector<nlohmann::json> responses_;
    std::vector<std::string> oddLines_;
    unsigned lastId_ = 0;
};

/// As it goes over the wire.
nlohmann::json requestOf(const nlohmann::json& id, const std::string& method,
                         const nlohmann::json& params = nlohmann::json::object());
