#include "client/ClientExternalOperating.h"

#include "client/Bootstrap.h"
#include "client/ClientCommands.h"
#include "client/ClientSend.h"
#include "common/Deadline.h"
#include "common/LastError.h"
#include "common/Paths.h"

using qorcontrol::Cause;

namespace {

constexpr unsigned int launchPingMs = 200;
constexpr unsigned int launchPauseMs = 10;
constexpr unsigned int connectMs = 10000;
constexpr unsigned int disconnectMs = 3000;
constexpr unsigned int shutdownMs = 5000;
constexpr std::uint32_t onlineQueryPeriodMs = 400;
constexpr unsigned int settleMs = 50;
/// A protocol number that no real connection carries: "no connection".
constexpr std::uint32_t noProtocol = 0;

constexpr const char* lostWithRequest = "it was lost while the request was under way";
constexpr const char* hangs = "its window takes no messages at all";
constexpr const char* hasMoreRights =
    "QOR's window takes no messages of this program, QOR runs with more rights";
constexpr const char* sameRights =
    "Start the host and QOR with the same rights: both as administrator, or neither of them.";

template <class... Commands>
ICommandReceiver::Prototypes makePrototypes() {
    ICommandReceiver::Prototypes prototypes;
    (prototypes.push_back(std::make_unique<Commands>()), ...);
    return prototypes;
}

}  // namespace

ClientExternalOperating::ClientExternalOperating(const ClientSettings& settings,
                                                 const MakeTransport& makeTransport,
                                                 std::unique_ptr<IProcessStarter> processStarter,
                                                 std::unique_ptr<IMessageBox> messageBox)
    : settings_(settings),
      processStarter_(std::move(processStarter)),
      messageBox_(std::move(messageBox)) {
    if (!settings.executable.empty()) {
        executablePath_ = common::resolveAgainstExecutable(
            settings.executable.substr(0, ClientSettings::maxValueChars));
        qorDirectory_ = common::directoryOf(executablePath_);
    }
    // Before the transport starts, whose receiving side reads them.
    prototypes_ =
        makePrototypes<ClientCommandGetParamInfo, ClientCommandReceiveParamData,
                       ClientCommandDirectCtrl, ClientCommandGetDTC, ClientCommandStartEdit,
                       ClientCommandRedirectUI, ClientCommandGetHex, ClientCommandStaticParam,
                       ClientCommandEcuSegment, ClientCommandExecKwp, ClientCommandCanBusData,
                       ClientCommandReadTogether>();
    transport_ = makeTransport(*this);
    transport_->start();
}

ClientExternalOperating::~ClientExternalOperating() {
    stop();  // before the pointer goes, which a handler may still use
    transport_.reset();
    operating_ = false;
    prototypes_.clear();
    common::sleepMs(settleMs);
}

void ClientExternalOperating::beginRequest(std::shared_ptr<common::Interest> caller) {
    caller_ = std::move(caller);
    requestEpoch_ = epoch();
    verdict_ = common::Verdict();
    if (caller_ != nullptr) caller_->notePresent(Cause::agentBusy);
}

void ClientExternalOperating::endRequest() {
    caller_.reset();
    requestEpoch_.reset();
}

IExternalCommandFactory::Permit ClientExternalOperating::permit(unsigned int timeoutMs,
                                                                std::optional<Epoch> epoch) {
    const auto caller = timeoutMs != IExternalCommandFactory::doNotWait ? caller_ : nullptr;
    if (caller == nullptr && !epoch) return nullptr;
    return [this, caller, epoch] {
        if (caller != nullptr && caller->isGivenUp()) return false;
        if (epoch && *epoch != state_.lock()->epoch) return false;
        if (caller != nullptr) caller->notePresent(Cause::qorSilent);
        return true;
    };
}

void ClientExternalOperating::beginSend() {
    {
        const auto state = state_.lock();
        state->asked = {};
        sentIn_ = state->epoch;
    }
    if (caller_ != nullptr)
        caller_->notePresent(transport_->isConnected() ? Cause::agentBusy : Cause::noConnection);
}

bool ClientExternalOperating::endSend(Delivery delivery) {
    switch (delivery) {
        case Delivery::taken:
            if (caller_ != nullptr) caller_->notePresent(Cause::noData);
            return true;
        case Delivery::refused:
            return fail(Cause::refused);
        case Delivery::silent:
            return fail(Cause::qorSilent);
        case Delivery::hung:
            return fail(Cause::qorSilent, hangs);
        case Delivery::lost:
            return fail(Cause::noConnection, lostWithRequest);
        case Delivery::noConnection:
            return fail(Cause::noConnection);
        case Delivery::forbidden:
            return fail(Cause::systemFailure, hasMoreRights, sameRights);
        case Delivery::notBegun:
            return fail(Cause::agentBusy,
                        "the request has not left, a message box of QOR's may be open");
        case Delivery::withdrawn:
            return fail(Cause::qorChanged);
        case Delivery::tooLong:
            return fail(Cause::requestTooLarge);
        case Delivery::broken:
            return fail(Cause::systemFailure, "the thread of the TCP connection has ended");
    }
    return false;
}

bool ClientExternalOperating::fail(Cause cause, const char* detail, const char* check) {
    // Only an answer can belong to another request, and only these failures are answers.
    const bool isAnswer = cause == Cause::unknownName || cause == Cause::badAnswer;
    verdict_ = {cause, detail, isAnswer && verdict_.mayBelongToEarlier, check};
    return false;
}

bool ClientExternalOperating::failForLackOfData() {
    if (epoch() != sentIn_) return fail(Cause::qorChanged);
    const Asked asked = state_.lock()->asked;
    if (asked.isTroubleCertain) verdict_.mayBelongToEarlier = wasMarked_;
    if (asked.trouble != Cause::none) return fail(asked.trouble, asked.detail);
    if (transport_->isPeerGone()) return fail(Cause::noConnection, lostWithRequest);
    return fail(Cause::noData);
}

bool ClientExternalOperating::launch(unsigned int timeoutMs) {
    if (ping(launchPingMs)) return true;
    if (settings_.executable.empty()) return true;
    // Not the published path, which is made of fewer characters.
    const std::string resolved = common::resolveAgainstExecutable(settings_.executable);
    if (resolved.empty()) return failToLaunch("there is no such path: " + settings_.executable);
    return startProcess(resolved, timeoutMs);
}

bool ClientExternalOperating::failToLaunch(std::string reason) {
    launchFailure_ = std::move(reason);
    // What the ping has met is of a QOR that was there before, or of the one that was started.
    if (*verdict_.detail != '\0') launchFailure_ += std::string("; ") + verdict_.detail;
    return false;
}

bool ClientExternalOperating::startProcess(const std::string& executable, unsigned int timeoutMs) {
    const std::string commandLine = " -external_operating \"" + settings_.path + "\"";
    if (commandLine.size() > ClientSettings::maxLaunchChars)
        return failToLaunch("the path of the settings is too long for a command line");
    if (!processStarter_->start(executable, commandLine)) {
        std::string why = common::lastErrorText();
        why.erase(why.find_last_not_of(" .") + 1);
        return failToLaunch(executable + " cannot be started, " + why);
    }
    // No limit is not meant here: such a launch is due at once and pings twice.
    const auto deadline = common::Deadline::at(common::now() + timeoutMs);
    processStarter_->awaitIdle(timeoutMs);
    do {
        if (ping(launchPingMs)) return true;
        common::sleepMs(launchPauseMs);
    } while (!deadline.hasPassed());
    return ping(launchPingMs) || failToLaunch(executable + " was started and does not answer");
}

bool ClientExternalOperating::ping(unsigned int timeoutMs) {
    return send<CommandPing>(protocol::Ping(), timeoutMs);
}

bool ClientExternalOperating::connectEcu(const protocol::KwpConnect& record,
                                         IProgressMonitor* monitor, ConnectCallback& callback) {
    std::uint32_t stepsBefore = 0;
    {
        const auto state = state_.lock();
        state->connectRecord = record;
        state->connecting = true;
        stepsBefore = state->bootstrapSteps;
    }
    if (!send<CommandKwpConnect>(record, connectMs)) return false;
    if (monitor == nullptr) return true;
    // The epoch behind the send: on its way out it may have met a new QOR.
    Bootstrap bootstrap(*this, state_, operating_, *monitor, callback, epoch(), stepsBefore);
    return bootstrap.follow() || fail(bootstrap.cause(), bootstrap.reason());
}

bool ClientExternalOperating::disconnectEcu() {
    protocol::KwpConnect neutral;
    neutral.protocol = noProtocol;
    {
        const auto state = state_.lock();
        state->connecting = false;
        state->connectRecord = neutral;
        // What QOR said of the old connection must not be taken for an answer about none.
        state->ecuOnline = false;
    }
    const bool taken = send<CommandKwpConnect>(neutral, disconnectMs);
    // Nor may what QOR said of it while the request was on its way.
    state_.lock()->ecuOnline = false;
    return taken;
}

bool ClientExternalOperating::isEcuOnline() {
    protocol::KwpConnect query;
    {
        const auto state = state_.lock();
        if (common::now() - state->lastOnlineQuery < onlineQueryPeriodMs) return state->ecuOnline;
        state->ecuOnline = false;
        query = state->connectRecord;
        query.mode = protocol::KwpConnect::modeOnlineQuery;
        if (!state->connecting) query.protocol = noProtocol;
    }
    send<CommandKwpConnect>(query, IExternalCommandFactory::doNotWait);
    const auto state = state_.lock();
    state->lastOnlineQuery = common::now();
    return state->ecuOnline;
}

bool ClientExternalOperating::shutdown(bool firstOption, bool secondOption) {
    protocol::Shutdown request;
    if (firstOption) request.flags |= protocol::Shutdown::firstOption;
    if (secondOption) request.flags |= protocol::Shutdown::secondOption;
    return send<CommandShutdown>(request, shutdownMs);
}
