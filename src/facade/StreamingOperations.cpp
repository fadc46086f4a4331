#include "facade/Call.h"
#include "facade/FacadeImpl.h"
#include "facade/QorControlFacade.h"
#include "trace/Trace.h"

using channel::Kind;
using tracelog::libraryModule;
using tracelog::trace;

bool QorControlFacade::startParamRead(ThreadSafeQueue<std::vector<ParamValue>>* queue,
                                      const std::vector<std::string>& names) const {
    Call call(*impl_);
    std::string listed;
    for (const std::string& name : names) listed += name + "\n";
    trace(libraryModule, tracelog::information, 0, "QorControlFacade::paramStartRead(%s)\n",
          listed.c_str());
    if (queue != nullptr) call.channel().streams.add(queue, names);
    return true;
}

bool QorControlFacade::stopParamRead(ThreadSafeQueue<std::vector<ParamValue>>* queue) const {
    Call call(*impl_);
    trace(libraryModule, tracelog::information, 0, "%s", "QorControlFacade::paramStopAllRead()\n");
    auto stopped = call.channel().streams.remove(queue);
    if (!stopped || !stopped->prepared) return true;
    return call.isOperating() &&
           call.postUnanswered<Kind::stopParamRead>(std::move(stopped->names), stopped->epoch);
}

bool QorControlFacade::startDtcRead(ThreadSafeQueue<std::vector<DtcDescription>>* queue,
                                    unsigned int timeoutMs, unsigned int periodMs) const {
    return postOnly<Kind::startDtcRead>(*impl_, queue, timeoutMs, periodMs);
}

bool QorControlFacade::stopDtcRead() const {
    return postOnly<Kind::stopDtcRead>(*impl_);
}
