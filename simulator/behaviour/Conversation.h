#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "behaviour/Answer.h"
#include "behaviour/Ecu.h"
#include "behaviour/ExportFiles.h"
#include "behaviour/Outbox.h"
#include "behaviour/RecordLog.h"
#include "behaviour/Timeline.h"
#include "config/Log.h"
#include "script/Script.h"

namespace simulator {

struct ConversationOptions {
    AnswerStyle answerStyle = AnswerStyle::Stamped;
    std::uint32_t connectMs = 600;
    Transport transport = Transport::Tcp;
};

/// What the link has to know about a record that it handed over.
struct Reception {
    /// Over window messages this is the message's result and takes the place of an acknowledgement.
    bool accepted = true;
    std::uint32_t hangMs = 0;  ///< nothing is to happen for so long, before anything else
    std::optional<WindowAnswer> windowAnswer;  ///< if this request has one of its own
};

/// QOR's part of the conversation: takes the client's records one by one and says what goes back
/// and when. Knows nothing of how records travel and reads no clock: every call is told the time.
class Conversation {
public:
    Conversation(const EcuModel& model, Script script, const ConversationOptions& options,
                 ExportFiles exports, RecordLog& recordLog, Log& log, std::uint64_t nowMs);

    void clientConnected(std::uint64_t nowMs);
    /// What was on its way to the client is dropped; the ECU stays as it is.
    void clientDisconnected();

    Reception received(const Record& record, std::uint64_t nowMs);

    /// Lets happen what is due. Call it when nextMs() has come, then empty the outbox by take().
    void tick(std::uint64_t nowMs);
    std::optional<Piece> take(std::uint64_t nowMs);
    /// Writes what was sent to the record log.
    void logSent(const Piece& piece, std::uint64_t nowMs, const MessageFate& fate = {});
    std::optional<std::uint64_t> nextMs() const;

    /// Set once the process is to end.
    const std::optional<ExitEffect>& exit() const { return exit_; }

private:
    Outcome carryOut(const Record& request, const Action& action, std::uint64_t nowMs);
    BootstrapPlan planFor(const Action& action) const;
    void answer(const Record& request, const Outcome& outcome, const Action& action,
                std::uint64_t nowMs);
    void postAnswer(std::vector<AnswerRecord> records, const Action& action, std::uint64_t nowMs);
    void logReceived(const Record& record, const Reception& reception, std::uint64_t nowMs);
    void noteReply(const Record& record);

    void post(Delivery delivery, std::uint64_t dueMs);
    void postOwn(CommandId id, std::string payload, std::uint64_t nowMs);
    std::uint32_t freshRequestId() { return static_cast<std::uint32_t>(random_()); }

    void happen(const PushEffect& push, std::uint64_t nowMs);
    void happen(const MessageBoxEffect& box, std::uint64_t nowMs);
    void happen(const EditEffect& edit, std::uint64_t nowMs);
    void happen(const RecordEffect& record, std::uint64_t nowMs);
    void happen(const RawEffect& raw, std::uint64_t nowMs);
    void happen(const MessageEffect& message, std::uint64_t nowMs);
    void happen(const FloodEffect& flood, std::uint64_t nowMs);
    void happen(const CloseEffect& close, std::uint64_t nowMs);
    void happen(const OnlineEffect& online, std::uint64_t nowMs);
    void happen(const StallEffect& stall, std::uint64_t nowMs);
    void happen(const ExitEffect& exit, std::uint64_t nowMs);

    Ecu ecu_;
    Script script_;
    ConversationOptions options_;
    ExportFiles exports_;
    RecordLog& recordLog_;
    Log& log_;
    const std::uint64_t startMs_;  // live measurements count from here
    Outbox outbox_;
    Timeline timeline_;
    std::vector<std::pair<std::vector<AnswerRecord>, Action>> heldBack_;  // behind the next answer
    std::uint32_t previousRequestId_ = 0;
    std::mt19937 random_{std::random_device()()};
    bool clientPresent_ = false;
    std::optional<ExitEffect> exit_;
};

}  // namespace simulator
