#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cinterface/HostFunction.h"
#include "cinterface/QorControl.h"
#include "common/Gate.h"
#include "common/Guarded.h"
#include "common/Moment.h"
#include "common/Thread.h"
#include "facade/channel/Channel.h"
#include "facade/QorControlFacade.h"
#include "qorcontrol/Outcome.h"

namespace cinterface {

class Session;

using ProgressFunction = HostFunction<QorProgressFunction>;

/// One connect of an ECU on a thread of its own, which the host can look at, await and cancel. It
/// is the connect's monitor, too.
class ConnectRun final : public IProgressMonitor, public std::enable_shared_from_this<ConnectRun> {
public:
    /// The channel is the agent's, who holds it while it asks the monitor.
    ConnectRun(QorControlFacade::EcuConnect settings, QorControlFacade::EcuConnect::ConnType type,
               channel::Channel& channel, std::shared_ptr<ProgressFunction> progress);

    /// Begins; throws a Refusal if the system gives no thread. The session lives until the end.
    void start(std::shared_ptr<Session> session);

    bool isRunning() const { return running_; }
    /// Whether it has ended within that time.
    /// Who is its own function of the host's does not wait: it would wait for itself.
    bool awaitEnd(unsigned int timeoutMs) const {
        return !running_ || (!isOwnThread() && ended_.await(timeoutMs));
    }
    void cancel() { cancelled_ = true; }

    /// How it ended; QOR_NOT_READY while it runs.
    qorcontrol::Outcome outcome();
    /// As the monitor was told; empty if it was told nothing.
    std::string reason();
    /// QOR's figures so far.
    channel::ConnectProgress::Seen seen() { return course_.lock()->seen; }
    unsigned int elapsedMs();

    // IProgressMonitor, on the agent's thread.
    void reserved1() override {}
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    /// Asked all the time, so it takes down QOR's figures, too. The host's function is called on
    /// the connect's own thread: one that waits for the agent must not keep the agent itself.
    bool isCancelled() override;
    void reserved8() override {}
    void reserved9() override {}
    void reportError(const std::string& message, unsigned int code) override;

private:
    struct Luggage;

    static unsigned __stdcall run(void* luggage);
    bool isOwnThread() const;
    qorcontrol::Outcome perform(Session& session) noexcept;
    void end(qorcontrol::Outcome outcome) noexcept;
    void noteFigure();
    std::optional<std::int32_t> nextFigure();
    void tellFigures();

    struct Course {
        qorcontrol::Outcome outcome;
        std::array<std::int32_t, 64> figures = {};  // the last ones, at their number
        unsigned int noted = 0;                     // so many in all
        unsigned int told = 0;                      // so many of them to the host's function
        std::string reason;
        channel::ConnectProgress::Seen seen;
        common::Moment end;
    };

    const QorControlFacade::EcuConnect settings_;
    const QorControlFacade::EcuConnect::ConnType type_;
    channel::Channel& channel_;
    const std::shared_ptr<ProgressFunction> progress_;
    const common::Moment start_;
    common::Thread thread_;
    std::atomic<unsigned int> threadId_{0};
    std::atomic<bool> cancelled_{false};
    std::atomic<bool> isBegun_{false};  // by the agent: the figures are this connect's
    std::atomic<bool> running_{true};
    common::Gate ended_;
    common::Guarded<Course> course_;
};

}  // namespace cinterface
