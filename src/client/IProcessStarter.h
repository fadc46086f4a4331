#pragma once

#include <string>

/// Starts QOR.
class IProcessStarter {
public:
    virtual ~IProcessStarter() = default;

    /// Starts `executable` with exactly this command line, its main window minimised; then waits,
    /// at most `idleMs`, until it is idle for input. False if it could not be started.
    virtual bool start(const std::string& executable, const std::string& commandLine,
                       unsigned int idleMs) = 0;
};
