#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "facade/channel/Channel.h"
#include "facade/channel/ProtocolCmd.h"

/// What runs on the agent thread of each facade that is made while this object lives: takes the
/// requests, keeps them and does what the test says. Set the script before the facade is made.
class ScriptedAgent {
public:
    using Channel = channel::Channel;
    using Cmd = channel::ProtocolCmd;

    struct Script {
        /// Before the thread has looked at anything that the facade gave it.
        std::function<void()> beforeStart = [] {};
        std::function<void(Channel&)> atStart = [](Channel&) {};
        /// By default nothing is ever answered.
        std::function<void(Channel&, const Cmd&)> onRequest = [](Channel&, const Cmd&) {};
        /// True: the thread ends at once, unasked.
        bool endsByItself = false;
        /// After the facade has asked the agent to end.
        std::function<void(Channel&)> atEnd = [](Channel&) {};
    };

    ScriptedAgent();
    ~ScriptedAgent();
    ScriptedAgent(const ScriptedAgent&) = delete;
    ScriptedAgent& operator=(const ScriptedAgent&) = delete;

    Script& script();

    /// The requests so far, in order.
    std::vector<Cmd> requests() const;
    /// Forgets them, and so lets their payloads go.
    void forgetRequests();
    /// The shared state of the last facade; waits until its thread runs.
    std::shared_ptr<Channel> channel() const;
    bool hasEnded() const;

    static void succeed(const Cmd& command, std::shared_ptr<channel::CmdData> data = nullptr) {
        command.replyQueue->push({channel::CmdResponse::success, std::move(data)});
    }
    static void fail(const Cmd& command) { command.replyQueue->push(channel::CmdResponse()); }

    static void beforeRun();
    /// The body of the agent thread.
    static unsigned int run(const std::shared_ptr<Channel>& channel);

private:
    struct State;

    // Shared with the threads: an abandoned one outlives this object.
    std::shared_ptr<State> state_;
};
