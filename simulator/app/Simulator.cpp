#include "app/Simulator.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace simulator {

namespace {

constexpr std::uint64_t kLongestWaitMs = 1000;

std::uint64_t nowMs() {
    using namespace std::chrono;
    const auto sinceStart = steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(duration_cast<milliseconds>(sinceStart).count());
}

// A program with a message queue has to empty it; the first look at it also tells a waiting starter
// that the program is ready.
void emptyMessageQueue() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) DispatchMessageA(&message);
}

void waitForWork(HANDLE event, std::uint32_t timeoutMs) {
    MsgWaitForMultipleObjectsEx(1, &event, timeoutMs, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
}

ConversationOptions optionsFrom(const Settings& settings) {
    ConversationOptions options;
    options.answerStyle = settings.answerStyle;
    options.connectMs = settings.connectMs;
    return options;
}

}  // namespace

Simulator::Simulator(const Settings& settings, const EcuModel& model, Script script, Log& log)
    : settings_(settings),
      log_(log),
      recordLog_(settings.recordLogPath),
      conversation_(model, std::move(script), optionsFrom(settings),
                    ExportFiles(settings.exportPrefix), recordLog_, log, nowMs()),
      clientSeenMs_(nowMs()),
      server_(settings.serverIp, settings.tcpPort, *this) {
    log_.info("listening on " + settings.serverIp + ":" + std::to_string(settings.tcpPort));
}

int Simulator::run() {
    while (!conversation_.exit()) {
        emptyMessageQueue();
        waitForWork(server_.readyEvent(), waitMs());
        server_.serve();
        conversation_.tick(nowMs());
        sendWhatIsDue();
        if (hasWaitedTooLong()) {
            log_.info("no client for " + std::to_string(settings_.exitWithoutClientMs) + " ms");
            return 0;
        }
    }
    return end();
}

void Simulator::onConnected() {
    log_.info("a client has connected");
    stream_ = RecordStream();
    conversation_.clientConnected(nowMs());
}

void Simulator::onBytes(std::string_view bytes) {
    stream_.append(bytes);
    try {
        while (!conversation_.exit()) {
            const std::optional<Record> record = stream_.next();
            if (!record) return;
            conversation_.received(*record, nowMs());
            sendWhatIsDue();
        }
    } catch (const StreamBroken& broken) {
        log_.error(std::string("connection dropped: ") + broken.what());
        server_.drop();
    }
}

void Simulator::onDisconnected() {
    log_.info("the client has gone");
    clientSeenMs_ = nowMs();
    stream_ = RecordStream();  // what the client asked for last does not count any more
    conversation_.clientDisconnected();
}

void Simulator::sendWhatIsDue() {
    while (const std::optional<Piece> piece = conversation_.take(nowMs())) {
        server_.send(piece->bytes);
        if (piece->close) server_.closeClient();
    }
}

bool Simulator::hasWaitedTooLong() const {
    return settings_.exitWithoutClientMs != 0 && !server_.hasClient() &&
           nowMs() - clientSeenMs_ >= settings_.exitWithoutClientMs;
}

std::uint32_t Simulator::waitMs() const {
    const std::uint64_t now = nowMs();
    const std::uint64_t next = conversation_.nextMs().value_or(now + kLongestWaitMs);
    return static_cast<std::uint32_t>(std::min(next > now ? next - now : 0, kLongestWaitMs));
}

int Simulator::end() {
    const ExitEffect exit = *conversation_.exit();
    if (exit.inOrder) {
        sendWhatIsDue();
        server_.closeClient();
    } else {
        server_.drop();
    }
    log_.info("ending with code " + std::to_string(exit.code));
    return exit.code;
}

}  // namespace simulator
