#pragma once

#include <memory>

#include "common/PerThread.h"
#include "facade/channel/ProtocolCmd.h"

namespace channel {

/// The answer queues of one facade operation, one per calling thread, for the whole process.
class AnswerTable {
public:
    AnswerTable() = default;
    AnswerTable(const AnswerTable&) = delete;
    AnswerTable& operator=(const AnswerTable&) = delete;

    /// The calling thread's queue, without any answer that an earlier call left in it. Who waits
    /// for an answer has it for himself: whatever becomes of him, nobody else gets that answer.
    std::shared_ptr<AnswerQueue> take();

    /// Keeps an answered queue for the thread's next call. (One that is not given back is replaced
    /// by a new one then, so that no answer that is still to come can reach that call.)
    void giveBack(std::shared_ptr<AnswerQueue> queue);

private:
    common::PerThread<std::shared_ptr<AnswerQueue>> queues_;
};

}  // namespace channel
