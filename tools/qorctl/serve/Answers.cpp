#include "serve/Answers.h"

#include <exception>
#include <new>
#include <utility>

#include "serve/rpc/Message.h"

namespace qorctl::serve {

using nlohmann::json;

Answers::Answers(bool isBatch, std::size_t open, Reply reply)
    : isBatch_(isBatch), open_(open), reply_(std::move(reply)) {}

void Answers::add(json response) {
    json whole;
    try {
        const std::lock_guard<std::mutex> guard(mutex_);
        if (!response.is_null()) responses_.push_back(std::move(response));
        if (--open_ != 0) return;
        if (!responses_.empty())
            whole = isBatch_ ? json(std::move(responses_)) : std::move(responses_.front());
    } catch (const std::bad_alloc&) {
        whole = responseOf(nullptr, Failure{RpcCode::internalError, "too little memory"});
    }
    reply_(whole);
}

Pending::Pending(std::shared_ptr<Answers> answers, json id, bool isNotification)
    : answers_(std::move(answers)), id_(std::move(id)), isNotification_(isNotification) {}

Pending::~Pending() {
    try {
        if (answers_) answer(Failure{RpcCode::ending, "the server ends, or the client has left"});
    } catch (const std::exception&) {
        // Without memory not even that can be said.
    }
}

void Pending::answer(json result) {
    add(isNotification_ ? json() : responseOf(id_, std::move(result)));
}

void Pending::answer(const Failure& failure) {
    add(isNotification_ ? json() : responseOf(id_, failure));
}

void Pending::add(json response) {
    std::exchange(answers_, nullptr)->add(std::move(response));
}

}  // namespace qorctl::serve
