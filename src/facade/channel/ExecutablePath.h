#pragma once

#include <string>
#include <utility>

#include "common/Guarded.h"

namespace channel {

/// The path of QOR's executable, which the agent learns from the settings file.
class ExecutablePath {
public:
    void publish(std::string path) { *qorExecutablePath_.lock() = std::move(path); }
    /// Empty until it is published, and if QOR is started by someone else.
    std::string get() { return *qorExecutablePath_.lock(); }

private:
    common::Guarded<std::string> qorExecutablePath_;
};

}  // namespace channel
