#include <utility>

#include "facade/FacadeImpl.h"
#include "facade/ParamLines.h"
#include "facade/QorControlFacade.h"
#include "facade/Text.h"
#include "facade/TimedCall.h"
#include "trace/Trace.h"

using channel::Kind;
using tracelog::libraryModule;
using tracelog::trace;

namespace {

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
    TimedCall<Kind::getParamDescription> call(*impl_);
    if (!call.isOperating()) return false;
    desc.name = name;
    call.send(name, desc);
    if (const auto* const answer = call.await()) {
        desc = answer->description;
        return true;
    }
    paramlines::traceFailure(call, name);
    return false;
}

bool QorControlFacade::getParamData(const std::string& name, std::vector<double>& values,
                                    std::vector<double>& second, std::vector<double>& third,
                                    unsigned int timeoutMs) const {
    TimedCall<Kind::getParamData> call(*impl_, timeoutMs);
    auto& shared = call.channel();
    if (!call.mayBeOperating()) return false;
    bool isMarked = false;
    if (shared.values.find(name, values, second, third, isMarked)) return call.succeed(isMarked);
    if (auto* const answer = call.ask(name, timeoutMs)) {
        values = answer->values.all();
        second = answer->second.all();
        third = answer->third.all();
        const std::string shown = text::ofValues(answer->values.all());
        shared.values.store(
            name, {std::move(answer->values), std::move(answer->second), std::move(answer->third),
                   answer->stamp, call.mayBelongToEarlier()});
        paramlines::traceValue(call, "get", name, shown);
        return true;
    }
    if (!call.hasFailed()) return false;
    paramlines::traceFailure(call, name);
    trace(libraryModule, tracelog::information, 0, "QorControlFacade::%s() isEcuOnline=%s\n",
          call.name(), shared.contact.isEcuOnline() ? "true" : "false");
    paramlines::logFailure(call, "FAILED GET-param(%s), t: %d ms", name);
    return false;
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
    TimedCall<Kind::setParamData> call(*impl_, timeoutMs);
    if (!call.mayBeOperating()) return false;
    channel::CachedValue sent{values, second, third, {}, false};
    if (call.run(name, sent.values, sent.second, sent.third, timeoutMs)) {
        paramlines::traceValue(call, "set", name, text::ofValues(values));
        sent.stamp = call.request().stamp;
        call.channel().values.store(name, std::move(sent));
        return true;
    }
    if (call.hasFailed()) {
        paramlines::traceFailure(call, name);
        paramlines::logFailure(call, "FAILED SET-param(%s), t: %d ms", name);
    }
    return false;
}
