#pragma once

// By its bare name, which is how hosts have it on their path.
#include <QorControlFacade.h>

#include "qorcontrol/Export.h"

/// Operations that `QorControlFacade` only posts, waited for: true if QOR has carried them out.
/// They wait without a time limit of their own, until QOR has answered or its time is over, or the
/// library's agent has ended, and dispatch no window messages meanwhile: a user-interface thread
/// should not call them. They write the same lines as their namesakes; `lastOutcome` tells why
/// something did not work.
namespace qorcontrol {

/// See `QorControlFacade::openModel`. QOR has 3 s to end the connection to the ECU, 5 s to end its
/// work and 90 s to open the model.
QOR_API bool openModelAndWait(const QorControlFacade& facade,
                              const QorControlFacade::ModelDescription& model);

/// See `QorControlFacade::connectCanBus`. QOR has 10 s.
QOR_API bool connectCanBusAndWait(const QorControlFacade& facade,
                                  const QorControlFacade::CanBusConnect& settings,
                                  QorControlFacade::EcuConnect::ConnType type);

}  // namespace qorcontrol
