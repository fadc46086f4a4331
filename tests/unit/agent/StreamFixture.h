#pragma once

#include <string>
#include <utility>
#include <vector>

#include "AgentFixture.h"

/// An agent that fills the host's queues. QOR knows Speed (7), Load (9) and Voltage (4); time
/// passes only when the test lets it.
class StreamTest : public AgentTest {
protected:
    using ParamQueue = channel::ParamQueue;
    using Values = std::vector<QorControlFacade::ParamValue>;
    using Codes = std::vector<QorControlFacade::DtcDescription>;
    using Names = std::vector<std::string>;

    static constexpr std::uint32_t periodMs = 200;
    static constexpr std::uint32_t freshMs = 3 * periodMs;
    static constexpr std::int32_t speed = 7;
    static constexpr std::int32_t load = 9;
    static constexpr std::int32_t voltage = 4;

    StreamTest() {
        clock.msPerRead = 0;
        qor.knows("Speed", speed);
        qor.knows("Load", load);
        qor.knows("Voltage", voltage);
        qorAnswersNow();
    }

    void qorAnswersNow() { channel->contact.note(common::now()); }
    /// QOR was heard of exactly so long ago.
    void qorAnsweredAgo(std::uint32_t ms) { channel->contact.note(common::now() - ms); }

    /// The host's side, as the facade's operations leave it.
    void registers(ParamQueue& target, const Names& names) { channel->streams.add(&target, names); }
    void unregisters(ParamQueue& target) { channel->streams.remove(&target); }
    bool isRegistered(ParamQueue& target) const {
        return channel->streams.all().count(&target) == 1;
    }
    bool isPrepared(ParamQueue& target) const {
        return channel->streams.all().at(&target).prepared;
    }

    /// One round without a request, and without the wait for one: the signal of a request that is
    /// gone already ends it.
    void idleRound() {
        channel::ProtocolCmd gone;
        channel->commandQueue.push(gone);
        channel->commandQueue.pop(gone, 0);
        agent.step();
    }
    void idleRounds(int count) {
        for (int round = 0; round < count; ++round) idleRound();
    }

    /// A batch as text: "Speed=1 Load=2"; "nothing" if there is none.
    static std::string next(ParamQueue& from) {
        Values batch;
        if (!from.pop(batch, 0)) return "nothing";
        std::string text;
        for (const auto& each : batch) {
            text += (text.empty() ? "" : " ") + each.name + "=";
            for (const double value : each.values) text += ::testing::PrintToString(value);
        }
        return text;
    }
    /// What one round gives the queue.
    std::string roundGives(ParamQueue& target) {
        target.clear();
        idleRound();
        return next(target);
    }
    std::string roundGives() { return roundGives(queue); }

    /// The lists of indices that QOR was asked to send, in order.
    std::vector<std::vector<std::uint32_t>> lists() const {
        std::vector<std::vector<std::uint32_t>> found;
        for (const auto* list : qor.all<CommandSetParamList>())
            found.push_back(list->paramIndices.items);
        return found;
    }
    /// QOR takes a list, and meanwhile the host does this.
    void whileQorTakesAList(std::function<void()> action) {
        qor.on<CommandSetParamList>([action](const CommandSetParamList&) {
            action();
            return true;
        });
    }
    void refuseLists() {
        qor.on<CommandSetParamList>([](const CommandSetParamList&) { return false; });
    }
    void takeLists() {
        whileQorTakesAList([] {});
    }

    channel::CachedValue cached(const std::string& name) const {
        return channel->values.all().at(name);
    }
    bool isCached(const std::string& name) const { return channel->values.all().count(name) == 1; }

    /// Lets time pass up to so many milliseconds before the tick count wraps to 0; QOR answers.
    void untilBeforeWrap(std::uint32_t ms) {
        clock.advanceToBeforeWrap(ms);
        qorAnswersNow();
    }

    ParamQueue queue{8};
};
