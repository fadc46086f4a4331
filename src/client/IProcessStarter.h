#pragma once

#include <string>

/// Starts QOR.
class IProcessStarter {
public:
    virtual ~IProcessStarter() = default;

    /// Starts `executable` with exactly this command line, its main window minimised. False if it
    /// could not be started, and then the calling thread's last-error code tells why.
    virtual bool start(const std::string& executable, const std::string& commandLine) = 0;

    /// Waits, at most `idleMs`, until the process that was just started is idle for input.
    virtual void awaitIdle(unsigned int idleMs) = 0;
};
