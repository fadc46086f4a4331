#pragma once

#include <string_view>

#include "behaviour/Ecu.h"
#include "behaviour/Outcome.h"
#include "script/Script.h"

namespace simulator {

/// answerMs is the time at which the acknowledgement leaves. A connect starts then: what the client
/// hears of it before the acknowledgement would be lost on it.
Outcome kwpConnect(Ecu& ecu, std::string_view payload, const BootstrapPlan& plan,
                   std::uint64_t answerMs);
/// Whether the request asks for a connection (and not for a disconnection or the online state).
bool asksForConnection(std::string_view connectPayload);

Outcome ping(Ecu& ecu, std::string_view payload);
Outcome shutDown(Ecu& ecu, std::string_view payload);
Outcome selectSegment(Ecu& ecu, std::string_view payload);
Outcome startEdit(Ecu& ecu, std::string_view payload);
Outcome getHex(Ecu& ecu, std::string_view payload);
Outcome messageBoxAnswered(Ecu& ecu, std::string_view payload);

}  // namespace simulator
