#include "facade/AnswerTable.h"

// An entry is used by its own thread alone; the lock only guards the map, whose entries stay where
// they are.
std::shared_ptr<AnswerTable::AnswerQueue>& AnswerTable::entryOfThisThread() {
    const common::LockGuard guard(lock_);
    return queues_[common::currentThreadId()];
}

std::shared_ptr<AnswerTable::AnswerQueue> AnswerTable::queueOfThisThread() {
    std::shared_ptr<AnswerQueue>& entry = entryOfThisThread();
    if (entry)
        entry->clear();
    else
        entry = std::make_shared<AnswerQueue>(1);
    return entry;
}

void AnswerTable::forgetQueueOfThisThread() {
    entryOfThisThread().reset();
}
