#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "common/Moment.h"
#include "facade/AnswerTable.h"
#include "facade/FacadeImpl.h"

/// How long a facade operation waits for a time-out of `timeoutMs`: twice as long, in wrap-around
/// arithmetic, because the agent may be busy with another request; 0xFFFFFFFF stays "no limit".
constexpr std::uint32_t doubledWait(std::uint32_t timeoutMs) {
    return timeoutMs == 0xFFFFFFFFu ? timeoutMs : timeoutMs * 2u;
}

/// The shape that all timed operations share: note the time, find the calling thread's answer
/// queue, post the request, wait for the answer, and give up one that does not come in time: then
/// the answer goes astray, and what the agent has not begun for this caller it does not begin any
/// more. An operation adds only its payload, its results and its log lines.
class TimedCall {
public:
    using Impl = QorControlFacade::Impl;

    /// Starts the clock of the call.
    TimedCall(Impl& impl, AnswerTable& answers);
    /// Gives up an answer that has not come.
    ~TimedCall();
    TimedCall(const TimedCall&) = delete;
    TimedCall& operator=(const TimedCall&) = delete;

    /// Posts the request.
    void post(std::uint32_t kind, std::shared_ptr<Impl::CmdData> request);

    /// Waits for the answer; true if it came and tells success. A caller that waits no time at all
    /// waits for nobody: its request is carried out whenever the agent comes to it.
    bool await(std::uint32_t waitMs);

    /// Posts and waits.
    bool run(std::uint32_t kind, std::shared_ptr<Impl::CmdData> request, std::uint32_t waitMs);

    /// After a success: the payload that carries the results, which is the request's own where
    /// the answer has none. Null if it is not a `Data`.
    template <class Data>
    Data* results() const {
        const auto& carrier = response_.data ? response_.data : request_;
        return dynamic_cast<Data*>(carrier.get());
    }

    /// Posts, waits, and gives the results of a success, which are the caller's then; null after a
    /// failure. What is taken out of them does not live on in the answer queue's slot.
    template <class Data>
    Data* ask(std::uint32_t kind, std::shared_ptr<Impl::CmdData> request, std::uint32_t waitMs) {
        return run(kind, std::move(request), waitMs) ? results<Data>() : nullptr;
    }

    /// Milliseconds since the start, as the log lines print them.
    int elapsedMs() const;

private:
    bool popWithin(std::uint32_t waitMs);

    Impl& impl_;
    AnswerTable& answers_;
    const common::Moment start_;
    std::shared_ptr<Impl::AnswerQueue> queue_;
    bool waits_ = true;
    bool answered_ = false;
    std::shared_ptr<Impl::CmdData> request_;
    Impl::CmdResponse response_;
};
