#pragma once

#include <cstdint>

#include "common/TimeLimits.h"
#include "facade/channel/Operations.h"

/// What is made of the table of operations.
namespace channel {

/// What a request asks for, by the operation's name.
enum class Kind : std::uint32_t {
#define QOR_KIND(number, name, payload, wait, handler) name = (number),
    QOR_OPERATIONS(QOR_KIND)
#undef QOR_KIND
};

constexpr std::uint32_t descriptionWaitMs = 3000;

/// How long the facade waits for an answer.
enum class Wait {
    none,          ///< not at all: no answer is wanted
    unlimited,     ///< until it comes or the agent ends, dispatching window messages meanwhile
    twice,         ///< twice the caller's time-out: the agent may be busy with another request
    once,          ///< the caller's time-out as it is; stations have set theirs by it
    threeSeconds,  ///< whatever the caller says
};

/// Milliseconds for a caller's time-out. Doubling wraps around; "no limit" stays that.
constexpr std::uint32_t waitMs(Wait wait, std::uint32_t timeoutMs) {
    switch (wait) {
        case Wait::twice:
            return timeoutMs == common::noLimitMs ? timeoutMs : timeoutMs * 2u;
        case Wait::once:
            return timeoutMs;
        case Wait::threeSeconds:
            return descriptionWaitMs;
        case Wait::unlimited:
            return common::noLimitMs;
        case Wait::none:
            break;
    }
    return 0;
}

/// A row as whoever walks the table sees it.
struct OperationRow {
    Kind kind;
    const char* name;
    Wait wait;
};

constexpr OperationRow operations[] = {
#define QOR_ROW(number, name, payload, wait, handler) {Kind::name, #name, Wait::wait},
    QOR_OPERATIONS(QOR_ROW)
#undef QOR_ROW
};

/// The row of one kind, and the type of its payload.
template <Kind kind>
struct Operation;

#define QOR_OPERATION(number, operation, payload, waits, handler) \
    template <>                                                   \
    struct Operation<Kind::operation> {                           \
        using Data = payload;                                     \
        static constexpr const char* name = #operation;           \
        static constexpr Wait wait = Wait::waits;                 \
    };
QOR_OPERATIONS(QOR_OPERATION)
#undef QOR_OPERATION

}  // namespace channel
