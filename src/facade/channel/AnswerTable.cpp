#include "facade/channel/AnswerTable.h"

#include <utility>

namespace channel {

std::shared_ptr<AnswerQueue> AnswerTable::take() {
    std::shared_ptr<AnswerQueue> queue = queues_.exchange(nullptr);
    if (queue == nullptr) return std::make_shared<AnswerQueue>(1);
    // A signal without an answer ends a wait early, which costs less, and less often, than a call
    // of the system here.
    if (!queue->isEmpty()) queue->clear();
    queue->notePresent(qorcontrol::Cause::none);
    return queue;
}

void AnswerTable::giveBack(std::shared_ptr<AnswerQueue> queue) {
    queues_.exchange(std::move(queue));
}

}  // namespace channel
