#include "cinterface/Session.h"

#include <atomic>
#include <iterator>
#include <new>
#include <utility>

#include "cinterface/Process.h"
#include "cinterface/Refusal.h"
#include "cinterface/Shell.h"
#include "cinterface/Stream.h"
#include "facade/SinkStreams.h"
#include "qorcontrol/Sleep.h"

namespace cinterface {
namespace {

/// So long a connect may take to notice that its agent has ended.
constexpr unsigned int connectEndMs = 2000;

std::atomic<std::uint64_t> sessionCount{0};

/// For what has to end, whatever there is no memory for.
template <class Step>
void inSpiteOfMemory(Step&& step) noexcept {
    try {
        step();
    } catch (const std::bad_alloc&) {
        // What it was to tell anybody is not told; what comes next still is done.
    }
}

/// Others wait for theirs by sleeping: a lock must not be held so long.
class Turn {
public:
    explicit Turn(std::atomic<bool>& isTaken) : isTaken_(isTaken) {
        while (isTaken_.exchange(true)) common::sleepMs(1);
    }
    ~Turn() { isTaken_ = false; }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    std::atomic<bool>& isTaken_;
};

}  // namespace

Session::Session(const std::string& settingsPath, unsigned int readPeriodMs,
                 const std::string& hostPath)
    : serial_(++sessionCount),
      facade_(settingsPath, &log_, readPeriodMs, hostPath),
      channel_(state().channel) {
    channel_->areWaitsWatchful = true;
    const BoxPolicy policy = *process().boxPolicy.lock();  // two locks are never held at once
    setBoxPolicy(policy);
}

void Session::close() {
    endStreams();
    endCodes();
    channel_->messageBoxes.close();
    const auto connect = lastConnect();
    if (connect != nullptr) connect->cancel();
    inSpiteOfMemory([&] { facade_.shutdown(); });
    if (connect != nullptr) connect->awaitEnd(connectEndMs);
    log_.replace(nullptr, nullptr);
    progress_->replace(nullptr, nullptr);
    results_.close();
}

void Session::setBoxPolicy(const BoxPolicy& policy) {
    channel_->messageBoxes.setPolicy(policy.policy, policy.choice, policy.askMs);
}

std::shared_ptr<const Result> Session::lastResult() const {
    const auto& places = process().threads.get().results;
    const auto own = places.find(serial_);
    return own == places.end() ? nullptr : own->second->get();
}

std::shared_ptr<const Result> Session::keep(Result result) {
    auto kept = std::make_shared<const Result>(std::move(result));
    auto& places = process().threads.get().results;
    auto own = places.find(serial_);
    if (own == places.end()) {
        // One of a handle that has been closed is of no use any more.
        for (auto place = places.begin(); place != places.end();)
            place = place->second->isClosed() ? places.erase(place) : std::next(place);
        own = places.emplace(serial_, std::make_shared<ResultPlace>()).first;
        results_.add(own->second);
    }
    own->second->put(kept);
    return kept;
}

std::shared_ptr<ConnectRun> Session::startConnect(QorControlFacade::EcuConnect settings,
                                                  QorControlFacade::EcuConnect::ConnType type) {
    auto run = std::make_shared<ConnectRun>(std::move(settings), type, *channel_, progress_);
    if (!placeConnect(run)) refuse(Cause::wrongOrder, "a connect of this handle runs already");
    run->start(shared_from_this());
    return run;
}

bool Session::placeConnect(std::shared_ptr<ConnectRun> run) {
    const auto present = connect_.lock();
    if (*present != nullptr && (*present)->isRunning()) return false;
    present->swap(run);
    return true;
}

Outcome Session::agentsEnd() const {
    const auto end = channel_->agent.end();
    if (end == nullptr) return failure(Cause::agentEnded, "");
    Outcome outcome = failure(end->cause, end->reason);
    if (*end->check != '\0') outcome.check = end->check;
    return outcome;
}

std::uint32_t Session::startStream(const std::vector<std::string>& names, unsigned int slots) {
    if (!isOperating()) throw Refusal{agentsEnd()};
    const auto ring = std::make_shared<ValueRing>(slots, names.size());
    const auto stream = std::make_shared<Stream>(weak_from_this(), ring);
    const std::uint32_t number = process().streams.add(stream);
    if (number == 0) throw Refusal{systemFailure("there is no room for another stream")};
    try {
        if (!noteStream(number)) refuseHandle();
        sinkstreams::startParamRead(state(), ring, names);
    } catch (...) {
        process().streams.remove(number);
        streams_.lock()->numbers.erase(number);
        throw;
    }
    return number;
}

/// False once the handle is being closed.
bool Session::noteStream(std::uint32_t number) {
    const auto streams = streams_.lock();
    if (streams->closed) return false;
    streams->numbers.insert(number);
    return true;
}

Outcome Session::endStream(const channel::ValueSink& sink, std::uint32_t number, bool waits) {
    streams_.lock()->numbers.erase(number);
    if (!waits) {
        sinkstreams::stopParamRead(state(), &sink);
        return {};
    }
    const Outcome outcome = outcomeOf(sinkstreams::stopParamReadAndWait(state(), &sink));
    return outcome.cause == Cause::pushedOut ? outcome : Outcome();
}

void Session::endStreams() {
    std::set<std::uint32_t> numbers;
    {
        const auto streams = streams_.lock();
        streams->closed = true;
        streams->numbers.swap(numbers);
    }
    for (const std::uint32_t number : numbers)
        if (const auto stream = process().streams.remove(number))
            inSpiteOfMemory([&] { stream->end(number, false); });
}

Outcome Session::startCodes(unsigned int timeoutMs, unsigned int periodMs) {
    const Turn turn(areCodesDirected_);
    auto box = std::make_shared<CodeBox>();
    Outcome outcome = outcomeOf(sinkstreams::startDtcRead(state(), box, timeoutMs, periodMs));
    if (outcome.cause == Cause::none && !exchangeCodes(std::move(box))) refuseHandle();
    return outcome;
}

Outcome Session::stopCodes() {
    const Turn turn(areCodesDirected_);
    if (codes() == nullptr) return {};
    Outcome outcome = outcomeOf(sinkstreams::stopDtcRead(state()));
    // An agent that has ended reads none either.
    if (outcome.cause != Cause::none && isOperating()) return outcome;
    exchangeCodes(nullptr);
    return {};
}

/// False once the handle is being closed.
bool Session::exchangeCodes(std::shared_ptr<CodeBox> box) {
    {
        const auto codes = codes_.lock();
        if (codes->closed) return false;
        codes->box.swap(box);
    }
    if (box != nullptr) box->close();
    return true;
}

/// Without telling the agent, which is about to end.
void Session::endCodes() {
    std::shared_ptr<CodeBox> box;
    {
        const auto codes = codes_.lock();
        codes->closed = true;
        codes->box.swap(box);
    }
    if (box != nullptr) box->close();
}

}  // namespace cinterface
