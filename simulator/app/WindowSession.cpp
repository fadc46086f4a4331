#include "app/WindowSession.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <utility>

#include "app/Clock.h"
#include "link/Messages.h"
#include "wire/RecordStream.h"

namespace simulator {

namespace {

constexpr std::uint32_t lookForClientMs = 200;
/// A client that asks on and on without looking at its answers would use up the stack.
constexpr int maxDepth = 8;

std::optional<Record> recordIn(const std::string& bytes, const MessageForm& form) {
    if (form.tag != recordTag) return std::nullopt;
    RecordStream stream;
    stream.append(bytes);
    try {
        return stream.next();  // what follows it does not count
    } catch (const StreamBroken&) {
        return std::nullopt;
    }
}

/// As in a crash: without giving the sender that waits its result.
[[noreturn]] void crash(int code) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
    std::abort();
}

/// Counts how deep handlers are nested.
class Level {
public:
    explicit Level(int& depth) : depth_(depth) { ++depth_; }
    ~Level() { --depth_; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

private:
    int& depth_;
};

}  // namespace

WindowSession::WindowSession(const Settings& settings, Conversation& conversation,
                             RecordLog& recordLog, Log& log)
    : clientTitle_(settings.clientTitle),
      usualAnswer_(settings.windowAnswer),
      sendMs_(settings.windowSendMs),
      conversation_(conversation),
      recordLog_(recordLog),
      log_(log),
      link_(settings.serverTitle, *this) {
    log_.info("window \"" + settings.serverTitle + "\", for the client's window \"" + clientTitle_ +
              "\"");
    handleMessages();  // tells a waiting starter that the program is ready
}

void WindowSession::serve(std::uint32_t timeoutMs) {
    messageCame_ = false;
    lookForClient();
    // Handling messages before this wait could leave an answer waiting for it.
    waitForEventOrMessage(nullptr, std::min(timeoutMs, lookForClientMs));
    handleMessages();
}

void WindowSession::lookForClient() {
    const HWND found = WindowLink::find(clientTitle_);
    if (found == client_) return;
    if (client_ != nullptr) {
        log_.info("the client has gone");
        again_.clear();
        conversation_.clientDisconnected();
    }
    client_ = found;
    if (client_ == nullptr) return;
    log_.info("a client is there");
    conversation_.clientConnected(nowMs());
}

void WindowSession::end(bool inOrder) {
    if (inOrder) sendWhatIsDue();
}

// Nothing may be thrown through the system's own code that called us.
bool WindowSession::onMessage(const std::string& bytes, const MessageForm& form) {
    try {
        return receive(bytes, form);
    } catch (const std::exception& error) {
        log_.error(std::string("a message could not be handled: ") + error.what());
        return false;
    }
}

bool WindowSession::receive(const std::string& bytes, const MessageForm& form) {
    const Level level(depth_);
    messageCame_ = true;
    if (client_ == nullptr) lookForClient();
    if (const std::optional<Record> record = recordIn(bytes, form)) return carryOut(*record);
    recordLog_.message(RecordLog::Direction::In, bytes, form, nowMs(), {0, {}});
    return false;
}

bool WindowSession::carryOut(const Record& record) {
    if (conversation_.exit()) return false;
    const Reception reception = conversation_.received(record, nowMs());
    Sleep(reception.hangMs);
    const std::optional<ExitEffect>& exit = conversation_.exit();
    if (exit && !exit->inOrder) {
        log_.info("ending with code " + std::to_string(exit->code) + " inside a message");
        crash(exit->code);
    }
    answer(reception.windowAnswer.value_or(usualAnswer_), reception.accepted);
    return reception.accepted;
}

void WindowSession::answer(WindowAnswer way, bool accepted) {
    if (way == WindowAnswer::Later || depth_ > maxDepth) return;
    // What waits for the client to be free goes first, and here it is not.
    if (way == WindowAnswer::Inside && !again_.empty()) return;
    if (way == WindowAnswer::Released) WindowLink::releaseSender(accepted);
    sendWhatIsDue();
}

void WindowSession::sendWhatIsDue() {
    while (std::optional<Piece> piece = nextPiece()) {
        if (deliver(*piece) || !WindowLink::holdsSender()) continue;
        // The client waits for us and takes nothing meanwhile: once more when it has its result.
        again_.push_front(std::move(*piece));
        return;
    }
}

std::optional<Piece> WindowSession::nextPiece() {
    if (again_.empty()) return conversation_.take(nowMs());
    Piece piece = std::move(again_.front());
    again_.pop_front();
    return piece;
}

// Whether it has been delivered, or never can be.
bool WindowSession::deliver(const Piece& piece) {
    lookForClient();
    MessageFate fate;
    bool timedOut = false;
    if (client_ == nullptr) {
        fate.failure = "no client window";
    } else {
        const WindowLink::Sent sent = WindowLink::send(client_, piece.bytes, piece.form, sendMs_);
        if (sent.delivered) fate.result = sent.result;
        fate.failure = sent.failure;
        timedOut = sent.timedOut;
    }
    conversation_.logSent(piece, nowMs(), fate);
    return !timedOut;
}

}  // namespace simulator
