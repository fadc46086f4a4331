#pragma once

#include "app/Session.h"
#include "behaviour/Conversation.h"
#include "link/TcpServer.h"
#include "wire/RecordStream.h"

namespace simulator {

/// The conversation over TCP.
class TcpSession : public Session, private TcpServerEvents {
public:
    /// Listens when it returns. Throws std::runtime_error.
    TcpSession(const std::string& ip, std::uint16_t port, Conversation& conversation, Log& log);

    void serve(std::uint32_t timeoutMs) override;
    void sendWhatIsDue() override;
    bool hasClient() const override { return server_.hasClient(); }
    void end(bool inOrder) override;

private:
    void onConnected() override;
    void onBytes(std::string_view bytes) override;
    void onDisconnected() override;

    Conversation& conversation_;
    Log& log_;
    RecordStream stream_;
    SocketLibrary sockets_;
    TcpServer server_;
};

}  // namespace simulator
