#include "facade/ParamLines.h"

#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;

namespace paramlines {

void traceFailure(const char* operation, const std::string& name, const TimedCall& call) {
    trace(libraryModule, tracelog::warning, 0,
          "QorControlFacade::%s() failed on param: %s , t: %d ms\n", operation, name.c_str(),
          call.elapsedMs());
}

void logFailure(const QorControlFacade::Impl& impl, const char* format, const std::string& name,
                const TimedCall& call) {
    if (impl.eolLog != nullptr) impl.eolLog->error(format, name.c_str(), call.elapsedMs());
}

void traceValue(const char* what, const std::string& name, const std::string& value,
                const TimedCall& call) {
    trace(libraryModule, tracelog::information, 0, "OK on %s: %s [%s], t: %d ms\n", what,
          name.c_str(), value.c_str(), call.elapsedMs());
}

}  // namespace paramlines
