#pragma once

#include <cstdint>
#include <memory>

#include "app/Session.h"
#include "app/Settings.h"
#include "behaviour/Conversation.h"

namespace simulator {

/// Ties the conversation to a link and to the clock; runs on one thread.
class Simulator {
public:
    /// Throws std::runtime_error. Clients find it when it returns.
    Simulator(const Settings& settings, const EcuModel& model, Script script, Log& log);

    /// Returns the exit code once a client has shut the simulator down, the script ends it or no
    /// client came for too long.
    int run();

private:
    void serve();
    bool hasWaitedTooLong() const;
    std::uint32_t waitMs() const;
    int end();

    Settings settings_;
    Log& log_;
    RecordLog recordLog_;
    Conversation conversation_;
    std::uint64_t clientSeenMs_;
    std::unique_ptr<Session> session_;
};

}  // namespace simulator
