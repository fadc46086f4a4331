#include "transport/ResultQueues.h"

#include <memory>

#include "common/PerThread.h"

CmdResultQueue& resultQueueOfThisThread() {
    static common::PerThread<std::shared_ptr<CmdResultQueue>> table;
    std::shared_ptr<CmdResultQueue> queue = table.get();
    if (queue == nullptr) {
        queue = std::make_shared<CmdResultQueue>(1);
        table.exchange(queue);
    }
    return *queue;  // the table holds it
}
