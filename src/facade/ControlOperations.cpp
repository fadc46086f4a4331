#include <utility>

#include "facade/FacadeImpl.h"
#include "facade/ParamLines.h"
#include "facade/QorControlFacade.h"
#include "facade/Text.h"
#include "trace/OneLine.h"
#include "trace/Trace.h"

using channel::Kind;
using tracelog::libraryModule;
using tracelog::oneLine;
using tracelog::trace;

namespace {

/// What one direction of direct control says.
struct ControlWords {
    const char* succeeded;
    const char* failed;
};

constexpr ControlWords starting{"Start", "FAILED START_DIRECTCTRL-param(%s), t: %d ms"};
constexpr ControlWords stopping{"Stop", "FAILED STOP_DIRECTCTRL-param(%s), t: %d ms"};

template <Kind kind>
bool control(TimedCall<kind> call, const ControlWords& words, const std::string& name,
             unsigned int timeoutMs) {
    if (call.run(name, timeoutMs)) {
        trace(libraryModule, tracelog::information, 0, "OK on %s DirectCtrl: %s , t: %d ms\n",
              words.succeeded, oneLine(name).c_str(), call.elapsedMs());
        return true;
    }
    if (call.hasFailed()) {
        paramlines::traceFailure(call, name);
        paramlines::logFailure(call, words.failed, name);
    }
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
    TimedCall<Kind::setDynamicData> call(*impl_, timeoutMs);
    if (call.run(name, value, timeoutMs)) {
        paramlines::traceValue(call, "set", name, value);
        return true;
    }
    if (call.hasFailed()) {
        paramlines::traceFailure(call, name);
        paramlines::logFailure(call, "FAILED SET-DYN-param(%s), t: %d ms", name);
    }
    return false;
}

bool QorControlFacade::startDirectCtrl(const std::string& name, unsigned int timeoutMs) const {
    return control<Kind::startDirectCtrl>({*impl_, timeoutMs}, starting, name, timeoutMs);
}

bool QorControlFacade::stopDirectCtrl(const std::string& name, unsigned int timeoutMs) const {
    return control<Kind::stopDirectCtrl>({*impl_, timeoutMs}, stopping, name, timeoutMs);
}

bool QorControlFacade::getParamDataAtOnce(const std::vector<std::string>& names,
                                          std::vector<std::vector<double>>& values,
                                          unsigned int timeoutMs) const {
    TimedCall<Kind::getParamDataAtOnce> call(*impl_, timeoutMs);
    if (auto* const answer = call.ask(names, timeoutMs)) {
        values = std::move(answer->values);
        trace(libraryModule, tracelog::information, 0, "OK on getAtOnce: %s , t: %d ms\n",
              oneLine(ofGroup(names, values)).c_str(), call.elapsedMs());
        return true;
    }
    if (!call.hasFailed()) return false;
    const std::string all = joined(names);
    trace(libraryModule, tracelog::warning, 0, "QorControlFacade::%s() failed on %s , t: %d ms\n",
          call.name(), oneLine(all).c_str(), call.elapsedMs());
    if (call.eolLog() != nullptr)
        call.eolLog()->error("FAILED GET_AT_ONCE-p(%s), t: %d ms", all.c_str(), call.elapsedMs());
    return false;
}
