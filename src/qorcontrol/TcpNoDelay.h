#pragma once

#include "qorcontrol/Export.h"

class QorControlFacade;

namespace qorcontrol {

/// Whether what the library sends over TCP leaves at once (the socket option "no delay"). It begins
/// without, as the system's defaults are.
///
/// For a QOR that acknowledges a request first and sends the data as a command of its own: the
/// library acknowledges that command, and with the defaults its next request then waits in the
/// socket until QOR's system has confirmed the acknowledgement, about 40 ms. Each read takes that
/// long; with the option it takes as long as QOR does. Where QOR sends the data as the answer it
/// changes nothing, nor over window messages.
///
/// Any thread may call it, at any time. It holds for the present connection, too, from the agent's
/// next request on. Throws nothing; tells nothing of `lastOutcome`.
QOR_API void setTcpNoDelay(const QorControlFacade& facade, bool isWanted);

}  // namespace qorcontrol
