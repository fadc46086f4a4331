#include "facade/CmdData.h"
#include "facade/Posting.h"
#include "facade/QorControlFacade.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;
using Impl = QorControlFacade::Impl;

bool QorControlFacade::startParamRead(ThreadSafeQueue<std::vector<ParamValue>>* queue,
                                      const std::vector<std::string>& names) const {
    const auto impl = impl_->shared_from_this();
    std::string listed;
    for (const std::string& name : names) listed += name + "\n";
    trace(libraryModule, tracelog::information, 0, "QorControlFacade::paramStartRead(%s)\n",
          listed.c_str());
    if (queue == nullptr) return true;
    const common::LockGuard guard(impl->stateLock);
    impl->repeatReads[queue] = Impl::RepeatRead{names, false, 0};
    return true;
}

bool QorControlFacade::stopParamRead(ThreadSafeQueue<std::vector<ParamValue>>* queue) const {
    const auto impl = impl_->shared_from_this();
    trace(libraryModule, tracelog::information, 0, "%s", "QorControlFacade::paramStopAllRead()\n");
    Impl::RepeatRead stopped;
    {
        const common::LockGuard guard(impl->stateLock);
        const auto found = impl->repeatReads.find(queue);
        if (found == impl->repeatReads.end()) return true;
        stopped = std::move(found->second);
        impl->repeatReads.erase(found);
    }
    if (!stopped.prepared) return true;
    return impl->isOperating() &&
           postOnly(*impl, Impl::kindStopParamRead,
                    std::make_shared<Impl::CmdRepeatRead>(std::move(stopped.names), stopped.epoch));
}

bool QorControlFacade::startDtcRead(ThreadSafeQueue<std::vector<DtcDescription>>* queue,
                                    unsigned int timeoutMs, unsigned int periodMs) const {
    const auto impl = impl_->shared_from_this();
    return impl->isOperating() &&
           postOnly(*impl, Impl::kindStartDtcRead,
                    std::make_shared<Impl::CmdDataDtc>(queue, timeoutMs, periodMs));
}

bool QorControlFacade::stopDtcRead() const {
    const auto impl = impl_->shared_from_this();
    return impl->isOperating() &&
           postOnly(*impl, Impl::kindStopDtcRead, std::make_shared<Impl::CmdDataDtc>());
}
