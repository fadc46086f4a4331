#include "facade/AnswerTable.h"

// An entry is used by its own thread alone; the lock only guards the map, whose entries stay where
// they are.
std::unique_ptr<AnswerTable::AnswerQueue>& AnswerTable::entryOfThisThread() {
    const common::LockGuard guard(lock_);
    return queues_[common::currentThreadId()];
}

AnswerTable::AnswerQueue& AnswerTable::queueOfThisThread() {
    std::unique_ptr<AnswerQueue>& entry = entryOfThisThread();
    if (entry)
        entry->clear();
    else
        entry = std::make_unique<AnswerQueue>(1);
    return *entry;
}

std::unique_ptr<AnswerTable::AnswerQueue> AnswerTable::giveUpQueueOfThisThread() {
    return std::move(entryOfThisThread());
}
