#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "protocol/Commands.h"
#include "support/TcpPeer.h"
#include "support/TcpPeerThread.h"
#include "transport/ClientSocketCommandFactory.h"

/// A client command that accepts whatever it receives.
template <class Base>
class AcceptingCommand final : public Base, public IClientCommand {
public:
    using Base::Base;

    IExternalCommand* createFromPayload(std::string_view bytes) const override {
        return Base::template createAs<AcceptingCommand>(bytes);
    }
    bool onReply(IExternalCommand::ICommandReplyer*, ClientExternalOperating*) override {
        return true;
    }
};

/// For pings of one status there is no memory, the others it leaves to others.
class OwnPing final : public CommandPing, public IClientCommand {
public:
    static constexpr std::uint32_t starvingStatus = 99;
    static inline std::function<void()> onOffer;

    IExternalCommand* createFromPayload(std::string_view bytes) const override {
        if (onOffer != nullptr) onOffer();
        if (bytes == tcp::word(starvingStatus)) throw std::bad_alloc();
        return nullptr;
    }
    bool onReply(IExternalCommand::ICommandReplyer*, ClientExternalOperating*) override {
        return true;
    }
};

/// The prototypes of the tests: command ids 3, 6, 8, 9 and 10, and 0 without memory.
inline ICommandReceiver::Prototypes testPrototypes() {
    ICommandReceiver::Prototypes prototypes;
    prototypes.push_back(std::make_unique<OwnPing>());
    prototypes.push_back(std::make_unique<AcceptingCommand<CommandGetParamInfo>>());
    prototypes.push_back(std::make_unique<AcceptingCommand<CommandReceiveParamData>>());
    prototypes.push_back(std::make_unique<AcceptingCommand<CommandEcuToolRoutine>>());
    prototypes.push_back(std::make_unique<AcceptingCommand<CommandGetDTC>>());
    prototypes.push_back(std::make_unique<AcceptingCommand<CommandRedirectUI>>());
    return prototypes;
}

/// Writes down what a transport hands over and then does what the test says.
class TestReceiver : public ICommandReceiver {
public:
    using Handler = std::function<bool(IExternalCommand&, IExternalCommand::ICommandReplyer&)>;
    struct Seen {
        unsigned commandId;
        std::uint32_t requestId;
        bool isReply;
    };

    explicit TestReceiver(Handler handler) : handler_(std::move(handler)) {}

    const Prototypes& prototypes() const override { return prototypes_; }

    bool handleCommand(IExternalCommand& command,
                       IExternalCommand::ICommandReplyer& replyer) override {
        note(static_cast<const ExternalCommand&>(command));
        return handler_ == nullptr || handler_(command, replyer);
    }

    void onNewQor() override { ++newQors_; }
    int newQors() const { return newQors_; }

    void onRefused(std::uint32_t requestId) override { lastRefused_ = requestId; }
    std::uint32_t lastRefused() const { return lastRefused_; }

    /// What was received so far, once that is `count` or the patience is at its end.
    std::vector<Seen> seen(std::size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(5), [&] { return seen_.size() >= count; });
        return seen_;
    }

private:
    void note(const ExternalCommand& command) {
        const std::lock_guard<std::mutex> guard(mutex_);
        seen_.push_back({command.getId(), command.requestId(), command.isReply()});
        changed_.notify_all();
    }

    const Prototypes prototypes_ = testPrototypes();
    const Handler handler_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Seen> seen_;
    std::atomic<int> newQors_{0};
    std::atomic<std::uint32_t> lastRefused_{0};
};

/// A transport at work, with its receiver.
class TestTransport final : public TestReceiver, public ClientSocketCommandFactory {
public:
    explicit TestTransport(unsigned port, Handler handler = {},
                           const std::string& host = "127.0.0.1")
        : TestReceiver(std::move(handler)), ClientSocketCommandFactory(host, port, *this) {
        start();
    }
};

/// Sends a command without data (a tool routine) on a thread of its own.
inline std::future<bool> sendOnThread(IExternalCommandFactory& transport, unsigned timeoutMs) {
    return std::async(std::launch::async, [&transport, timeoutMs] {
        return transport.send(std::make_unique<CommandEcuToolRoutine>(), timeoutMs);
    });
}

/// Whether a send goes out and its acknowledgement comes back: all is well between the two.
inline bool exchangeWorks(TestTransport& transport, tcp::TcpPeer& peer) {
    std::future<bool> result = sendOnThread(transport, 5000);
    peer.send(tcp::pingAnswer(peer.expectRecord().requestId, 1));
    return result.get();
}

/// A time span in milliseconds, from its own making.
class Stopwatch {
public:
    unsigned ms() const {
        const auto span = std::chrono::steady_clock::now() - start_;
        return static_cast<unsigned>(
            std::chrono::duration_cast<std::chrono::milliseconds>(span).count());
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// A flag that one thread raises and another awaits.
class Gate {
public:
    void open() {
        const std::lock_guard<std::mutex> guard(mutex_);
        isOpen_ = true;
        changed_.notify_all();
    }
    bool passWithin(unsigned ms) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::milliseconds(ms), [&] { return isOpen_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isOpen_ = false;
};
