#pragma once

#include <cstdint>
#include <memory>

#include "common/Interest.h"
#include "common/Verdict.h"
#include "facade/channel/OperationTable.h"
#include "qorcontrol/HostInterfaces.h"
#include "qorcontrol/ThreadSafeQueue.h"

namespace channel {

/// The agent's answer to one request.
struct CmdResponse {
    static constexpr std::uint32_t failure = 0;
    static constexpr std::uint32_t success = 1;

    std::uint32_t result = failure;
    /// Of the request's type; null where the request's own payload carries the results, or where
    /// there are none.
    std::shared_ptr<CmdData> data;
    common::Verdict verdict = {};  ///< why, of a failure
};

/// Where a caller waits for the answer to its request. The agent shares it: a caller that gives up
/// leaves it to whoever still holds the request, and uses another one from then on.
class AnswerQueue final : public ThreadSafeQueue<CmdResponse>, public common::Interest {
public:
    using ThreadSafeQueue::ThreadSafeQueue;
};

/// One request from the facade to the agent.
struct ProtocolCmd {
    Kind kind = Kind();
    std::shared_ptr<CmdData> data;
    std::shared_ptr<AnswerQueue> replyQueue;  ///< null: no answer is wanted
    IProgressMonitor* monitor = nullptr;      ///< the host's; not owned
    std::uint32_t number = 0;                 ///< see Backlog
};

}  // namespace channel
