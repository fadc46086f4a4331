#include "app/Simulator.h"

#include <algorithm>
#include <utility>

#include "app/Clock.h"
#include "app/TcpSession.h"
#include "app/WindowSession.h"

namespace simulator {

namespace {

constexpr std::uint64_t longestWaitMs = 1000;

ConversationOptions optionsFrom(const Settings& settings) {
    ConversationOptions options;
    options.answerStyle = settings.answerStyle;
    options.connectMs = settings.connectMs;
    options.transport = settings.transport;
    return options;
}

}  // namespace

Simulator::Simulator(const Settings& settings, const EcuModel& model, Script script, Log& log)
    : settings_(settings),
      log_(log),
      recordLog_(settings.recordLogPath),
      conversation_(model, std::move(script), optionsFrom(settings),
                    ExportFiles(settings.exportPrefix), recordLog_, log, nowMs()),
      clientSeenMs_(nowMs()) {
    if (settings.transport == Transport::Tcp) {
        session_ =
            std::make_unique<TcpSession>(settings.serverIp, settings.tcpPort, conversation_, log);
    } else {
        session_ = std::make_unique<WindowSession>(settings, conversation_, recordLog_, log);
    }
}

int Simulator::run() {
    while (!conversation_.exit()) {
        serve();
        conversation_.tick(nowMs());
        session_->sendWhatIsDue();
        if (hasWaitedTooLong()) {
            log_.info("no client for " + std::to_string(settings_.exitWithoutClientMs) + " ms");
            return 0;
        }
    }
    return end();
}

void Simulator::serve() {
    const bool hadClient = session_->hasClient();
    session_->serve(waitMs());
    if (hadClient || session_->hasClient()) clientSeenMs_ = nowMs();
}

bool Simulator::hasWaitedTooLong() const {
    return settings_.exitWithoutClientMs != 0 && !session_->hasClient() &&
           nowMs() - clientSeenMs_ >= settings_.exitWithoutClientMs;
}

std::uint32_t Simulator::waitMs() const {
    const std::uint64_t now = nowMs();
    const std::uint64_t next = conversation_.nextMs().value_or(now + longestWaitMs);
    return static_cast<std::uint32_t>(std::min(next > now ? next - now : 0, longestWaitMs));
}

int Simulator::end() {
    const ExitEffect exit = *conversation_.exit();
    session_->end(exit.inOrder);
    log_.info("ending with code " + std::to_string(exit.code));
    return exit.code;
}

}  // namespace simulator
