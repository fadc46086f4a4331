#pragma once

#include <string>

#include "Transports.h"

/// The settings file of a station: what the library reads, and what QOR's stand-in reads beside.
struct StationSettings {
    /// A port and window titles that nobody else on the machine uses; `folder` takes QOR's files.
    StationSettings(Transport transport, const std::string& folder);

    std::string executable;  ///< "QORexecutable"; empty: QOR is started by somebody else
    std::string useTcp;
    unsigned short port;
    std::string titles;  ///< what both window titles begin with
    std::string model;   ///< empty: the one beside the program
    std::string answerStyle = "stamped";
    unsigned connectMs = 100;  ///< how long QOR takes to connect an ECU
    std::string recordLog;
    std::string log;
    std::string exportPrefix;
    std::string script;          ///< path of QOR's behaviours; empty: none
    std::string simulatorLines;  ///< further lines of QOR's own section, each with its line end

    std::string text() const;

    /// Starts QOR by hand with these settings, which lie at `path`, and waits until it can be
    /// reached; false if it cannot.
    bool startQor(const std::string& path) const;
};
