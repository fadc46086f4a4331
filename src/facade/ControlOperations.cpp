#include <utility>

#include "facade/CmdData.h"
#include "facade/ParamLines.h"
#include "facade/QorControlFacade.h"
#include "facade/Text.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;
using Impl = QorControlFacade::Impl;

namespace {

/// One direction of direct control, as it differs from the other.
struct ControlWords {
    std::uint32_t kind;
    const char* operation;
    const char* succeeded;
    const char* failed;
};

constexpr ControlWords starting{Impl::kindStartDirectCtrl, "startDirectCtrl", "Start",
                                "FAILED START_DIRECTCTRL-param(%s), t: %d ms"};
constexpr ControlWords stopping{Impl::kindStopDirectCtrl, "stopDirectCtrl", "Stop",
                                "FAILED STOP_DIRECTCTRL-param(%s), t: %d ms"};

bool control(Impl& impl, AnswerTable& answers, const ControlWords& words, const std::string& name,
             unsigned int timeoutMs) {
    TimedCall call(impl, answers);
    if (call.run(words.kind, std::make_shared<Impl::CmdDataParamData>(name, timeoutMs),
                 doubledWait(timeoutMs))) {
        trace(libraryModule, tracelog::information, 0, "OK on %s DirectCtrl: %s , t: %d ms\n",
              words.succeeded, name.c_str(), call.elapsedMs());
        return true;
    }
    paramlines::traceFailure(words.operation, name, call);
    paramlines::logFailure(impl, words.failed, name, call);
    return false;
}

/// Each value of a group as the trace shows it: the first of its array, under its name.
std::string ofGroup(const std::vector<std::string>& names,
                    const std::vector<std::vector<double>>& values) {
    std::string joined;
    for (std::size_t i = 0; i < values.size() && !text::fillsLine(joined); ++i) {
        const char* const name = i < names.size() ? names[i].c_str() : "";
        joined += values[i].empty() ? text::piece<1000>("data[%s]=<empty> , ", name)
                                    : text::piece<1000>("data[%s]=%g , ", name, values[i].front());
    }
    return joined;
}

std::string joined(const std::vector<std::string>& names) {
    std::string all;
    for (const std::string& name : names) all += name + " , ";
    return all;
}

}  // namespace

bool QorControlFacade::setDynamicData(const std::string& name, const std::string& value,
                                      unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    const auto request = std::make_shared<Impl::CmdDataParamData>(name, timeoutMs);
    request->text = value;
    if (call.run(Impl::kindSetDynamicData, request, doubledWait(timeoutMs))) {
        paramlines::traceValue("set", name, value, call);
        return true;
    }
    paramlines::traceFailure("setDynamicData", name, call);
    paramlines::logFailure(*impl, "FAILED SET-DYN-param(%s), t: %d ms", name, call);
    return false;
}

bool QorControlFacade::startDirectCtrl(const std::string& name, unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    return impl->isOperating() && control(*impl, answers, starting, name, timeoutMs);
}

bool QorControlFacade::stopDirectCtrl(const std::string& name, unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    return impl->isOperating() && control(*impl, answers, stopping, name, timeoutMs);
}

bool QorControlFacade::getParamDataAtOnce(const std::vector<std::string>& names,
                                          std::vector<std::vector<double>>& values,
                                          unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    const auto request = std::make_shared<Impl::CmdParamDataAtOnce>(names, timeoutMs);
    if (auto* const answer = call.ask<Impl::CmdParamDataAtOnce>(Impl::kindGetParamDataAtOnce,
                                                                request, doubledWait(timeoutMs))) {
        values = std::move(answer->values);
        trace(libraryModule, tracelog::information, 0, "OK on getAtOnce: %s , t: %d ms\n",
              ofGroup(names, values).c_str(), call.elapsedMs());
        return true;
    }
    const std::string all = joined(names);
    trace(libraryModule, tracelog::warning, 0,
          "QorControlFacade::getParamDataAtOnce() failed on %s , t: %d ms\n", all.c_str(),
          call.elapsedMs());
    if (impl->eolLog != nullptr)
        impl->eolLog->error("FAILED GET_AT_ONCE-p(%s), t: %d ms", all.c_str(), call.elapsedMs());
    return false;
}
