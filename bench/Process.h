#pragma once

#include <string>

/// A program of this benchmark's own folder, started with a command line; ended with this object.
class Process {
public:
    /// Throws std::runtime_error if it cannot be started.
    Process(const std::string& program, const std::string& arguments);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

private:
    void* handle_ = nullptr;
};

/// The folder of this program, with a backslash at its end.
std::string programFolder();

/// A loopback port that was free a moment ago.
unsigned int freePort();
