#pragma once

#include <string>

#include "Report.h"

/// What a process holds of the system.
struct Holdings {
    double memoryKb = 0;  ///< that it shares with nobody
    double handles = 0;
    double threads = 0;
};

/// What a host holds, in the order of its life.
struct HostLife {
    /// So many threads of its own, beside the one that has made the facade.
    static constexpr int moreThreads = 64;

    Holdings begin;      ///< no facade yet
    Holdings connected;  ///< settings read, the ECU connected
    Holdings used;       ///< after many requests
    Holdings bare;       ///< and with more threads that never call
    Holdings bareEnded;  ///< when those have ended
    Holdings calling;    ///< with as many that have made one call each
    Holdings ended;      ///< when those have ended
};

/// One line, for whoever has started the host.
std::string lineOf(const HostLife& life);
/// Throws nlohmann::json::exception if it is none.
HostLife lifeIn(const std::string& line);

/// `over` names the transport.
void addLife(const HostLife& life, int requests, const std::string& over, Report& report);
