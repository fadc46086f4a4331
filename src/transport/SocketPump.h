#pragma once

namespace common {
class Event;
}

/// Waits at most 1 ms for input on the calling thread's queue, or for `wakeUp` if it is given
/// (its signal is then taken), and dispatches the socket notifications, 64 at most, that are there.
/// One wait over both costs half of two waits one after the other. A quit message is posted again
/// and ends the pump.
void pumpSocketNotifications(const common::Event* wakeUp);
