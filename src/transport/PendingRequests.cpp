#include "transport/PendingRequests.h"

#include "common/Clock.h"

void PendingRequests::add(std::uint32_t requestId, unsigned int timeoutMs,
                          CmdResultQueue* results) {
    requests_.insert_or_assign(requestId,
                               Request{common::Deadline::at(common::now() + timeoutMs), results});
}

void PendingRequests::complete(std::uint32_t requestId, std::uint32_t status) {
    const auto found = requests_.find(requestId);
    if (found == requests_.end()) return;
    found->second.results->push(CmdResult{requestId, status});
    requests_.erase(found);
}

void PendingRequests::failExpired() {
    if (requests_.empty()) return;
    const common::Moment now = common::now();
    for (auto request = requests_.begin(); request != requests_.end();) {
        if (request->second.deadline.hasPassed(now)) {
            request->second.results->push(CmdResult{request->first, CmdResult::failure});
            request = requests_.erase(request);
        } else {
            ++request;
        }
    }
}
