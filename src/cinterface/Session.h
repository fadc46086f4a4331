#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "cinterface/BoxPolicy.h"
#include "cinterface/CodeBox.h"
#include "cinterface/ConnectRun.h"
#include "cinterface/HostFunction.h"
#include "cinterface/HostLog.h"
#include "cinterface/Result.h"
#include "common/Guarded.h"
#include "facade/channel/Channel.h"
#include "facade/FacadeImpl.h"
#include "facade/QorControlFacade.h"

namespace cinterface {

/// What a handle stands for: a facade and what the interface has beside it. Each call holds a
/// share, so that closing it on another thread frees nothing that is in use.
class Session : public std::enable_shared_from_this<Session> {
public:
    Session(const std::string& settingsPath, unsigned int readPeriodMs,
            const std::string& hostPath);

    QorControlFacade& facade() { return facade_; }
    const FacadeState& state() const { return FacadeAccess::stateOf(facade_); }
    channel::Channel& channel() const { return *channel_; }
    HostLog& log() { return log_; }
    ProgressFunction& progress() { return *progress_; }
    void setBoxPolicy(const BoxPolicy& policy);

    /// Ends everything, and waits for that. Only once, by who has taken it out of the table.
    void close();

    /// Of the calling thread; null if it has none.
    std::shared_ptr<const Result> lastResult() const;
    /// Makes it the calling thread's last one.
    std::shared_ptr<const Result> keep(Result result);

    /// Begins a connect; throws a Refusal while another one runs.
    std::shared_ptr<ConnectRun> startConnect(QorControlFacade::EcuConnect settings,
                                             QorControlFacade::EcuConnect::ConnType type);
    /// The last one that was begun; null if there was none.
    std::shared_ptr<ConnectRun> lastConnect() { return *connect_.lock(); }

    /// Whether there still is somebody who can send anything.
    bool isOperating() const { return channel_->agent.isOperating(); }
    /// Why not.
    qorcontrol::Outcome agentsEnd() const;

    /// Begins a stream; its number. Throws a Refusal if that cannot be.
    std::uint32_t startStream(const std::vector<std::string>& names, unsigned int slots);
    /// Takes it away from the agent; see Stream. `waits`: until that is certain.
    qorcontrol::Outcome endStream(const channel::ValueSink& sink, std::uint32_t number, bool waits);

    qorcontrol::Outcome startCodes(unsigned int timeoutMs, unsigned int periodMs);
    /// If it fails, they still are being read.
    qorcontrol::Outcome stopCodes();
    /// Null if none are being read.
    std::shared_ptr<CodeBox> codes() { return codes_.lock()->box; }

private:
    bool noteStream(std::uint32_t number);
    void endStreams();
    bool exchangeCodes(std::shared_ptr<CodeBox> box);
    void endCodes();
    bool placeConnect(std::shared_ptr<ConnectRun> run);

    const std::uint64_t serial_;  // of no other session
    HostLog log_;                 // outlives the facade, which tells it
    const std::shared_ptr<ProgressFunction> progress_ = std::make_shared<ProgressFunction>();
    QorControlFacade facade_;
    const std::shared_ptr<channel::Channel> channel_;
    ResultPlaces results_;
    common::Guarded<std::shared_ptr<ConnectRun>> connect_;
    struct Streams {
        std::set<std::uint32_t> numbers;
        bool closed = false;
    };
    common::Guarded<Streams> streams_;
    struct Codes {
        std::shared_ptr<CodeBox> box;
        bool closed = false;
    };
    common::Guarded<Codes> codes_;
    std::atomic<bool> areCodesDirected_{false};  // by a start or a stop; one at a time
};

}  // namespace cinterface
