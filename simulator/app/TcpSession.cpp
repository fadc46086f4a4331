#include "app/TcpSession.h"

#include "app/Clock.h"
#include "link/Messages.h"

namespace simulator {

TcpSession::TcpSession(const std::string& ip, std::uint16_t port, Conversation& conversation,
                       Log& log)
    : conversation_(conversation), log_(log), server_(ip, port, *this) {
    log_.info("listening on " + ip + ":" + std::to_string(port));
}

void TcpSession::serve(std::uint32_t timeoutMs) {
    handleMessages();
    waitForEventOrMessage(server_.readyEvent(), timeoutMs);
    server_.serve();
}

void TcpSession::sendWhatIsDue() {
    while (const std::optional<Piece> piece = conversation_.take(nowMs())) {
        conversation_.logSent(*piece, nowMs());
        server_.send(piece->bytes);
        if (piece->close) server_.closeClient();
    }
}

void TcpSession::end(bool inOrder) {
    if (inOrder) {
        sendWhatIsDue();
        server_.closeClient();
    } else {
        server_.drop();
    }
}

void TcpSession::onConnected() {
    log_.info("a client has connected");
    stream_ = RecordStream();
    conversation_.clientConnected(nowMs());
}

void TcpSession::onBytes(std::string_view bytes) {
    stream_.append(bytes);
    try {
        while (!conversation_.exit()) {
            const std::optional<Record> record = stream_.next();
            if (!record) return;
            Sleep(conversation_.received(*record, nowMs()).hangMs);
            sendWhatIsDue();
        }
    } catch (const StreamBroken& broken) {
        log_.error(std::string("connection dropped: ") + broken.what());
        server_.drop();
    }
}

void TcpSession::onDisconnected() {
    log_.info("the client has gone");
    stream_ = RecordStream();  // what the client asked for last does not count any more
    conversation_.clientDisconnected();
}

}  // namespace simulator
