#include <optional>
#include <utility>

#include "facade/AwaitedCall.h"
#include "facade/Call.h"
#include "facade/FacadeImpl.h"
#include "facade/QorControlFacade.h"
#include "facade/SinkStreams.h"
#include "trace/OneLine.h"
#include "trace/Trace.h"

using channel::Kind;
using tracelog::libraryModule;
using tracelog::oneLine;
using tracelog::trace;

namespace {

void traceStart(const std::vector<std::string>& names) {
    std::string listed;
    for (const std::string& name : names) listed.append(oneLine(name).c_str()) += '\n';
    trace(libraryModule, tracelog::information, 0, "QorControlFacade::paramStartRead(%s)\n",
          listed.c_str());
}

/// What QOR still is to be told, of whatever was registered at that address.
std::optional<channel::RepeatRead> takeOut(const Call& call, const void* target) {
    trace(libraryModule, tracelog::information, 0, "%s", "QorControlFacade::paramStopAllRead()\n");
    auto stopped = call.channel().streams.remove(target);
    if (stopped && !stopped->prepared) stopped.reset();
    return stopped;
}

bool stop(const FacadeState& state, const void* target) {
    Call call(state);
    auto stopped = takeOut(call, target);
    if (!stopped) return true;
    return call.isOperating() &&
           call.postUnanswered<Kind::stopParamRead>(std::move(stopped->asked), stopped->epoch);
}

}  // namespace

bool QorControlFacade::startParamRead(ThreadSafeQueue<std::vector<ParamValue>>* queue,
                                      const std::vector<std::string>& names) const {
    Call call(*impl_);
    traceStart(names);
    if (queue != nullptr) call.channel().streams.add(queue, names);
    return true;
}

bool QorControlFacade::stopParamRead(ThreadSafeQueue<std::vector<ParamValue>>* queue) const {
    return stop(*impl_, queue);
}

bool QorControlFacade::startDtcRead(ThreadSafeQueue<std::vector<DtcDescription>>* queue,
                                    unsigned int timeoutMs, unsigned int periodMs) const {
    return postOnly<Kind::startDtcRead>(*impl_, queue, timeoutMs, periodMs);
}

bool QorControlFacade::stopDtcRead() const {
    return postOnly<Kind::stopDtcRead>(*impl_);
}

namespace sinkstreams {

void startParamRead(const FacadeState& state, std::shared_ptr<channel::ValueSink> sink,
                    const std::vector<std::string>& names) {
    Call call(state);
    traceStart(names);
    call.channel().streams.add(std::move(sink), names);
}

bool stopParamRead(const FacadeState& state, const channel::ValueSink* sink) {
    return stop(state, sink);
}

bool stopParamReadAndWait(const FacadeState& state, const channel::ValueSink* sink) {
    AwaitedCall call(state);
    auto stopped = takeOut(call, sink);
    if (!stopped) return true;
    return call.isOperating() &&
           call.run<Kind::stopParamRead>(std::move(stopped->asked), stopped->epoch);
}

bool startDtcRead(const FacadeState& state, std::shared_ptr<channel::DtcSink> sink,
                  unsigned int timeoutMs, unsigned int periodMs) {
    AwaitedCall call(state);
    return call.isOperating() && call.run<Kind::startDtcRead>(std::move(sink), timeoutMs, periodMs);
}

bool stopDtcRead(const FacadeState& state) {
    AwaitedCall call(state);
    return call.isOperating() && call.run<Kind::stopDtcRead>();
}

}  // namespace sinkstreams
