#pragma once

#include <deque>
#include <string>

#include "app/Session.h"
#include "app/Settings.h"
#include "behaviour/Conversation.h"
#include "link/WindowLink.h"

namespace simulator {

/// The conversation over window messages. A client is there as long as its window is.
class WindowSession : public Session, private WindowLinkEvents {
public:
    /// Can be found by its title when it returns. Throws std::runtime_error.
    WindowSession(const Settings& settings, Conversation& conversation, RecordLog& recordLog,
                  Log& log);

    void serve(std::uint32_t timeoutMs) override;
    void sendWhatIsDue() override;
    bool hasClient() const override { return client_ != nullptr || messageCame_; }
    void end(bool inOrder) override;

private:
    bool onMessage(const std::string& bytes, const MessageForm& form) override;
    bool receive(const std::string& bytes, const MessageForm& form);
    bool carryOut(const Record& record);
    void answer(WindowAnswer way, bool accepted);
    std::optional<Piece> nextPiece();
    bool deliver(const Piece& piece);
    void lookForClient();

    const std::string clientTitle_;
    const WindowAnswer usualAnswer_;
    const std::uint32_t sendMs_;
    Conversation& conversation_;
    RecordLog& recordLog_;
    Log& log_;
    HWND client_ = nullptr;
    bool messageCame_ = false;  // since the last serve() began
    int depth_ = 0;             // of handlers within handlers
    /// Could not be delivered while the client waited for us.
    std::deque<Piece> again_;
    WindowLink link_;
};

}  // namespace simulator
