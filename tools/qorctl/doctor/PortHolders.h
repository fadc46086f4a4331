#pragma once

#include <cstdint>

#include "doctor/Holder.h"
#include "doctor/TcpConnections.h"

namespace qorctl::doctor {

/// Who has a port of this machine.
struct PortHolders {
    Holders servers;  ///< who listens where a host at that address is taken
    Holders clients;  ///< who talks to them, at whatever address of this machine

    static PortHolders in(const TcpConnections& rows, std::uint32_t address, unsigned port);
};

}  // namespace qorctl::doctor
