#pragma once

#include <vector>

#include "facade/QorControlFacade.h"
#include "qorcontrol/ThreadSafeQueue.h"

/// The queues that streams fill; the host owns them.
namespace channel {

using ParamQueue = ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>>;
using DtcQueue = ThreadSafeQueue<std::vector<QorControlFacade::DtcDescription>>;

}  // namespace channel
