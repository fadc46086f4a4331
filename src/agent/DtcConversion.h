#pragma once

#include <vector>

#include "facade/QorControlFacade.h"
#include "protocol/Records.h"

/// QOR's trouble codes as the host knows them.
std::vector<QorControlFacade::DtcDescription> toDescriptions(
    std::vector<protocol::DtcRecord> records);
