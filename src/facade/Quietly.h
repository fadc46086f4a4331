#pragma once

#include <functional>
#include <memory>
#include <string>

#include "facade/FacadeState.h"
#include "facade/QorControlFacade.h"

/// Operations that dispatch the calling thread's window messages while they wait, without that.
namespace quietly {

/// The request keeps the monitor. `isWanted` is asked on the calling thread all the while: a
/// connect that is not wanted any more is left out if the agent has not begun it.
bool connect(const FacadeState& state, const QorControlFacade::EcuConnect& settings,
             QorControlFacade::EcuConnect::ConnType type, std::shared_ptr<IProgressMonitor> monitor,
             const std::function<bool()>& isWanted);

bool setEcuSegment(const FacadeState& state, const std::string& segment, bool flag);

}  // namespace quietly
