#include "transport/ResultQueues.h"

#include <memory>

#include "common/PerThread.h"

CmdResultQueue& resultQueueOfThisThread() {
    static common::PerThread<std::unique_ptr<CmdResultQueue>> table;
    std::unique_ptr<CmdResultQueue>& queue = table.ofThisThread();
    if (!queue) queue = std::make_unique<CmdResultQueue>(1);
    return *queue;
}
