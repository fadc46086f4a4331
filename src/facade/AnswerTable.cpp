#include "facade/AnswerTable.h"

#include <utility>

std::shared_ptr<AnswerTable::AnswerQueue> AnswerTable::take() {
    std::shared_ptr<AnswerQueue> queue = queues_.exchange(nullptr);
    if (queue == nullptr) return std::make_shared<AnswerQueue>(1);
    queue->clear();
    return queue;
}

void AnswerTable::giveBack(std::shared_ptr<AnswerQueue> queue) {
    queues_.exchange(std::move(queue));
}
