#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "HeldActuators.h"
#include "serve/Answers.h"
#include "serve/Audience.h"
#include "serve/Control.h"
#include "serve/events/Observer.h"
#include "serve/Feeder.h"
#include "serve/KnownNames.h"
#include "serve/Method.h"
#include "serve/metrics/Metrics.h"
#include "serve/rpc/Message.h"
#include "serve/streams/CodeStreams.h"
#include "serve/streams/TraceStreams.h"
#include "serve/streams/ValueStreams.h"
#include "serve/WaitingLines.h"

namespace qorctl::serve {

/// One library for many clients. Requests come from any thread, are answered at once or wait for
/// their turn, and are carried out by the one thread that calls `work`.
class Server {
public:
    struct Options {
        bool isReadOnly = false;        ///< nothing that changes QOR or the ECU is carried out
        bool mayBeEnded = false;        ///< by every client, not only by its owner
        bool asksClients = false;       ///< QOR's message boxes are put before the clients
        std::size_t longestLine = 100;  ///< so many requests of one client may wait
    };
    /// What it serves, and what clients are told of that. All outlives the server.
    struct Backing {
        QorControlFacade& facade;
        HeldActuators& held;
        std::string settings;   ///< path; texts in the ANSI code page
        std::string transport;  ///< for people
        std::string trace;      ///< path
    };

    Server(const Backing& backing, const Options& options);
    /// Ends all streams, on the thread of the library. No message may come any more.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// @name Any thread may call these
    /// @{
    std::shared_ptr<Client> join(Client::Kind kind, std::shared_ptr<Outlet> outlet);
    /// Somebody who has just one message.
    std::shared_ptr<Client> passing();
    /// What it waits for is not done any more, what it holds is given back, its streams end.
    void leave(const std::shared_ptr<Client>& client);
    /// The same, but what it waits for is still done and answered.
    void sendOff(const std::shared_ptr<Client>& client);

    /// One message of the client's, whatever it is.
    void receive(const std::shared_ptr<Client>& client, const std::string& text, Reply reply);

    /// A line of the host's log.
    void tellLog(const char* level, const std::string& line);

    /// Lets `work` return when all that waits is done ...
    void endWhenDone();
    /// ... or at once: nothing that waits is done, and a connect is cancelled.
    void end();
    bool isEnding() const { return isEnding_; }
    bool isAborted() const { return isAborted_; }

    const Options& options() const { return options_; }
    const Methods& methods() const { return methods_; }
    KnownNames& names() { return names_; }
    Metrics& metrics() { return *metrics_; }
    Gauges gauges() const;
    /// @}

    /// Carries out what comes, until one of the ends.
    void work();

private:
    using Clock = std::chrono::steady_clock;

    void fillMethods();
    Methods ownMethods();
    Method stateMethod();
    Method statusMethod();
    Method endingMethod();
    nlohmann::json status(const Client& client) const;

    void take(const std::shared_ptr<Client>& client, Request&& request,
              const std::shared_ptr<Answers>& answers);
    /// The request is as the method wants it; throws a Failure else.
    const Method& checked(Request& request, const Client& client) const;
    const Method& methodOf(const std::string& name) const;
    void answer(Pending& pending, const Method& method, const nlohmann::json& arguments,
                const std::shared_ptr<Client>& client);
    nlohmann::json carryOut(const Method& method, const nlohmann::json& arguments,
                            const std::shared_ptr<Client>& client);
    void bringToAnEnd(ClientNumber client);
    void look(unsigned int count);

    const Backing backing_;
    const Options options_;
    const Clock::time_point begin_ = Clock::now();
    std::atomic<bool> isEnding_{false};   // nothing more is taken
    std::atomic<bool> isAborted_{false};  // nor is what was taken brought to its end
    std::atomic<ClientNumber> lastClient_{0};
    std::atomic<std::size_t> waitingBytes_{0};
    WaitingLines lines_;
    Audience audience_;
    Control control_;
    ValueStreams values_;
    CodeStreams codes_;
    TraceStreams trace_;
    KnownNames names_;
    Observer observer_;
    Methods methods_;
    std::optional<Metrics> metrics_;  // made with the names of the methods
    std::optional<Feeder> feeder_;    // uses most of the above
};

}  // namespace qorctl::serve
