#include "UnreliableAgent.h"

#include <cstdlib>
#include <deque>

#include "common/Clock.h"

using Channel = channel::Channel;
using Cmd = channel::ProtocolCmd;

namespace {

constexpr std::size_t lateBy = 3;  // so many requests later
constexpr int looksPerRound = 20;  // at the shared state, so that the host meets one

UnreliableAgent* current = nullptr;

/// The number that ends the name of the parameter whose values are wanted; -1 for any other
/// request.
int numberOf(const Cmd& command) {
    const auto* request = dynamic_cast<const channel::CmdDataParamData*>(command.data.get());
    const bool isRead = command.kind == channel::Kind::getParamData && request != nullptr;
    return isRead ? std::atoi(request->name.c_str() + 1) : -1;
}

/// A request for values gets that number in all three arrays.
std::shared_ptr<channel::CmdData> resultsOf(const Cmd& command) {
    const int number = numberOf(command);
    if (number < 0) return nullptr;
    auto results = std::make_shared<channel::CmdDataParamData>("of the answer", 0u);
    results->values = {static_cast<double>(number)};
    results->second = results->third = results->values;
    return results;
}

void answer(const Cmd& command) {
    if (command.replyQueue != nullptr)
        command.replyQueue->push({channel::CmdResponse::success, resultsOf(command)});
}

/// What the real agent does to the shared state in each of its rounds.
int noteAndLook(Channel& channel) {
    channel.contact.note(common::now());
    channel.executable.publish("/faked/qor");
    common::sleepMs(0);  // a host thread may go between
    channel.values.setReadPeriod(0);
    channel.values.beginAnew();
    common::sleepMs(0);
    const auto registered = channel.streams.all();
    for (const auto& entry : registered)
        channel.streams.notePreparation(entry.first, true, 0, entry.second.names);
    return static_cast<int>(registered.size());
}

}  // namespace

unsigned int QorControlFacade::agentThread(void* share) {
    const std::unique_ptr<std::shared_ptr<Channel>> own(
        static_cast<std::shared_ptr<Channel>*>(share));
    current->run(**own);
    return 0;
}

UnreliableAgent::UnreliableAgent() {
    current = this;
}

UnreliableAgent::~UnreliableAgent() {
    current = nullptr;
}

void UnreliableAgent::awaitRequests(int count) const {
    while (requests_ < count) common::sleepMs(1);
}

void UnreliableAgent::answerLate(const Cmd& command) {
    answer(command);
    ++lateAnswers_;
    const int number = numberOf(command);
    if (number < 0 || !givenUp(number).load(std::memory_order_relaxed)) return;
    answer(command);
    ++secondAnswers_;
}

void UnreliableAgent::run(Channel& channel) {
    std::deque<Cmd> late;
    const auto answerAllBut = [&](std::size_t kept) {
        for (; late.size() > kept; late.pop_front()) answerLate(late.front());
    };
    while (channel.agent.mayGoOn()) {
        for (int look = 0; look < looksPerRound; ++look) registrationsSeen_ += noteAndLook(channel);
        Cmd command;
        if (!channel.commandQueue.pop(command, 1)) {
            answerAllBut(0);
            continue;
        }
        const int number = ++requests_;
        if (silent_) continue;
        // Who waits without a time limit must be answered.
        if (number % 2 == 0 || command.kind == channel::Kind::setEcuSegment)
            answer(command);
        else if (number % 4 == 1)
            late.push_back(command);
        answerAllBut(lateBy);
    }
    answerAllBut(0);
}
