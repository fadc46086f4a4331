#pragma once

#include <array>
#include <atomic>
#include <memory>

#include "facade/channel/Channel.h"
#include "facade/channel/ProtocolCmd.h"

/// The agent thread of each facade that is made while this object lives. It answers one request at
/// once, another not at all and the next while the host asks for something else; and one that is
/// known to be given up it answers twice. It also looks at the registrations and notes that an ECU
/// is online, as the real one does. Between it and the host there is no lock beside the facade's.
class UnreliableAgent {
public:
    /// So many parameters there are.
    static constexpr int numbers = 10000;

    UnreliableAgent();
    /// The facade must be gone.
    ~UnreliableAgent();
    UnreliableAgent(const UnreliableAgent&) = delete;
    UnreliableAgent& operator=(const UnreliableAgent&) = delete;

    /// From now on requests are only taken.
    void answersNever() { silent_ = true; }

    /// The host has given up its request for the parameter of this number. (That no answer is
    /// awaited any more is all that may be known of it: it orders no threads.)
    void giveUp(int number) { givenUp(number).store(true, std::memory_order_relaxed); }

    int lateAnswers() const { return lateAnswers_; }
    int secondAnswers() const { return secondAnswers_; }
    int registrationsSeen() const { return registrationsSeen_; }
    void awaitRequests(int count) const;

    /// The body of the agent thread.
    void run(channel::Channel& channel);

private:
    std::atomic<bool>& givenUp(int number) { return givenUp_.at(static_cast<std::size_t>(number)); }
    void answerLate(const channel::ProtocolCmd& command);

    std::array<std::atomic<bool>, numbers> givenUp_{};
    std::atomic<bool> silent_{false};
    std::atomic<int> requests_{0};
    std::atomic<int> lateAnswers_{0};
    std::atomic<int> secondAnswers_{0};
    std::atomic<int> registrationsSeen_{0};
};
