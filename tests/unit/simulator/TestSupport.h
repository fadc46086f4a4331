#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "behaviour/Conversation.h"
#include "model/ModelLoader.h"
#include "script/ScriptLoader.h"

namespace simulator::test {

// "03 00 00 00" as bytes; blanks between the bytes are optional.
inline std::string bytesOf(const std::string& hex) {
    const nlohmann::json text = hex;
    return JsonNode(text, "hex").hexBytes();
}

// The document with single quotes in place of double ones.
inline nlohmann::json json(std::string text) {
    for (char& character : text) {
        if (character == '\'') character = '"';
    }
    return nlohmann::json::parse(text);
}

inline EcuModel modelOf(const std::string& text) {
    const nlohmann::json document = json(text);
    return modelFromJson(JsonNode(document, "m.json"));
}

inline const char* smallModel();

/// A script for the small model.
inline Script scriptOf(const std::string& text, Transport transport = Transport::Tcp) {
    const nlohmann::json document = json(text);
    return scriptFromJson(JsonNode(document, "s.json"),
                          {600, transport, namesOf(modelOf(smallModel()).parameters)});
}

// The text of the ConfigError that the call throws; empty when it throws none.
inline std::string configErrorOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const ConfigError& error) {
        return error.what();
    }
    return {};
}

// Index 0 to 6: one parameter of every kind.
inline const char* smallModel() {
    return R"({'parameters': [
        {'name': 'Scalar', 'description': 'd', 'unit': 'u', 'group': 'g',
         'value': 5, 'limits': [0, 10]},
        {'name': 'Array', 'values': [1, 2], 'limits': [0, 10]},
        {'name': 'Curve', 'values': [1, 2, 3], 'x': [10, 20, 30], 'limits': [0, 10]},
        {'name': 'Map', 'values': [1, 2, 3, 4], 'x': [1, 2], 'y': [3, 4], 'limits': [0, 10]},
        {'name': 'Text', 'text': 'ab', 'maxLength': 3},
        {'name': 'Actuator', 'value': 1, 'limits': [0, 100], 'actuator': true},
        {'name': 'Live', 'limits': [0, 1000], 'live': [
            {'kind': 'follow', 'source': 'Actuator', 'gain': 10, 'timeConstantS': 1}]}],
      'troubleCodes': [{'code': 1, 'status': 2, 'texts': ['a', 'b', 'c', 'd']}],
      'kwpServices': [
        {'service': '0x1A', 'data': '90', 'response': '5A 90 31'},
        {'service': '0x11', 'response': '51', 'delayMs': 300}],
      'canFrames': [{'id': 256, 'source': 'Scalar', 'scale': 4}, {'id': 512, 'value': -40}],
      'edit': {'info': {'name': 'n'}}})";
}

// A conversation without a link: the test is the client and the clock.
class ConversationHarness {
public:
    static constexpr std::uint64_t startMs = 1000000;

    explicit ConversationHarness(const std::string& script = "{}",
                                 AnswerStyle style = AnswerStyle::Stamped,
                                 Transport transport = Transport::Tcp)
        : model_(modelOf(smallModel())),
          conversation_(model_, scriptOf(script, transport), {style, 600, transport},
                        ExportFiles("unused"), recordLog_, log_, nowMs_) {
        conversation_.clientConnected(nowMs_);
    }

    // Sends a request with request id 77 and returns what comes back at once.
    std::vector<Record> ask(CommandId id, const std::string& payload = {}) {
        conversation_.received({id, false, 77, payload}, nowMs_);
        return received();
    }

    // What comes within the next `milliseconds`.
    std::vector<Record> wait(std::uint64_t milliseconds) {
        std::vector<Record> all;
        for (std::uint64_t i = 0; i < milliseconds; ++i) {
            ++nowMs_;
            for (Record& record : received()) all.push_back(std::move(record));
        }
        return all;
    }

    // Everything that is due now, faults and all.
    std::vector<Piece> pieces() {
        std::vector<Piece> all;
        conversation_.tick(nowMs_);
        while (std::optional<Piece> piece = conversation_.take(nowMs_)) {
            all.push_back(std::move(*piece));
        }
        return all;
    }

    // Everything that comes at once after that long.
    std::vector<Piece> passMs(std::uint64_t milliseconds) {
        nowMs_ += milliseconds;
        return pieces();
    }

    void connectEcu(std::uint32_t refreshPeriodMs = 100) {
        ConnectPayload connect;
        connect.refreshPeriodMs = refreshPeriodMs;
        ask(CommandId::KwpConnect, connect.write());
        wait(700);
    }

    Conversation& conversation() { return conversation_; }
    std::uint64_t nowMs() const { return nowMs_; }

private:
    std::vector<Record> received() {
        std::vector<Record> records;
        for (Piece& piece : pieces()) {
            if (piece.record) records.push_back(std::move(*piece.record));
        }
        return records;
    }

    EcuModel model_;
    RecordLog recordLog_{""};
    Log log_;
    std::uint64_t nowMs_ = startMs;
    Conversation conversation_;
};

inline bool isAcknowledgement(const Record& record, std::uint32_t status) {
    return record.id == CommandId::Ping && record.isReply && record.requestId == 77 &&
           PingPayload::read(record.payload).status == status;
}

}  // namespace simulator::test
