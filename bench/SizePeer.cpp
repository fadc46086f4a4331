#include "SizePeer.h"

#include <cstring>
#include <string>
#include <vector>

#include "Accept.h"
#include "BlockingSocket.h"
#include "PeerConversation.h"
#include "wire/Payloads.h"
#include "wire/Record.h"

namespace sizepeer {

namespace {

using simulator::CommandId;
using simulator::DirectCtrlPayload;
using simulator::PingPayload;
using simulator::Record;

constexpr std::size_t headBytes = 12;
/// Of a direct control's payload: index, operation and count stand in front of the values.
constexpr std::size_t operationAt = 4;
constexpr std::size_t valuesAt = 12;

std::vector<char> someValues() {
    const std::vector<double> values(doubles, 0.1);
    std::vector<char> kept(bytes);
    std::memcpy(kept.data(), values.data(), bytes);
    return kept;
}

/// What is short it says like any bare QOR; arrays it moves by itself.
class Peer final : public barepeer::Way {
public:
    explicit Peer(SOCKET socket) : socket_(socket), kept_(someValues()) {}

    void run() {
        while (receiveHead() && handle()) {
        }
    }

    bool send(const Record& record) override {
        const std::string encoded = record.bytes();
        isConnected_ = sendWhole(socket_, encoded.data(), encoded.size());
        return false;
    }
    void acknowledge(const Record& request) override {
        send({CommandId::Ping, true, request.requestId, PingPayload{PingPayload::Handled}.write()});
    }

private:
    bool receiveHead() {
        char head[headBytes];
        if (!receiveWhole(socket_, head, sizeof head)) return false;
        std::uint32_t words[3];
        std::memcpy(words, head, sizeof words);
        id_ = static_cast<CommandId>(words[0] & 0xFFFF);
        isReply_ = (words[0] & 0x10000) != 0;
        requestId_ = words[1];
        payload_.resize(words[2]);
        return receiveWhole(socket_, payload_.data(), payload_.size());
    }

    bool handle() {
        if (id_ == CommandId::DirectCtrl) return control();
        conversation_.handle({id_, isReply_, requestId_, payload_});
        return isConnected_;
    }

    /// The one copy: of what was written, or into the answer.
    bool control() {
        std::uint32_t index = 0;
        std::uint32_t operation = 0;
        std::memcpy(&index, payload_.data(), sizeof index);
        std::memcpy(&operation, payload_.data() + operationAt, sizeof operation);
        if (operation != DirectCtrlPayload::Read) {
            if (payload_.size() < valuesAt + bytes) return false;
            std::memcpy(kept_.data(), payload_.data() + valuesAt, bytes);
            acknowledge({id_, false, requestId_, {}});
            return isConnected_;
        }
        const std::uint32_t words[] = {0x10000u | static_cast<std::uint32_t>(id_),
                                       requestId_,
                                       static_cast<std::uint32_t>(valuesAt + bytes + 4),
                                       index,
                                       operation,
                                       static_cast<std::uint32_t>(doubles)};
        answer_.resize(sizeof words + bytes + 4);
        std::memcpy(answer_.data(), words, sizeof words);
        std::memcpy(answer_.data() + sizeof words, kept_.data(), bytes);
        return sendWhole(socket_, answer_.data(), answer_.size());
    }

    const SOCKET socket_;
    barepeer::Conversation conversation_{*this, 0};
    bool isConnected_ = true;
    std::vector<char> kept_;
    std::vector<char> answer_;
    std::string payload_;
    CommandId id_{};
    bool isReply_ = false;
    std::uint32_t requestId_ = 0;
};

bool serveRaw(SOCKET socket, std::vector<char>& kept, std::vector<char>& moved) {
    char wanted = 0;
    if (!receiveWhole(socket, &wanted, 1)) return false;
    if (wanted == give) {
        std::memcpy(moved.data(), kept.data(), bytes);
        return sendWhole(socket, moved.data(), bytes);
    }
    if (!receiveWhole(socket, moved.data(), bytes)) return false;
    std::memcpy(kept.data(), moved.data(), bytes);
    return sendWhole(socket, &wanted, 1);
}

}  // namespace

int run(unsigned int port) {
    const SOCKET socket = acceptOne(port);
    if (socket == INVALID_SOCKET) return 1;
    Peer(socket).run();
    closesocket(socket);
    return 0;
}

int runRaw(unsigned int port) {
    const SOCKET socket = acceptOne(port);
    if (socket == INVALID_SOCKET) return 1;
    std::vector<char> kept = someValues();
    std::vector<char> moved(bytes);
    while (serveRaw(socket, kept, moved)) {
    }
    closesocket(socket);
    return 0;
}

}  // namespace sizepeer
