#pragma once

#include <string>

#include "facade/TimedCall.h"

/// The log lines that the operations on one parameter share.
namespace paramlines {

/// "QorControlFacade::<operation>() failed on param: ..." in the trace.
void traceFailure(const char* operation, const std::string& name, const TimedCall& call);

/// "FAILED <word>-param(...)" in the host's log, if there is one.
void logFailure(const QorControlFacade::Impl& impl, const char* word, const std::string& name,
                const TimedCall& call);

/// "OK on <what>: <name> [<value>]" in the trace.
void traceValue(const char* what, const std::string& name, const std::string& value,
                const TimedCall& call);

}  // namespace paramlines
