#include "facade/ParamLines.h"

#include "trace/OneLine.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::oneLine;
using tracelog::trace;

namespace paramlines {

void traceFailure(const TimedCallBase& call, const std::string& name) {
    trace(libraryModule, tracelog::warning, 0,
          "QorControlFacade::%s() failed on param: %s , t: %d ms\n", call.name(),
          oneLine(name).c_str(), call.elapsedMs());
}

void logFailure(const TimedCallBase& call, const char* format, const std::string& name) {
    if (call.eolLog() != nullptr) call.eolLog()->error(format, name.c_str(), call.elapsedMs());
}

void traceValue(const TimedCallBase& call, const char* what, const std::string& name,
                const std::string& value) {
    trace(libraryModule, tracelog::information, 0, "OK on %s: %s [%s], t: %d ms\n", what,
          oneLine(name).c_str(), oneLine(value).c_str(), call.elapsedMs());
}

}  // namespace paramlines
