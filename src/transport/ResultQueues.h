#pragma once

#include "transport/CmdResult.h"

/// The queue in which the calling thread awaits the results of its sends: one slot, made on first
/// use and kept until the process ends. It may hold a result that an earlier send no longer
/// awaited; such a result carries another request id.
CmdResultQueue& resultQueueOfThisThread();
