#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "facade/Call.h"
#include "facade/channel/AnswerTable.h"

/// The course of every operation that waits for its answer within a time: note the time, see that
/// there is an agent, find the calling thread's answer queue, post the request, wait for the
/// answer, and give up one that does not come: then the answer goes astray, and what the agent has
/// not begun for this caller it does not begin any more. An operation adds only its payload, its
/// results and its lines, which tell nothing of a call that found no agent.
///
/// This is what does not depend on the operation; see TimedCall.
class TimedCallBase : public Call {
public:
    /// Gives up an answer that has not come.
    ~TimedCallBase();
    TimedCallBase(const TimedCallBase&) = delete;
    TimedCallBase& operator=(const TimedCallBase&) = delete;

    /// As the lines print them.
    int elapsedMs() const { return static_cast<int>(Call::elapsedMs()); }

    /// The operation's, as the lines print it.
    const char* name() const { return name_; }

protected:
    bool wasPosted() const { return queue_ != nullptr; }

    TimedCallBase(const FacadeState& state, channel::AnswerTable& answers, const char* name);

    void post(channel::Kind kind, std::shared_ptr<channel::CmdData> request);
    /// As if nothing had been posted, because nobody is there; false then. True if there was
    /// somebody who has begun with it, or answered it.
    bool takeBack();

    /// Waits for the answer; true if it came and tells success. A caller that waits no time at all
    /// waits for nobody: its request is carried out whenever the agent comes to it.
    bool await(std::uint32_t waitMs);

    /// Of the answer that came; null if it has none.
    channel::CmdData* answerData() const { return response_.data.get(); }

private:
    bool popWithin(std::uint32_t waitMs);
    /// Always false.
    bool failWithoutWaiting();

    channel::AnswerTable& answers_;
    const char* const name_;
    std::shared_ptr<channel::AnswerQueue> queue_;
    bool waits_ = true;
    bool isLastLook_ = false;  // the agent has ended: what is not there will not come
    bool answered_ = false;
    channel::CmdResponse response_;
};

/// A call of one operation of the table:
///
///     TimedCall<channel::Kind::pingQor> call(*impl_, timeoutMs);
///     if (call.run(timeoutMs)) return true;  // what `run` takes makes the payload
///     if (call.hasFailed()) trace(...);
///     return false;
template <channel::Kind kind>
class TimedCall : public TimedCallBase {
    using Operation = channel::Operation<kind>;
    using Data = typename Operation::Data;
    using Wait = channel::Wait;
    static constexpr bool isAsLongAsTheCallerSays =
        Operation::wait == Wait::twice || Operation::wait == Wait::once;

public:
    TimedCall(const FacadeState& state, unsigned int timeoutMs)
        : TimedCallBase(state, answers(), Operation::name),
          waitMs_(channel::waitMs(Operation::wait, timeoutMs)) {
        static_assert(isAsLongAsTheCallerSays, "see the table");
    }
    explicit TimedCall(const FacadeState& state)
        : TimedCallBase(state, answers(), Operation::name),
          waitMs_(channel::waitMs(Operation::wait, 0)) {
        static_assert(Operation::wait == Wait::threeSeconds, "see the table");
    }

    /// Posts the request; false if there is no agent. The agent is at it already while the system
    /// is asked whether its thread still runs; but for a call that does not wait, which must not
    /// give it that time.
    template <class... Args>
    bool post(Args&&... payload) {
        const bool asksFirst = waitMs_ == 0;
        if (asksFirst ? !isOperating() : !mayBeOperating()) return false;
        send(std::forward<Args>(payload)...);
        return asksFirst || isOperating() || takeBack();
    }
    /// The same, for who has just seen that there is one.
    template <class... Args>
    void send(Args&&... payload) {
        request_ = std::make_shared<Data>(std::forward<Args>(payload)...);
        TimedCallBase::post(kind, request_);
    }

    /// Waits for what was posted and gives the results, which are the caller's then: what is taken
    /// out of them does not live on in the answer queue's slot. They are in the request's own
    /// payload where the answer has none. Null after a failure, and an answer of another type is
    /// one.
    Data* await() {
        if (TimedCallBase::await(waitMs_)) takeResults();
        return results_;
    }

    /// Posts and waits.
    template <class... Args>
    Data* ask(Args&&... payload) {
        return post(std::forward<Args>(payload)...) ? await() : nullptr;
    }
    template <class... Args>
    bool run(Args&&... payload) {
        return ask(std::forward<Args>(payload)...) != nullptr;
    }

    /// What was posted.
    const Data& request() const { return *request_; }

    /// The agent was asked, and it did not work: that is to be told. A call that found no agent
    /// fails without a line.
    bool hasFailed() const { return wasPosted() && results_ == nullptr; }

private:
    void takeResults() {
        results_ = answerData() == nullptr ? request_.get() : dynamic_cast<Data*>(answerData());
        if (results_ == nullptr) note({qorcontrol::Cause::badAnswer, "", false});
    }

    /// One per operation, for the whole process.
    static channel::AnswerTable& answers() {
        static channel::AnswerTable table;
        return table;
    }

    const std::uint32_t waitMs_;
    std::shared_ptr<Data> request_;
    Data* results_ = nullptr;
};
