#pragma once

#include <string>

#include "facade/TimedCall.h"

/// The log lines that the operations on one parameter share.
namespace paramlines {

/// "QorControlFacade::<operation>() failed on param: ..." in the trace.
void traceFailure(const TimedCallBase& call, const std::string& name);

/// A failure in the host's log, if there is one. `format` takes the name and the elapsed time;
/// hosts may file by it, so each operation has a whole one of its own.
void logFailure(const TimedCallBase& call, const char* format, const std::string& name);

/// "OK on <what>: <name> [<value>]" in the trace.
void traceValue(const TimedCallBase& call, const char* what, const std::string& name,
                const std::string& value);

}  // namespace paramlines
