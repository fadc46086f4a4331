#include "facade/QorControlFacade.h"

#include <cstddef>

#include "common/Deadline.h"
#include "common/LastError.h"
#include "common/Paths.h"
#include "common/Pump.h"
#include "facade/Call.h"
#include "facade/FacadeImpl.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;

// Hosts are built against this layout, and those that the header itself checks.
static_assert(offsetof(QorControlFacade::CanBusConnect, firstFlag) == 4 &&
                  offsetof(QorControlFacade::CanBusConnect, secondFlag) == 5,
              "the flags are adjacent bytes right behind the bus setting");

namespace {

constexpr int shutdownPolls = 100;
constexpr unsigned int shutdownPollMs = 50;
constexpr std::uint32_t executablePathMs = 3000;

void openTraceBeside(const std::string& hostPath) {
    if (hostPath.empty()) return;
    const std::string base = common::withoutExtension(hostPath);
    if (base.empty()) return;
    tracelog::loadSettings((base + ".cfg").c_str());
    tracelog::openTraceFile((base + ".log").c_str(), "w");
}

void tellThatNoThreadStarted(channel::AgentLife& agent) {
    const std::string reason = common::lastErrorText();
    trace(libraryModule, tracelog::error, 0, "Failed to start QOR Remote agent thread, %s.\n",
          reason.c_str());
    agent.noteEnd(qorcontrol::Cause::systemFailure,
                  ("the agent's thread could not be started, " + reason).c_str());
}

/// False once there is nothing more to wait for.
bool isStillActive(const channel::AgentLife& agent) {
    const common::ThreadState state = agent.state();
    if (state == common::ThreadState::unreadable)
        trace(libraryModule, tracelog::error, 0,
              "Can't obtain QOR Remote agent thread exit code, %s\n",
              common::lastErrorText().c_str());
    return state == common::ThreadState::running;
}

void awaitEnd(const channel::AgentLife& agent) {
    common::sleepMs(shutdownPollMs);
    for (int poll = 0; poll < shutdownPolls && isStillActive(agent); ++poll) {
        trace(libraryModule, tracelog::warning, 0,
              "QOR Remote agent thread is still active, wait next 50 ms.\n");
        common::sleepMs(shutdownPollMs);
    }
}

}  // namespace

QorControlFacade::QorControlFacade(const std::string& settingsPath, const EolLog* eolLog,
                                   unsigned int readPeriodMs, const std::string& hostPath) {
    auto impl = std::make_unique<Impl>(settingsPath, eolLog, readPeriodMs);
    openTraceBeside(hostPath);
    const tracelog::Scope scope(libraryModule, "QorControlFacade::QorControlFacade()\n");
    // The thread gets a share of its own: it may first run when the facade is gone.
    auto share = std::make_unique<std::shared_ptr<channel::Channel>>(impl->channel);
    if (impl->channel->agent.start(agentThread, share.get()))
        static_cast<void>(share.release());
    else
        tellThatNoThreadStarted(impl->channel->agent);
    impl_ = impl.release();
}

QorControlFacade::~QorControlFacade() {
    const std::unique_ptr<const Impl> last(impl_);
    const tracelog::Scope scope(libraryModule, "QorControlFacade::~QorControlFacade()\n");
    try {
        shutdown();
    } catch (...) {
        // The host destroys the object whatever happens.
    }
}

void QorControlFacade::shutdown() {
    const auto shared = impl_->channel;
    channel::AgentLife& agent = shared->agent;
    const channel::AgentLife::Turn turn(agent);
    // One that has failed and only clears up counts as ended; it looks after itself.
    if (!agent.hasHandle() || agent.hasFailed()) return;
    if (agent.state() != common::ThreadState::running) return;
    agent.noteEnd(qorcontrol::Cause::agentEnded, "the host has shut it down");
    agent.askToEnd();
    shared->messageBoxes.close();  // one that waits for the host would hold the agent up
    awaitEnd(agent);
    if (!agent.letGo())
        trace(libraryModule, tracelog::error, 0, "Can't close QOR Remote agent thread, %s\n",
              common::lastErrorText().c_str());
}

bool QorControlFacade::isOperating() const {
    const auto shared = impl_->channel;
    return shared->agent.isOperating();
}

bool QorControlFacade::protectedMessagePump() const {
    const auto shared = impl_->channel;
    common::pumpOneMessage();
    return shared->agent.isOperating();
}

bool QorControlFacade::isEcuOnline() const {
    return impl_->channel->contact.isEcuOnline();
}

bool QorControlFacade::isConnecting() const {
    return *impl_->connecting;
}

std::string QorControlFacade::getQorExecutablePath() {
    const auto shared = impl_->channel;
    const auto deadline = common::Deadline::after(common::now(), executablePathMs);
    while (!deadline.hasPassed()) {
        std::string path = shared->executable.get();
        if (!path.empty()) return path;
        common::pumpCopyData();
    }
    return shared->executable.get();
}

const std::string& QorControlFacade::getEdcRamSegmentName() {
    static const std::string name("WorkingPage");
    return name;
}

const std::string& QorControlFacade::getEdcRomSegmentName() {
    static const std::string name("ReferencePage");
    return name;
}
