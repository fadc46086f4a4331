#pragma once

#include "client/IProcessStarter.h"

/// Starts a process of the system. It lives on by itself: its handles are deliberately not
/// closed, and it does not end with the library.
class ProcessStarter final : public IProcessStarter {
public:
    bool start(const std::string& executable, const std::string& commandLine) override;
    void awaitIdle(unsigned int idleMs) override;

private:
    void* process_ = nullptr;
};
