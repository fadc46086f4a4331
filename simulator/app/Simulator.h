#pragma once

#include <cstdint>

#include "app/Settings.h"
#include "behaviour/Conversation.h"
#include "link/TcpServer.h"
#include "wire/RecordStream.h"

namespace simulator {

// Ties the conversation to the TCP link and to the clock; runs on one thread.
class Simulator : private TcpServerEvents {
public:
    // Throws std::runtime_error. Listens when it returns.
    Simulator(const Settings& settings, const EcuModel& model, Script script, Log& log);

    // Returns the exit code once a client has shut the simulator down, the script ends it or no
    // client came for too long.
    int run();

private:
    void onConnected() override;
    void onBytes(std::string_view bytes) override;
    void onDisconnected() override;

    void sendWhatIsDue();
    bool hasWaitedTooLong() const;
    std::uint32_t waitMs() const;
    int end();

    Settings settings_;
    Log& log_;
    RecordLog recordLog_;
    Conversation conversation_;
    RecordStream stream_;
    std::uint64_t clientSeenMs_;
    SocketLibrary sockets_;
    TcpServer server_;
};

}  // namespace simulator
