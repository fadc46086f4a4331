#include <utility>

#include "facade/CmdData.h"
#include "facade/ParamLines.h"
#include "facade/QorControlFacade.h"
#include "facade/Text.h"
#include "facade/TimedCall.h"
#include "facade/ValueCache.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;
using Impl = QorControlFacade::Impl;

namespace {

constexpr std::uint32_t descriptionWaitMs = 3000;

/// A value as a character code: truncated toward zero, its low 8 bits. What no integer can hold
/// gives 0.
char asCharacter(double value) {
    constexpr double limit = 9007199254740992.0;  // 2^53: all integers below are exact
    if (!(value > -limit && value < limit)) return 0;
    return static_cast<char>(static_cast<unsigned char>(static_cast<long long>(value)));
}

}  // namespace

bool QorControlFacade::getParamDescription(const std::string& name,
                                           wex::ParamDescription& desc) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    desc.name = name;
    const auto request = std::make_shared<Impl::CmdDataParamInfo>(name, desc);
    if (const auto* const answer = call.ask<Impl::CmdDataParamInfo>(Impl::kindGetParamDescription,
                                                                    request, descriptionWaitMs)) {
        desc = answer->description;
        return true;
    }
    paramlines::traceFailure("getParamDescription", name, call);
    return false;
}

bool QorControlFacade::getParamData(const std::string& name, std::vector<double>& values,
                                    std::vector<double>& second, std::vector<double>& third,
                                    unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->mayBeOperating()) return false;
    TimedCall call(*impl, answers);
    if (valuecache::find(*impl, name, values, second, third)) return true;
    if (!impl->isOperating()) return false;
    const auto request = std::make_shared<Impl::CmdDataParamData>(name, timeoutMs);
    auto* const answer =
        call.ask<Impl::CmdDataParamData>(Impl::kindGetParamData, request, doubledWait(timeoutMs));
    if (answer == nullptr) {
        paramlines::traceFailure("getParamData", name, call);
        trace(libraryModule, tracelog::information, 0,
              "QorControlFacade::getParamData() isEcuOnline=%s\n",
              impl->isEcuOnline() ? "true" : "false");
        paramlines::logFailure(*impl, "FAILED GET-param(%s), t: %d ms", name, call);
        return false;
    }
    values = answer->values;
    second = answer->second;
    third = answer->third;
    const std::string shown = text::ofValues(answer->values);
    valuecache::store(*impl, name,
                      {std::move(answer->values), std::move(answer->second),
                       std::move(answer->third), answer->stamp});
    paramlines::traceValue("get", name, shown, call);
    return true;
}

bool QorControlFacade::getParamData(const std::string& name, std::vector<double>& values,
                                    unsigned int timeoutMs) const {
    std::vector<double> second;
    std::vector<double> third;
    return getParamData(name, values, second, third, timeoutMs);
}

bool QorControlFacade::getParamDataAsString(const std::string& name, std::string& text,
                                            unsigned int timeoutMs) const {
    std::vector<double> values;
    if (!getParamData(name, values, timeoutMs)) return false;
    text.assign(values.size(), '\0');
    for (std::size_t i = 0; i < values.size(); ++i) text[i] = asCharacter(values[i]);
    return true;
}

bool QorControlFacade::setParamData(const std::string& name, const std::vector<double>& values,
                                    const std::vector<double>& second,
                                    const std::vector<double>& third,
                                    unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    const auto request = std::make_shared<Impl::CmdDataParamData>(name, timeoutMs);
    request->values = values;
    request->second = second;
    request->third = third;
    if (!call.run(Impl::kindSetParamData, request, doubledWait(timeoutMs))) {
        paramlines::traceFailure("setParamData", name, call);
        paramlines::logFailure(*impl, "FAILED SET-param(%s), t: %d ms", name, call);
        return false;
    }
    paramlines::traceValue("set", name, text::ofValues(values), call);
    valuecache::store(*impl, name, {values, second, third, request->stamp});
    return true;
}
