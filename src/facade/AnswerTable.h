#pragma once

#include <map>
#include <memory>

#include "facade/FacadeImpl.h"

/// The answer queues of one facade operation, one per calling thread, for the whole process.
class AnswerTable {
public:
    using AnswerQueue = QorControlFacade::Impl::AnswerQueue;

    AnswerTable() = default;
    AnswerTable(const AnswerTable&) = delete;
    AnswerTable& operator=(const AnswerTable&) = delete;

    /// The calling thread's queue, without anything that an earlier call left in it.
    std::shared_ptr<AnswerQueue> queueOfThisThread();

    /// Takes the calling thread's queue out of the table: its next call gets a new one, so that
    /// no answer that is still to come can reach it.
    void forgetQueueOfThisThread();

private:
    std::shared_ptr<AnswerQueue>& entryOfThisThread();

    common::Lock lock_;
    std::map<unsigned int, std::shared_ptr<AnswerQueue>> queues_;
};
