#include "transport/PendingRequests.h"

#include <utility>

#include "common/Clock.h"

void PendingRequests::add(std::uint32_t requestId, unsigned int timeoutMs, CmdResultQueue* results,
                          std::shared_ptr<Departure> departure) {
    requests_.insert_or_assign(requestId, Request{common::Deadline::at(common::now() + timeoutMs),
                                                  results, std::move(departure)});
}

void PendingRequests::noteConnectionLost() {
    for (const auto& request : requests_)
        if (request.second.departure != nullptr) request.second.departure->note(Delivery::lost);
}

void PendingRequests::complete(std::uint32_t requestId, std::uint32_t status) {
    const auto found = requests_.find(requestId);
    if (found == requests_.end()) return;
    if (status == CmdResult::failure && found->second.departure != nullptr)
        found->second.departure->note(Delivery::refused);
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
