#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "script/Effect.h"
#include "script/Transport.h"
#include "wire/Record.h"

namespace simulator {

/// How a connect goes. No result code = silence after the progress.
struct BootstrapPlan {
    std::uint32_t durationMs = 600;
    std::uint32_t steps = 10;
    std::optional<std::int32_t> result = -1;
    bool online = true;  ///< whether the ECU is online after the result -1
};

enum class AnswerKind {
    Normal,
    Stamped,
    Separate,
    AckOnly,
    Silent,  ///< the request is not carried out either
    Refuse,  ///< nor here
    WrongName,
    WrongType,
    FewerVectors,
    Another,   ///< what is read is something else than was asked for
    ForeignId  ///< stamped with the id of the request before
};

enum class CloseWhen { Never, Before, Mid, After };

struct Action {
    AnswerKind answer = AnswerKind::Normal;
    std::uint32_t delayMs = 0;
    std::uint32_t hangMs = 0;                ///< QOR does nothing at all for so long
    std::optional<std::uint32_t> ackStatus;  ///< instead of 1 in an acknowledgement
    std::optional<WindowAnswer> windowAnswer;
    std::optional<std::uint32_t> splitAfterBytes;
    std::uint32_t gapMs = 0;
    bool mergeWithNext = false;
    std::uint32_t duplicates = 0;
    std::uint32_t duplicateAfterMs = 0;  ///< each so long behind the one before
    bool afterNext = false;              ///< it waits for the next answer, and goes behind that
    std::string note;                    ///< for the log, each time the rule decides
    CloseWhen close = CloseWhen::Never;
    std::string rawBefore;  ///< bytes sent in front of the answer
    std::optional<BootstrapPlan> bootstrap;
    std::vector<TimedEffect> then;
};

/// What a rule can look at in a request.
struct RequestFacts {
    CommandId id = CommandId::Ping;
    std::optional<std::uint32_t> operation;
    std::string name;
    std::optional<std::uint32_t> index;
};

struct Match {
    std::optional<CommandId> id;
    std::optional<std::uint32_t> operation;
    std::optional<std::string> name;
    std::optional<std::uint32_t> index;
    std::optional<std::uint32_t> nth;    ///< only the nth request that the rest matches, from 1
    std::optional<std::uint32_t> every;  ///< only each such request whose number it divides

    bool fits(const RequestFacts& facts) const;
    bool fitsCount(std::uint32_t count) const;
};

struct Rule {
    Match match;
    Action action;
};

enum class Since { Start, Client, Connect };

struct ScheduledEffect {
    Since since = Since::Start;
    TimedEffect timed;
};

/// Behaviours as data. The first rule that fits a request decides; every rule counts its own fits.
class Script {
public:
    Script() = default;
    Script(std::vector<Rule> rules, std::vector<ScheduledEffect> scheduled,
           std::optional<BootstrapPlan> bootstrap);

    const Action& actionFor(const RequestFacts& facts);
    std::vector<TimedEffect> scheduledSince(Since since) const;
    const std::optional<BootstrapPlan>& bootstrap() const { return bootstrap_; }

private:
    std::vector<Rule> rules_;
    std::vector<std::uint32_t> counts_;
    std::vector<ScheduledEffect> scheduled_;
    std::optional<BootstrapPlan> bootstrap_;
    Action normal_;
};

}  // namespace simulator
