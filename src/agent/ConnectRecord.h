#pragma once

#include "facade/QorControlFacade.h"
#include "protocol/Records.h"

/// What QOR is told to connect: the host's settings in the record's order, with the connection
/// mode that belongs to `type`. The path of the security library is passed on for SecurityAccess
/// only, resolved against the executable's directory.
protocol::KwpConnect makeConnectRecord(const QorControlFacade::EcuConnect& settings,
                                       QorControlFacade::EcuConnect::ConnType type);
