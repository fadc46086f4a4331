#pragma once

#include "StreamFixture.h"

/// An agent with a stream of trouble codes; QOR has one code.
class StreamDtcs : public StreamTest {
protected:
    StreamDtcs() { qorHasCodes({{1, 2, "", "", "", ""}}); }

    void qorHasCodes(const std::vector<protocol::DtcRecord>& records) {
        qor.on<CommandGetDTC>([this, records](const CommandGetDTC&) {
            return qor.send(CommandGetDTC(protocol::GetDtc{records, false}));
        });
    }
    void qorRefuses() {
        qor.on<CommandGetDTC>([](const CommandGetDTC&) { return false; });
    }

    void streams(channel::DtcQueue* target, std::uint32_t timeoutMs, std::uint32_t everyMs) {
        post(channel::Kind::startDtcRead,
             std::make_shared<channel::CmdDataDtc>(target, timeoutMs, everyMs), nullptr);
        agent.step();
    }
    void streamsEvery(std::uint32_t ms, std::uint32_t timeoutMs = 700) {
        streams(&codes, timeoutMs, ms);
    }

    /// What came as text: "2 codes", "marker" for the one empty entry, "-" for nothing.
    static std::string nextCodes(channel::DtcQueue& from) {
        Codes list;
        if (!from.pop(list, 0)) return "-";
        const bool isMarker =
            list.size() == 1 && list[0].code == 0 && list[0].status == 0 &&
            (list[0].text1 + list[0].text2 + list[0].text3 + list[0].text4).empty();
        return isMarker ? "marker" : std::to_string(list.size()) + " codes";
    }
    std::string nextCodes() { return nextCodes(codes); }

    /// One round each so many milliseconds, QOR heard of all the time, and what they gave.
    std::string roundsEvery(std::uint32_t ms, int count) {
        std::string told;
        for (int round = 0; round < count; ++round) {
            qorAnswersNow();
            idleRound();
            told += nextCodes() + " ";
            clock.advance(ms);
        }
        return told;
    }

    std::vector<const CommandGetDTC*> reads() const { return qor.all<CommandGetDTC>(); }

    channel::DtcQueue codes{4};
};
