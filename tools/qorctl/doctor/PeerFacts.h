#pragma once

#include <string>

#include "doctor/Holder.h"
#include "doctor/SettingsFacts.h"

namespace qorctl::doctor {

/// Where the settings say that QOR is reached, and what is there now: a port that somebody listens
/// on, or a window of that title.
struct PeerFacts {
    std::string place;  ///< for people: "port 5000 of 127.0.0.1", "window \"...\""
    /// For programs: the same for each way to write it; empty if it was not found.
    std::string key;
    bool isTcp = false;
    bool isUsable = true;   ///< the settings name a place at all
    bool isFound = true;    ///< the address could be looked up
    bool isRemote = false;  ///< on another machine
    /// The system tells who is there: not of another machine, nor where it keeps its table to
    /// itself.
    bool isTold = true;
    bool accepts = false;  ///< not told: a connection was taken
    std::string reason;    ///< why not, where something failed
    Holders servers;       ///< who is there, as far as that is told
    Holders clients;       ///< who talks to them already
    /// Window messages: the host's own title is in the settings and not QOR's as well.
    std::string clientPlace;

    bool isSomebodyThere() const { return accepts || !servers.empty(); }
    /// Known for sure.
    bool isNobodyThere() const { return isTold && servers.empty(); }

    /// How to find out about a port that the system does not tell of.
    enum class Remote {
        ask,   ///< a connection is tried, which may take the place of another host's
        leave  ///< not at all
    };
    static PeerFacts gather(const SettingsFacts& settings, Remote remote = Remote::ask);
};

}  // namespace qorctl::doctor
