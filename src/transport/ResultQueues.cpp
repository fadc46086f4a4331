#include "transport/ResultQueues.h"

#include <map>
#include <memory>

#include "common/Thread.h"

namespace {

/// Thread ids are reused by the system, so a queue may pass from an ended thread to a new one.
struct Table {
    common::Lock lock;
    std::map<unsigned int, std::unique_ptr<CmdResultQueue>> queues;
};

Table& processTable() {
    static Table table;
    return table;
}

}  // namespace

CmdResultQueue& resultQueueOfThisThread() {
    Table& table = processTable();
    const common::LockGuard guard(table.lock);
    std::unique_ptr<CmdResultQueue>& queue = table.queues[common::currentThreadId()];
    if (!queue) queue = std::make_unique<CmdResultQueue>(1);
    return *queue;
}
